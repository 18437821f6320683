// SPDX-License-Identifier: MIT
// The text-overlay settings dialog: its widgets, the preview file it writes,
// the transparency bar and the text drawn in its preview.

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

class TestAdvanced : public FormsTestCase
{
    Q_OBJECT

private slots:
    void advancedFormHoldsItsWidgetsAndTexts();
    void advancedHasOnlyACloseButton();
    void advancedOffersTheOutputSizesAndFormats();
    void previewFileWrittenEachTimeDialogIsBuilt();
    void previewFileIsTheFirstReadAt355x280();
    void openingWithAlpha127PutsBarAt49AndLeaves124();
    void openingRoundsTheStoredAlphaThroughTheBar_data();
    void openingRoundsTheStoredAlphaThroughTheBar();
    void scrollBarEndsGiveOpaqueAndTransparent_data();
    void scrollBarEndsGiveOpaqueAndTransparent();
    void scrollBarKeysReachBothEnds();
    void previewFitsTheSettingsPreviewBox_data();
    void previewFitsTheSettingsPreviewBox();
    void previewTextCarriesChosenColourAndTransparency_data();
    void previewTextCarriesChosenColourAndTransparency();
    void previewTextFollowsPositionAndText();
    void unreadablePictureLeavesPreviewEmpty();
};

void TestAdvanced::advancedFormHoldsItsWidgetsAndTexts()
{
    Advanced dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Advanced Settings (Manual)"));
    QCOMPARE(dialog.font().family(), QStringLiteral("Arial"));
    QCOMPARE(childNames(&dialog),
             QStringList({"Reset", "ApplySetting", "FontColor", "FontSize", "label", "label_2", "label_3", "graphicsView",
                          "horizontalScrollBar", "label_4", "label_5", "label_6", "ChooseOutDir", "label_7", "comboBox",
                          "comboFormats", "label_8"}));

    auto button = [&dialog](const char* name) { return dialog.findChild<QPushButton*>(QString::fromLatin1(name)); };
    QVERIFY(button("Reset") && button("ApplySetting") && button("FontColor") && button("FontSize")
            && button("ChooseOutDir"));
    QCOMPARE(button("Reset")->text(), QStringLiteral("Return to Defaults"));
    QCOMPARE(button("Reset")->toolTip(), QStringLiteral("Restore the  default settings and return to main screen."));
    QCOMPARE(button("ApplySetting")->text(), QStringLiteral("Apply My Settings"));
    QCOMPARE(button("FontColor")->text(), QStringLiteral("Change Font Color"));
    QCOMPARE(button("FontSize")->text(), QStringLiteral("Change Font"));
    QCOMPARE(button("FontSize")->toolTip(), QStringLiteral("If picture dimensions are large, use large font size accordingly."));
    QCOMPARE(button("ChooseOutDir")->text(), QStringLiteral("Output Folder"));
    QCOMPARE(wrongTexts(dialog, {{"label", "Change transparency"}, {"label_2", "opaque"}, {"label_3", "transparent"},
                                 {"label_4", "Note: These Manual settings will override the intelligent defaults."},
                                 {"label_5", "Try maximizing font size if you "}, {"label_6", "can't see Text in preview"},
                                 {"label_7", "Output dimension"}, {"label_8", "Output Format"}}),
             QStringList());
    auto* bar = dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"));
    QVERIFY(bar);
    QCOMPARE(bar->orientation(), Qt::Horizontal);
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QVERIFY(dialog.findChild<QGraphicsView*>(QStringLiteral("graphicsView")));
    // Enter leaves with "Apply My Settings".
    QVERIFY(button("ApplySetting")->isDefault());
    QVERIFY(!button("Reset")->isDefault());

    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(dialog.grab().save(QStringLiteral(PLENDRA_BUILD_DIR "/tests/forms/advanced.png")));
}

