// SPDX-License-Identifier: MIT
// The output size and format tables, the custom-size dialog and the size box
// of the main window.
#include "dialogs/customsize.h"
#include "mainwindow/dialog.h"
#include "output/outputchoices.h"
#include "state/globals.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/foldertree.h"
#include "tests/support/recordingopener.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using widgettest::ModalAnswerer;

namespace {

const QString kInvalidSize = QStringLiteral("Please enter a valid values for width and height");

void dismiss(QWidget* modal)
{
    if (auto* dialog = qobject_cast<QDialog*>(modal))
        dialog->reject();
    else
        modal->close();
}

// Answers a message box by pressing its button with the given text.
bool pressButton(QMessageBox* box, const QString& text)
{
    const QList<QAbstractButton*> buttons = box->buttons();
    for (QAbstractButton* b : buttons) {
        if (b->text() == text) {
            QTest::mouseClick(b, Qt::LeftButton);
            return true;
        }
    }
    return false;
}

// Types the two entries as a user would and presses "Ok".
void enterSize(QWidget* ask, const QString& width, const QString& height)
{
    auto* w = ask->findChild<QLineEdit*>(QStringLiteral("width"));
    auto* h = ask->findChild<QLineEdit*>(QStringLiteral("height"));
    auto* ok = ask->findChild<QPushButton*>(QStringLiteral("Ok"));
    QVERIFY(w && h && ok);
    w->clear();
    h->clear();
    QTest::keyClicks(w, width);
    QTest::keyClicks(h, height);
    QTest::mouseClick(ok, Qt::LeftButton);
}

} // namespace

class OutputChoicesTest : public QObject
{
    Q_OBJECT

private slots:
    // Runs first: nothing has stored a size yet.
    void customSizeStartsAt320By240() { QCOMPARE(UserSettings::m_size, QSize(320, 240)); }

    void cleanup() { UserSettings::m_size = QSize(320, 240); }

