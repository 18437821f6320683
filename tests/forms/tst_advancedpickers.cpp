// SPDX-License-Identifier: MIT
// The text-overlay settings dialog: its font and colour pickers, the copy of
// the settings it keeps, its ways out and its texts on a language change.

#include "state/globals.h"
#include "state/webaddress.h"
#include "forms/advanced.h"
#include "forms/feedback.h"
#include "forms/helprequest.h"
#include "output/outputchoices.h"
#include "tests/fixture/modalanswerer.h"
#include "tests/fixture/widgetactions.h"
#include "tests/forms/formstestsupport.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFontDialog>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QUrl>
#include <QUrlQuery>

#include <cmath>
#include <memory>

using namespace formstest;

class TestAdvancedPickers : public FormsTestCase
{
    Q_OBJECT

private slots:
    void fontPickerAcceptedStoresFontAndRedraws();
    void fontPickerCancelledKeepsFont();
    void colourPickerAcceptedStoresColourAndRedraws();
    void colourPickerCancelledKeepsColour();
    void openingCopiesSettingsIntoDefaults();
    void applyMySettingsClearsUseDefaultAndCloses();
    void returnToDefaultsKeepsChangedColour();
    void resetThreeDoesNothing();
    void outputControlsDoNothingHere();
    void advancedRetranslatesOnLanguageChange();
};