void TestAdvanced::advancedHasOnlyACloseButton()
{
    Advanced dialog;
    const Qt::WindowFlags flags = dialog.windowFlags();
    QVERIFY(flags.testFlag(Qt::CustomizeWindowHint));
    QVERIFY(flags.testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(!flags.testFlag(Qt::WindowContextHelpButtonHint));
    // Exactly those two hints were asked for: a plain window given the same
    // two ends up with the same flags once the toolkit has completed them.
    QWidget plain;
    plain.setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);
    QCOMPARE(flags, plain.windowFlags());
}

void TestAdvanced::advancedOffersTheOutputSizesAndFormats()
{
    Advanced dialog;
    auto entries = [](const QComboBox* box) {
        QStringList texts;
        for (int i = 0; i < box->count(); ++i)
            texts << box->itemText(i);
        return texts;
    };
    auto* sizes = dialog.findChild<QComboBox*>(QStringLiteral("comboBox"));
    auto* formats = dialog.findChild<QComboBox*>(QStringLiteral("comboFormats"));
    QVERIFY(sizes && formats);
    QCOMPARE(entries(sizes),
             QStringList({"Original", "640x480", "320x240", "240x160", "Thumbnails", "Custom Size"}));
    QCOMPARE(entries(formats), QStringList({"JPG", "PNG", "TIFF", "BMP", "PPM", "XPM"}));
    // One size entry per row of the size table, then the custom size.
    QCOMPARE(sizes->count(), kOutputSizeCount + 1);
    QCOMPARE(kCustomSizeIndex, sizes->count() - 1);
}

void TestAdvanced::previewFileWrittenEachTimeDialogIsBuilt()
{
    const QString file = QDir(m_work).filePath(QStringLiteral("preview2.jpeg"));
    QVERIFY(!QFileInfo::exists(file));

    MyGlobal::CurSelection = writePicture(QStringLiteral("red.png"), filled(200, 100, QColor(220, 20, 20)));
    {
        Advanced dialog;
        QVERIFY(QFileInfo::exists(file));
    }
    QImage first(file);
    QVERIFY(!first.isNull());
    QVERIFY(qRed(first.pixel(100, 100)) > 180 && qBlue(first.pixel(100, 100)) < 60);

    // A second dialog writes it again, from the picture selected now.
    MyGlobal::CurSelection = writePicture(QStringLiteral("blue.png"), filled(200, 100, QColor(20, 20, 220)));
    {
        Advanced dialog;
    }
    QImage second(file);
    QVERIFY(!second.isNull());
    QVERIFY(qBlue(second.pixel(100, 100)) > 180 && qRed(second.pixel(100, 100)) < 60);

    // And again after the file was removed.
    QVERIFY(QFile::remove(file));
    {
        Advanced dialog;
    }
    QVERIFY(QFileInfo::exists(file));
    // Only that file is written, and only in the current folder.
    QCOMPARE(QDir(m_work).entryList(QDir::Files), QStringList({"preview2.jpeg"}));
    QCOMPARE(QDir(m_pictures).entryList(QDir::Files), QStringList({"blue.png", "fg.png", "red.png"}));
}

void TestAdvanced::previewFileIsTheFirstReadAt355x280()
{
    // Whatever the picture's shape, the first read squeezes it to 355 x 280.
    QImage picture = filled(640, 480, Qt::white);
    {
        QPainter painter(&picture);
        painter.fillRect(0, 0, 320, 480, QColor(0, 0, 0)); // left half black
    }
    MyGlobal::CurSelection = writePicture(QStringLiteral("halves.png"), picture);
    Advanced dialog;
    const QImage written(QStringLiteral("preview2.jpeg"));
    QCOMPARE(written.size(), QSize(355, 280));
    QVERIFY(qGray(written.pixel(60, 140)) < 40);
    QVERIFY(qGray(written.pixel(300, 140)) > 215);

    MyGlobal::CurSelection = writePicture(QStringLiteral("tall.png"), filled(90, 700, Qt::gray));
    Advanced tall;
    QCOMPARE(QImage(QStringLiteral("preview2.jpeg")).size(), QSize(355, 280));
}