    void outputSizesTable_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("Original") << 0 << 0 << -1 << -1;
        QTest::newRow("640x480") << 1 << 1 << 640 << 480;
        QTest::newRow("320x240") << 2 << 2 << 320 << 240;
        QTest::newRow("240x160") << 3 << 3 << 240 << 160;
        QTest::newRow("Thumbnails") << 4 << 4 << 120 << 120;
    }

    void outputSizesTable()
    {
        QFETCH(int, row);
        QFETCH(int, index);
        QFETCH(int, width);
        QFETCH(int, height);
        QCOMPARE(int(std::size(OutputSizes)), 5);
        QCOMPARE(OutputSizes[row].index, index);
        QCOMPARE(OutputSizes[row].width, width);
        QCOMPARE(OutputSizes[row].height, height);
    }

    void outputFormatsTable_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("flag");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("JPG") << 0 << 0 << QByteArray("JPG");
        QTest::newRow("PNG") << 1 << 1 << QByteArray("PNG");
        QTest::newRow("TIFF") << 2 << 1 << QByteArray("TIFF");
        QTest::newRow("BMP") << 3 << 1 << QByteArray("BMP");
        QTest::newRow("PPM") << 4 << 1 << QByteArray("PPM");
        QTest::newRow("XPM") << 5 << 1 << QByteArray("XPM");
    }

    void outputFormatsTable()
    {
        QFETCH(int, row);
        QFETCH(int, flag);
        QFETCH(QByteArray, name);
        QCOMPARE(int(std::size(OutputFormats)), 6);
        QCOMPARE(OutputFormats[row].flag, flag);
        QCOMPARE(QByteArray(OutputFormats[row].name), name);
    }

    void customSizeForm_data()
    {
        QTest::addColumn<int>("order");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QRect>("geometry");
        QTest::newRow("height") << 0 << "height" << QByteArray("QLineEdit") << "" << QRect(80, 80, 113, 22);
        QTest::newRow("width") << 1 << "width" << QByteArray("QLineEdit") << "" << QRect(80, 40, 113, 22);
        QTest::newRow("label") << 2 << "label" << QByteArray("QLabel") << "Width" << QRect(11, 43, 61, 16);
        QTest::newRow("label_2") << 3 << "label_2" << QByteArray("QLabel") << "Height" << QRect(12, 82, 61, 16);
        QTest::newRow("Ok") << 4 << "Ok" << QByteArray("QPushButton") << "Ok" << QRect(260, 100, 113, 32);
        QTest::newRow("label_3") << 5 << "label_3" << QByteArray("QLabel") << "pixels" << QRect(199, 42, 61, 16);
        QTest::newRow("label_4") << 6 << "label_4" << QByteArray("QLabel") << "pixels" << QRect(198, 81, 61, 16);
    }

    void customSizeForm()
    {
        QFETCH(int, order);
        QFETCH(QString, name);
        QFETCH(QByteArray, kind);
        QFETCH(QString, text);
        QFETCH(QRect, geometry);

        CustomSize ask(nullptr);
        const QList<QWidget*> children = ask.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(children.size(), 7);
        QWidget* w = children.at(order);
        QCOMPARE(w->objectName(), name);
        QCOMPARE(QByteArray(w->metaObject()->className()), kind);
        QCOMPARE(w->geometry(), geometry);
        if (auto* edit = qobject_cast<QLineEdit*>(w)) {
            QCOMPARE(edit->text(), text);
            QVERIFY(edit->validator() == nullptr);
            QCOMPARE(edit->inputMask(), QString());
            QCOMPARE(edit->maxLength(), 32767); // the line edit's own default: no limit set
        } else if (auto* label = qobject_cast<QLabel*>(w)) {
            QCOMPARE(label->text(), text);
        } else {
            QCOMPARE(qobject_cast<QPushButton*>(w)->text(), text);
        }
    }

    void customSizeWindow()
    {
        CustomSize ask(nullptr);
        QCOMPARE(ask.objectName(), QStringLiteral("CustomSize"));
        QCOMPARE(ask.windowTitle(), QStringLiteral("Custom Size - Osterlind"));
        QCOMPARE(ask.size(), QSize(400, 143));
        QCOMPARE(ask.font().family(), QStringLiteral("Arial"));
        QVERIFY(ask.parentWidget() == nullptr);
        const auto* pixels = ask.findChild<QLabel*>(QStringLiteral("label_3"));
        QVERIFY(pixels);
        QCOMPARE(pixels->font().family(), QStringLiteral("Arial"));
        QCOMPARE(pixels->font().pointSize(), 12);
    }

    // Width 800 and height 600 are stored as 800 by 600, and the dialog closes.
    void widthAndHeightAreStoredAndDialogCloses()
    {
        CustomSize ask(nullptr);
        ModalAnswerer answerer([&](QWidget* modal) {
            if (modal == &ask)
                enterSize(modal, QStringLiteral("800"), QStringLiteral("600"));
            else
                dismiss(modal);
        });
        QTimer::singleShot(10000, &ask, [&] { ask.done(42); }); // a dialog that stays open ends the run here

        const int result = ask.exec();

        QVERIFY(result != 42);
        QVERIFY(!ask.isVisible());
        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(UserSettings::m_size, QSize(800, 600));
    }

    // A zero, empty or non-numeric entry in either field gives the message
    // and keeps the dialog open with its entries.
    void invalidEntryShowsMessageAndKeepsDialogOpen_data()
    {
        QTest::addColumn<QString>("width");
        QTest::addColumn<QString>("height");
        QTest::newRow("empty height") << "800" << "";
        QTest::newRow("abc height") << "800" << "abc";
        QTest::newRow("zero height") << "800" << "0";
        QTest::newRow("empty width") << "" << "600";
        QTest::newRow("abc width") << "abc" << "600";
        QTest::newRow("both zero") << "0" << "0";
        QTest::newRow("decimal") << "800" << "600.5";
    }

    void invalidEntryShowsMessageAndKeepsDialogOpen()
    {
        QFETCH(QString, width);
        QFETCH(QString, height);

        CustomSize ask(nullptr);
        ask.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ask));
        QString text;
        QStringList buttons;
        QWidget* parent = &ask;
        ModalAnswerer answerer([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            if (!box)
                return dismiss(modal);
            text = box->text();
            for (QAbstractButton* b : box->buttons())
                buttons << b->text();
            parent = box->parentWidget();
            if (!pressButton(box, QStringLiteral("OK")))
                dismiss(modal);
        });

        enterSize(&ask, width, height);

        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(text, kInvalidSize);
        QCOMPARE(buttons, QStringList{QStringLiteral("OK")});
        QVERIFY(parent == nullptr);
        QVERIFY(ask.isVisible());
        QCOMPARE(ask.findChild<QLineEdit*>(QStringLiteral("width"))->text(), width);
        QCOMPARE(ask.findChild<QLineEdit*>(QStringLiteral("height"))->text(), height);
        QCOMPARE(UserSettings::m_size, QSize(320, 240));
    }

    // Width -5 and height 10 are accepted and stored as -5 by 10.
    void negativeWidthIsAccepted()
    {
        CustomSize ask(nullptr);
        ask.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ask));
        ModalAnswerer answerer(dismiss);

        enterSize(&ask, QStringLiteral("-5"), QStringLiteral("10"));

        QVERIFY(answerer.seen.isEmpty());
        QVERIFY(!ask.isVisible());
        QCOMPARE(UserSettings::m_size, QSize(-5, 10));
    }

    // Closing the dialog by its window control stores nothing.
    void closingWithoutOkStoresNothing()
    {
        CustomSize ask(nullptr);
        ask.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ask));
        QTest::keyClicks(ask.findChild<QLineEdit*>(QStringLiteral("width")), QStringLiteral("800"));
        QTest::keyClicks(ask.findChild<QLineEdit*>(QStringLiteral("height")), QStringLiteral("600"));

        QVERIFY(ask.close());

        QVERIFY(!ask.isVisible());
        QCOMPARE(UserSettings::m_size, QSize(320, 240));
    }

    // A language change puts the form's own texts back, title included.
    void languageChangeRestoresFormTexts()
    {
        CustomSize ask(nullptr);
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(&ask, &change);
        QCOMPARE(ask.windowTitle(), QStringLiteral("Dialog"));
        QCOMPARE(ask.findChild<QPushButton*>(QStringLiteral("Ok"))->text(), QStringLiteral("Ok"));
        QCOMPARE(ask.findChild<QLabel*>(QStringLiteral("label"))->text(), QStringLiteral("Width"));
    }

    // Picking index 0 to 4 in a box named comboBox does nothing; index 5
    // opens "Custom Size - Osterlind", which stores what is entered.
    void sizeBoxOpensCustomSizeOnlyForLastEntry()
    {
        QTemporaryDir samples;
        QVERIFY(samples.isValid());
        QVERIFY(testsupport::makeSampleFolder(samples.path()));
        MyGlobal::appDir = samples.path();
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        auto* box = new QComboBox(&d);
        box->setObjectName(QStringLiteral("comboBox"));
        box->addItems({QStringLiteral("Original"), QStringLiteral("640x480"), QStringLiteral("320x240"),
                       QStringLiteral("240x160"), QStringLiteral("Thumbnails"), QStringLiteral("Custom Size")});
        box->setGeometry(34, 500, 111, 26);
        box->show();
        // The window bound its slots by name before the box existed.
        QMetaObject::connectSlotsByName(&d);

        QPointer<QWidget> asked;
        QWidget* askedParent = &d;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (modal->objectName() != QStringLiteral("CustomSize"))
                return dismiss(modal);
            asked = modal;
            askedParent = modal->parentWidget();
            enterSize(modal, QStringLiteral("1024"), QStringLiteral("768"));
        });

        for (int index = 1; index <= 4; ++index) {
            QTest::keyClick(box, Qt::Key_Down);
            QCOMPARE(box->currentIndex(), index);
            QTest::qWait(60); // room for a window that should not come
            QVERIFY(answerer.seen.isEmpty());
            QCOMPARE(UserSettings::m_size, QSize(320, 240));
        }
        // Back to "Original" does nothing either.
        box->setCurrentIndex(0);
        QTest::qWait(60);
        QVERIFY(answerer.seen.isEmpty());

        box->setCurrentIndex(4);
        QTest::keyClick(box, Qt::Key_Down);

        QCOMPARE(box->currentIndex(), 5);
        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(answerer.seen.at(0).className, QStringLiteral("CustomSize"));
        QCOMPARE(answerer.seen.at(0).title, QStringLiteral("Custom Size - Osterlind"));
        QVERIFY(askedParent == nullptr);
        QVERIFY(asked.isNull()); // destroyed once it closed
        QCOMPARE(UserSettings::m_size, QSize(1024, 768));
    }
};

PLENDRA_TEST_MAIN(OutputChoicesTest)
#include "tst_outputchoices.moc"
