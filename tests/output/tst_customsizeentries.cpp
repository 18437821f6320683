// SPDX-License-Identifier: MIT
// What "Custom Size" makes of the texts typed into its two fields: each is
// read as a whole decimal number the way QString::toInt reads it (blanks
// around it and a sign are fine; anything else, or a number too large for an
// int, reads as 0). A pair with no 0 in it is stored and closes the dialog,
// negative numbers included; otherwise the message comes up and the dialog
// stays open with its fields as typed.
#include "dialogs/customsize.h"
#include "state/globals.h"
#include "tests/fixture/modalanswerer.h"
#include "tests/support/testsupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

const QString kInvalidSize = QStringLiteral("Please enter a valid values for width and height");
const QSize kStartSize(320, 240);

// exec() results that tell how the run ended when the dialog did not close
// itself.
constexpr int kLeftOpenAfterMessage = 41;
constexpr int kTimedOut = 42;

} // namespace

class CustomSizeEntriesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { UserSettings::m_size = kStartSize; }
    void cleanup() { UserSettings::m_size = kStartSize; }

    void typedSize_data();
    void typedSize();
};

void CustomSizeEntriesTest::typedSize_data()
{
    QTest::addColumn<QString>("width");
    QTest::addColumn<QString>("height");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QSize>("stored");

    QTest::newRow("blanks around the width") << " 800 " << "600" << true << QSize(800, 600);
    QTest::newRow("blanks around the height") << "800" << " 600 " << true << QSize(800, 600);
    QTest::newRow("plus signs") << "+5" << "+7" << true << QSize(5, 7);
    QTest::newRow("negative width") << "-3" << "600" << true << QSize(-3, 600);
    QTest::newRow("negative height") << "800" << "-3" << true << QSize(800, -3);
    QTest::newRow("both negative") << "-3" << "-3" << true << QSize(-3, -3);
    QTest::newRow("largest int") << "2147483647" << "1" << true << QSize(2147483647, 1);
    QTest::newRow("zero width") << "0" << "600" << false << kStartSize;
    QTest::newRow("zero height") << "800" << "0" << false << kStartSize;
    QTest::newRow("width too large for an int") << "99999999999" << "600" << false << kStartSize;
    QTest::newRow("height too large for an int") << "800" << "99999999999" << false << kStartSize;
    QTest::newRow("one past the largest int") << "2147483648" << "1" << false << kStartSize;
    QTest::newRow("letters for the width") << "abc" << "600" << false << kStartSize;
    QTest::newRow("letters for the height") << "800" << "abc" << false << kStartSize;
    QTest::newRow("digits then letters") << "12px" << "600" << false << kStartSize;
    QTest::newRow("blank inside the number") << "8 00" << "600" << false << kStartSize;
}

void CustomSizeEntriesTest::typedSize()
{
    QFETCH(QString, width);
    QFETCH(QString, height);
    QFETCH(bool, accepted);
    QFETCH(QSize, stored);

    CustomSize ask(nullptr);
    auto* widthField = ask.findChild<QLineEdit*>(QStringLiteral("width"));
    auto* heightField = ask.findChild<QLineEdit*>(QStringLiteral("height"));
    auto* ok = ask.findChild<QPushButton*>(QStringLiteral("Ok"));
    QVERIFY(widthField && heightField && ok);

    // What the modal run showed: the message boxes' texts, and the fields
    // as they stood once a message had been answered.
    QStringList messages;
    bool visibleAfterMessage = false;
    QString widthAfterMessage, heightAfterMessage;
    QTimer afterMessage;
    afterMessage.setInterval(20);
    connect(&afterMessage, &QTimer::timeout, &ask, [&] {
        if (QApplication::activeModalWidget() != &ask)
            return; // the message box is still closing
        afterMessage.stop();
        visibleAfterMessage = ask.isVisible();
        widthAfterMessage = widthField->text();
        heightAfterMessage = heightField->text();
        ask.done(kLeftOpenAfterMessage);
    });

    widgettest::ModalAnswerer answerer([&](QWidget* modal) {
        if (modal == &ask) {
            // Typed for real into the fields, then "Ok" clicked; from a timer
            // of its own, so that this answerer stays free to see the
            // message box that the click may bring up.
            QTimer::singleShot(0, &ask, [&] {
                QTest::keyClicks(widthField, width);
                QTest::keyClicks(heightField, height);
                QTest::mouseClick(ok, Qt::LeftButton);
            });
            return;
        }
        if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            messages << box->text();
            afterMessage.start();
            QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
            return;
        }
        if (auto* other = qobject_cast<QDialog*>(modal))
            other->reject();
    });
    // A dialog that neither closes nor complains ends the run here.
    QTimer::singleShot(10000, &ask, [&] { ask.done(kTimedOut); });

    const int result = ask.exec();

    QVERIFY(result != kTimedOut);
    QCOMPARE(UserSettings::m_size, stored);
    if (accepted) {
        // Closed by the dialog itself, without a message.
        QCOMPARE(result, int(QDialog::Rejected));
        QVERIFY(messages.isEmpty());
        QVERIFY(!ask.isVisible());
    } else {
        QCOMPARE(result, kLeftOpenAfterMessage);
        QCOMPARE(messages, QStringList{kInvalidSize});
        QVERIFY(visibleAfterMessage);
        QCOMPARE(widthAfterMessage, width);
        QCOMPARE(heightAfterMessage, height);
    }
    QCOMPARE(answerer.seen.size(), accepted ? 1 : 2);
}

PLENDRA_TEST_MAIN(CustomSizeEntriesTest)
#include "tst_customsizeentries.moc"