void TestAdvanced::openingWithAlpha127PutsBarAt49AndLeaves124()
{
    QCOMPARE(UserSettings::m_transparency, 127);
    Advanced dialog;
    QCOMPARE(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"))->value(), 49);
    QCOMPARE(UserSettings::m_transparency, 124);
}

void TestAdvanced::openingRoundsTheStoredAlphaThroughTheBar_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("bar");
    QTest::addColumn<int>("after");

    QTest::newRow("255 stays") << 255 << 100 << 255;
    QTest::newRow("127 loses 3") << 127 << 49 << 124;
    QTest::newRow("124 loses 2") << 124 << 48 << 122;
    QTest::newRow("200") << 200 << 78 << 198;
    // The bar starts at 0: a value that maps to 0 changes nothing, and the
    // stored alpha is kept as it is.
    QTest::newRow("2 leaves bar at 0") << 2 << 0 << 2;
    QTest::newRow("3 gives 1") << 3 << 1 << 2;
    QTest::newRow("0") << 0 << 0 << 0;
}

void TestAdvanced::openingRoundsTheStoredAlphaThroughTheBar()
{
    QFETCH(int, stored);
    QFETCH(int, bar);
    QFETCH(int, after);
    UserSettings::m_transparency = stored;
    Advanced dialog;
    QCOMPARE(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"))->value(), bar);
    QCOMPARE(UserSettings::m_transparency, after);
}

void TestAdvanced::scrollBarEndsGiveOpaqueAndTransparent_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("alpha");

    QTest::newRow("100 is opaque") << 100 << 255;
    QTest::newRow("0 is transparent") << 0 << 0;
    QTest::newRow("50") << 50 << 127;
    QTest::newRow("1") << 1 << 2;
    QTest::newRow("99") << 99 << 252;
}

void TestAdvanced::scrollBarEndsGiveOpaqueAndTransparent()
{
    QFETCH(int, value);
    QFETCH(int, alpha);
    Advanced dialog;
    dialog.show();
    auto* bar = dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"));
    QVERIFY(bar);
    dragBarTo(bar, value);
    QCOMPARE(bar->value(), value);
    QCOMPARE(UserSettings::m_transparency, alpha);
}

void TestAdvanced::scrollBarKeysReachBothEnds()
{
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto* bar = dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"));
    QVERIFY(bar);
    bar->setFocus();
    QTest::keyClick(bar, Qt::Key_End);
    QCOMPARE(bar->value(), 100);
    QCOMPARE(UserSettings::m_transparency, 255);
    QTest::keyClick(bar, Qt::Key_Home);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(UserSettings::m_transparency, 0);
}

void TestAdvanced::previewFitsTheSettingsPreviewBox_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("shown");

    QTest::newRow("wide") << QSize(710, 400) << QSize(355, 200);
    QTest::newRow("tall") << QSize(300, 600) << QSize(143, 286);
    QTest::newRow("small grows") << QSize(71, 40) << QSize(355, 200);
    QTest::newRow("box shape") << QSize(710, 572) << QSize(355, 286);
}

void TestAdvanced::previewFitsTheSettingsPreviewBox()
{
    QFETCH(QSize, picture);
    QFETCH(QSize, shown);
    MyGlobal::CurSelection = writePicture(QStringLiteral("pic.png"), filled(picture.width(), picture.height(), Qt::gray));
    Advanced dialog;
    QCOMPARE(shownPreview(dialog).size(), shown);
}

void TestAdvanced::previewTextCarriesChosenColourAndTransparency_data()
{
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<int>("bar");
    QTest::addColumn<int>("alpha");

    QTest::newRow("red, opaque") << QColor(255, 0, 0) << 100 << 255;
    QTest::newRow("red, half") << QColor(255, 0, 0) << 50 << 127;
    QTest::newRow("blue, faint") << QColor(0, 0, 255) << 20 << 51;
    QTest::newRow("green, three quarters") << QColor(0, 160, 0) << 75 << 191;
    QTest::newRow("black, a third") << QColor(0, 0, 0) << 33 << 84;
}