void TestAdvancedPickers::fontPickerAcceptedStoresFontAndRedraws()
{
    MyGlobal::CurSelection = writePicture(QStringLiteral("paper.png"), filled(355, 286, Qt::white));
    UserSettings::m_transparency = 255;
    // A face the picker lists under its own name, at a size of its own.
    QFont original(QFontInfo(QFont(QStringLiteral("Arial"))).family());
    original.setPointSize(17);
    UserSettings::m_font = original;
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QImage before = shownPreview(dialog).toImage();

    bool answered = false;
    QFont offered;
    QFont picked;
    widgettest::ModalAnswerer::answerNextOf<QFontDialog>(
        [&offered, &picked](QFontDialog* picker) {
            offered = picker->currentFont();
            QFont bigger = picker->currentFont();
            bigger.setPointSize(48);
            bigger.setBold(true);
            picker->setCurrentFont(bigger);
            picked = picker->currentFont();
            clickButtonBox(picker, QDialogButtonBox::Ok);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontSize")), Qt::LeftButton);

    QVERIFY(answered);
    // The picker starts from the overlay's font.
    QCOMPARE(offered.family(), original.family());
    QCOMPARE(offered.pointSize(), 17);
    QCOMPARE(picked.pointSize(), 48);
    QCOMPARE(UserSettings::m_font, picked);
    // The preview was drawn again with it: bigger letters, more ink.
    const QImage after = shownPreview(dialog).toImage();
    QVERIFY(after != before);
    auto ink = [](const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += qGray(image.pixel(x, y)) < 128;
        return count;
    };
    QVERIFY(ink(after) > 2 * ink(before));
}

void TestAdvancedPickers::fontPickerCancelledKeepsFont()
{
    Advanced dialog;
    dialog.show();
    const QFont original = UserSettings::m_font;
    const QImage before = shownPreview(dialog).toImage();
    bool answered = false;
    widgettest::ModalAnswerer::answerNextOf<QFontDialog>(
        [](QFontDialog* picker) {
            QFont other = picker->currentFont();
            other.setPointSize(40);
            picker->setCurrentFont(other);
            clickButtonBox(picker, QDialogButtonBox::Cancel);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontSize")), Qt::LeftButton);
    QVERIFY(answered);
    QCOMPARE(UserSettings::m_font, original);
    QCOMPARE(shownPreview(dialog).toImage(), before);
}

void TestAdvancedPickers::colourPickerAcceptedStoresColourAndRedraws()
{
    const QColor paper = selectPaperWithArial(110, true);
    UserSettings::m_transparency = 255; // the bar at 100 keeps it so
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(UserSettings::m_transparency, 255);

    bool answered = false;
    QColor offered;
    const QColor chosen(10, 200, 30);
    widgettest::ModalAnswerer::answerNextOf<QColorDialog>(
        [&offered, chosen](QColorDialog* picker) {
            offered = picker->currentColor();
            picker->setCurrentColor(chosen);
            clickButtonBox(picker, QDialogButtonBox::Ok);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontColor")), Qt::LeftButton);

    QVERIFY(answered);
    QCOMPARE(offered, QColor(Qt::black));
    QCOMPARE(UserSettings::m_clr, chosen);
    const TextPixels pixels = inspectText(shownPreview(dialog).toImage(), paper, chosen);
    QVERIFY(pixels.exact > 1000);
    QCOMPARE(pixels.stray, 0);
}

void TestAdvancedPickers::colourPickerCancelledKeepsColour()
{
    UserSettings::m_clr = QColor(200, 100, 0);
    Advanced dialog;
    dialog.show();
    const QImage before = shownPreview(dialog).toImage();
    bool answered = false;
    QColor offered;
    widgettest::ModalAnswerer::answerNextOf<QColorDialog>(
        [&offered](QColorDialog* picker) {
            offered = picker->currentColor();
            picker->setCurrentColor(QColor(0, 0, 255));
            clickButtonBox(picker, QDialogButtonBox::Cancel);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontColor")), Qt::LeftButton);
    QVERIFY(answered);
    // Opening gave the colour the bar's alpha (127 read back as 124).
    QCOMPARE(offered.rgb(), QColor(200, 100, 0).rgb());
    QCOMPARE(UserSettings::m_clr, QColor(200, 100, 0, 124));
    QCOMPARE(shownPreview(dialog).toImage(), before);
}

void TestAdvancedPickers::openingCopiesSettingsIntoDefaults()
{
    UserSettings::m_clr = QColor(1, 2, 3);
    QFont font(QStringLiteral("Arial"));
    font.setPointSize(31);
    font.setItalic(true);
    UserSettings::m_font = font;
    QVERIFY(!Defaults::m_clr.isValid());
    Advanced dialog;
    // Copied after the bar's first change gave the colour its alpha.
    QCOMPARE(Defaults::m_clr, QColor(1, 2, 3, 124));
    QCOMPARE(Defaults::m_font, font);
}

void TestAdvancedPickers::applyMySettingsClearsUseDefaultAndCloses()
{
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(UserSettings::m_usedefault);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("ApplySetting")), Qt::LeftButton);
    QVERIFY(!UserSettings::m_usedefault);
    QVERIFY(!dialog.isVisible());
}

void TestAdvancedPickers::returnToDefaultsKeepsChangedColour()
{
    UserSettings::m_usedefault = false;
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QColor blackAtOpening(0, 0, 0, 124); // the alpha the bar left at opening
    QCOMPARE(Defaults::m_clr, blackAtOpening);

    bool answered = false;
    widgettest::ModalAnswerer::answerNextOf<QColorDialog>(
        [](QColorDialog* picker) {
            picker->setCurrentColor(QColor(250, 240, 10));
            clickButtonBox(picker, QDialogButtonBox::Ok);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontColor")), Qt::LeftButton);
    QVERIFY(answered);
    QCOMPARE(UserSettings::m_clr, QColor(250, 240, 10, 124));

    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("Reset")), Qt::LeftButton);
    QVERIFY(UserSettings::m_usedefault);
    QVERIFY(!dialog.isVisible());
    // The colour picked stays; the copy taken at opening is not put back.
    QCOMPARE(UserSettings::m_clr, QColor(250, 240, 10, 124));
    QCOMPARE(Defaults::m_clr, blackAtOpening);
}

void TestAdvancedPickers::resetThreeDoesNothing()
{
    UserSettings::m_usedefault = false;
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(!dialog.findChild<QObject*>(QStringLiteral("Reset_3")));
    const int transparency = UserSettings::m_transparency;
    const QImage before = shownPreview(dialog).toImage();
    QVERIFY(QMetaObject::invokeMethod(&dialog, "on_Reset_3_clicked"));
    QVERIFY(dialog.isVisible());
    QVERIFY(!UserSettings::m_usedefault);
    QCOMPARE(UserSettings::m_transparency, transparency);
    QCOMPARE(UserSettings::m_clr, QColor(0, 0, 0, transparency));
    QCOMPARE(shownPreview(dialog).toImage(), before);
}

void TestAdvancedPickers::outputControlsDoNothingHere()
{
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QSize customSize = UserSettings::m_size;
    const QString outputDir = MyGlobal::outputDir;

    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("ChooseOutDir")), Qt::LeftButton);
    auto* sizes = dialog.findChild<QComboBox*>(QStringLiteral("comboBox"));
    auto* formats = dialog.findChild<QComboBox*>(QStringLiteral("comboFormats"));
    sizes->setCurrentIndex(kCustomSizeIndex);
    formats->setCurrentIndex(3);
    QTest::qWait(50);

    // No folder or size dialog came up, and nothing was stored.
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(UserSettings::m_size, customSize);
    QCOMPARE(MyGlobal::outputDir, outputDir);
    QVERIFY(dialog.isVisible());
}

void TestAdvancedPickers::advancedRetranslatesOnLanguageChange()
{
    Advanced dialog;
    QCOMPARE(titleAndTextAcrossLanguageChange(dialog, QStringLiteral("ApplySetting"),
                                              {{QStringLiteral("Advanced|Advanced Settings (Manual)"), QStringLiteral("Erweitert")},
                                               {QStringLiteral("Advanced|Apply My Settings"), QStringLiteral("Anwenden")}}),
             QList<QStringList>({{"Erweitert", "Anwenden"}, {"Advanced Settings (Manual)", "Apply My Settings"}}));
    // The boxes' entries come from the constructor and survive it.
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("comboBox"))->count(), 6);
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("comboFormats"))->count(), 6);
}

PLENDRA_TEST_MAIN(TestAdvancedPickers)
#include "tst_advancedpickers.moc"