void TestAdvanced::previewTextCarriesChosenColourAndTransparency()
{
    QFETCH(QColor, colour);
    QFETCH(int, bar);
    QFETCH(int, alpha);

    const QColor paper = selectPaperWithArial(110, true);
    UserSettings::m_clr = colour;

    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dragBarTo(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar")), bar);
    QCOMPARE(UserSettings::m_transparency, alpha);
    // The text colour itself carries the transparency, not just the pen.
    QCOMPARE(UserSettings::m_clr.alpha(), alpha);
    QCOMPARE(UserSettings::m_clr.rgb(), colour.rgb());

    const QColor expected = overPaper(colour, alpha, paper);
    const QPixmap shown = shownPreview(dialog);
    QCOMPARE(shown.size(), QSize(355, 286));
    const TextPixels inPreview = inspectText(shown.toImage(), paper, expected);
    QVERIFY2(inPreview.exact > 1000, qPrintable(QStringLiteral("only %1 pixels of the text colour").arg(inPreview.exact)));
    QCOMPARE(inPreview.stray, 0);

    // And as the view paints it on screen.
    auto* view = dialog.findChild<QGraphicsView*>(QStringLiteral("graphicsView"));
    const QImage painted = view->viewport()->grab().toImage();
    QString tag = QString::fromLatin1(QTest::currentDataTag());
    tag.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]+")), QStringLiteral("_"));
    painted.save(QStringLiteral(PLENDRA_BUILD_DIR "/tests/forms/advanced_text_%1.png").arg(tag));
    const TextPixels onScreen = inspectText(painted, paper, expected);
    QCOMPARE(onScreen.exact, inPreview.exact);
    QCOMPARE(onScreen.stray, 0);
}

void TestAdvanced::previewTextFollowsPositionAndText()
{
    const QColor paper = selectPaperWithArial(60, false);
    UserSettings::m_clr = QColor(255, 0, 0);
    UserSettings::m_transparency = 255;

    auto inkBounds = [&paper](const QImage& image) {
        QRect bounds;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) != paper)
                    bounds |= QRect(x, y, 1, 1);
        return bounds;
    };

    {
        MyGlobal::Cur_wmpos = Qt::AlignLeft | Qt::AlignTop;
        MyGlobal::Cur_wmText = QStringLiteral("Ab");
        Advanced dialog;
        const QRect ink = inkBounds(shownPreview(dialog).toImage());
        QVERIFY(!ink.isEmpty());
        QVERIFY2(ink.right() < 177 && ink.bottom() < 143, qPrintable(QStringLiteral("ink at %1,%2 %3x%4")
                                                                          .arg(ink.x()).arg(ink.y()).arg(ink.width()).arg(ink.height())));
    }
    {
        MyGlobal::Cur_wmpos = Qt::AlignRight | Qt::AlignBottom;
        Advanced dialog;
        const QRect ink = inkBounds(shownPreview(dialog).toImage());
        QVERIFY(!ink.isEmpty());
        QVERIFY(ink.left() > 177 && ink.top() > 143);
    }
    {
        MyGlobal::Cur_wmpos = 132; // centred both ways
        Advanced dialog;
        const QRect ink = inkBounds(shownPreview(dialog).toImage());
        QVERIFY(std::abs(ink.center().x() - 177) < 12);
        QVERIFY(std::abs(ink.center().y() - 143) < 12);
    }
    {
        MyGlobal::Cur_wmText.clear(); // no text, no ink
        Advanced dialog;
        QVERIFY(inkBounds(shownPreview(dialog).toImage()).isEmpty());
    }
}

void TestAdvanced::unreadablePictureLeavesPreviewEmpty()
{
    MyGlobal::CurSelection = QDir(m_pictures).filePath(QStringLiteral("missing.jpg"));
    Advanced dialog;
    dialog.show();
    QVERIFY(shownPreview(dialog).isNull());
    // Nothing was read, so there was nothing to write either.
    QVERIFY(!QFileInfo::exists(QStringLiteral("preview2.jpeg")));
    // The bar still works and stores the alpha.
    dragBarTo(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar")), 100);
    QCOMPARE(UserSettings::m_transparency, 255);
    QVERIFY(shownPreview(dialog).isNull());
}

PLENDRA_TEST_MAIN(TestAdvanced)
#include "tst_advanced.moc"
