// SPDX-License-Identifier: MIT
// The feedback form: its widgets and texts, its answers, and the address it
// hands to the desktop (the browser is never started).

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

class TestFeedback : public FormsTestCase
{
    Q_OBJECT

private slots:
    void feedbackFormHoldsItsWidgetsAndTexts();
    void feedbackWithoutAnswerSaysConsideringNo();
    void feedbackWithYesSaysConsideringYes();
    void noShowsReasonsAndYesHidesThem();
    void priceAndFeaturesSentInEitherState_data();
    void priceAndFeaturesSentInEitherState();
    void feedbackKeepsCommentLineBreaks();
    void feedbackTitleReadsDialogAgainAfterLanguageChange();

private:
    // The one address "Submit" hands to the desktop; empty when it hands
    // over none or more than one.
    QUrl sentOnSubmit(Feedback& dialog);
};

QUrl TestFeedback::sentOnSubmit(Feedback& dialog)
{
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("SubmitFeedback")), Qt::LeftButton);
    return m_recorder.urls.size() == 1 ? lastUrl() : QUrl();
}

void TestFeedback::feedbackFormHoldsItsWidgetsAndTexts()
{
    Feedback dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Feedback"));
    QCOMPARE(dialog.font().family(), QStringLiteral("Arial"));
    QCOMPARE(childNames(&dialog), QStringList({"label", "mailid", "label_2", "radioNo", "radioYes", "SubmitFeedback",
                                               "comments", "label_4", "REASONS"}));
    auto* reasons = dialog.findChild<QGroupBox*>(QStringLiteral("REASONS"));
    QVERIFY(reasons);
    QCOMPARE(reasons->title(), QStringLiteral("REASONS"));
    QVERIFY(reasons->isHidden());
    QCOMPARE(childNames(reasons), QStringList({"checkBox_2", "label_6", "label_5", "checkBox", "price", "features"}));

    const bool orButton = true;
    QCOMPARE(wrongTexts(dialog,
                        {{"label", "Email Id"}, {"label_2", "Are you inclined to purchase this software ?"}, {"radioNo", "No"},
                         {"radioYes", "Yes"}, {"SubmitFeedback", "Submit"}, {"label_4", "Comments"}, {"checkBox_2", "Price"},
                         {"label_6", "suggest one"}, {"label_5", "Which ones?"}, {"checkBox", "Missing features"}},
                        orButton),
             QStringList());
    QVERIFY(dialog.findChild<QLineEdit*>(QStringLiteral("mailid")));
    QVERIFY(dialog.findChild<QLineEdit*>(QStringLiteral("price")));
    QVERIFY(dialog.findChild<QLineEdit*>(QStringLiteral("features")));
    QVERIFY(dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments")));
    QVERIFY(dialog.findChild<QCheckBox*>(QStringLiteral("checkBox")));
    QVERIFY(!dialog.findChild<QRadioButton*>(QStringLiteral("radioNo"))->isChecked());
    QVERIFY(!dialog.findChild<QRadioButton*>(QStringLiteral("radioYes"))->isChecked());

    // Kept for a look at the arrangement, with and without the reasons.
    QVERIFY(dialog.grab().save(QStringLiteral(PLENDRA_BUILD_DIR "/tests/forms/feedback.png")));
    reasons->show();
    QVERIFY(dialog.grab().save(QStringLiteral(PLENDRA_BUILD_DIR "/tests/forms/feedback_reasons.png")));
}

void TestFeedback::feedbackWithoutAnswerSaysConsideringNo()
{
    Feedback dialog;
    dialog.show();
    QTest::keyClicks(dialog.findChild<QLineEdit*>(QStringLiteral("mailid")), QStringLiteral("me"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments"))->setPlainText(QStringLiteral("nice"));

    const QUrl sent = sentOnSubmit(dialog);
    const QString expected =
        productWebAddress() + QStringLiteral("/feedback?emailid=me&considering=No&features=&price=&comments=nice");
    QCOMPARE(sent, QUrl(expected));
    QCOMPARE(sent.toString(), QUrl(expected).toString());
    QCOMPARE(QUrlQuery(sent).queryItemValue(QStringLiteral("considering")), QStringLiteral("No"));
    // Submitting closes the form.
    QVERIFY(!dialog.isVisible());
}

void TestFeedback::feedbackWithYesSaysConsideringYes()
{
    Feedback dialog;
    dialog.show();
    clickMark(dialog.findChild<QRadioButton*>(QStringLiteral("radioYes")));
    QCOMPARE(sentOnSubmit(dialog),
             QUrl(productWebAddress() + QStringLiteral("/feedback?emailid=&considering=Yes&features=&price=&comments=")));
}

void TestFeedback::noShowsReasonsAndYesHidesThem()
{
    Feedback dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto* reasons = dialog.findChild<QGroupBox*>(QStringLiteral("REASONS"));
    auto* no = dialog.findChild<QRadioButton*>(QStringLiteral("radioNo"));
    auto* yes = dialog.findChild<QRadioButton*>(QStringLiteral("radioYes"));
    QVERIFY(reasons && no && yes);
    QVERIFY(!reasons->isVisible());

    clickMark(no);
    QVERIFY(no->isChecked());
    QVERIFY(reasons->isVisible());

    clickMark(yes);
    QVERIFY(yes->isChecked());
    QVERIFY(!no->isChecked());
    QVERIFY(!reasons->isVisible());

    clickMark(no);
    QVERIFY(reasons->isVisible());
}

void TestFeedback::priceAndFeaturesSentInEitherState_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<bool>("reasonsShown");
    QTest::addColumn<QString>("considering");

    QTest::newRow("no answer, reasons hidden") << QStringList() << false << QStringLiteral("No");
    QTest::newRow("No, reasons shown") << QStringList({"radioNo"}) << true << QStringLiteral("No");
    QTest::newRow("No then Yes, reasons hidden again") << QStringList({"radioNo", "radioYes"}) << false
                                                        << QStringLiteral("Yes");
    QTest::newRow("No with both boxes ticked") << QStringList({"radioNo", "checkBox", "checkBox_2"}) << true
                                                << QStringLiteral("No");
}

void TestFeedback::priceAndFeaturesSentInEitherState()
{
    QFETCH(QStringList, clicks);
    QFETCH(bool, reasonsShown);
    QFETCH(QString, considering);

    Feedback dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.findChild<QLineEdit*>(QStringLiteral("mailid"))->setText(QStringLiteral("me"));
    dialog.findChild<QLineEdit*>(QStringLiteral("price"))->setText(QStringLiteral("20"));
    dialog.findChild<QLineEdit*>(QStringLiteral("features"))->setText(QStringLiteral("layers"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments"))->setPlainText(QStringLiteral("ok"));
    for (const QString& name : clicks) {
        auto* button = dialog.findChild<QAbstractButton*>(name);
        QVERIFY(button);
        clickMark(button);
        QVERIFY(button->isChecked());
    }
    QCOMPARE(dialog.findChild<QGroupBox*>(QStringLiteral("REASONS"))->isVisible(), reasonsShown);

    const QUrl sent = sentOnSubmit(dialog);
    const QString expected = productWebAddress() + QStringLiteral("/feedback?emailid=me&considering=") + considering
        + QStringLiteral("&features=layers&price=20&comments=ok");
    QCOMPARE(sent, QUrl(expected));
    const QUrlQuery query(sent);
    QCOMPARE(query.queryItemValue(QStringLiteral("price")), QStringLiteral("20"));
    QCOMPARE(query.queryItemValue(QStringLiteral("features")), QStringLiteral("layers"));
}

void TestFeedback::feedbackKeepsCommentLineBreaks()
{
    Feedback dialog;
    dialog.show();
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments"))->setPlainText(QStringLiteral("x\ny"));
    const QUrl sent = sentOnSubmit(dialog);
    QCOMPARE(sent, QUrl(productWebAddress() + QStringLiteral("/feedback?emailid=&considering=No&features=&price=&comments=x\ny")));
    QCOMPARE(QUrlQuery(sent).queryItemValue(QStringLiteral("comments"), QUrl::FullyDecoded), QStringLiteral("x\ny"));
}

void TestFeedback::feedbackTitleReadsDialogAgainAfterLanguageChange()
{
    Feedback dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Feedback"));
    WordTranslator translator; // knows no word: the form's own texts come back
    QVERIFY(QCoreApplication::installTranslator(&translator));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QCoreApplication::processEvents();

    WordTranslator german;
    german.words.insert(QStringLiteral("Feedback|Comments"), QStringLiteral("Kommentare"));
    QVERIFY(QCoreApplication::installTranslator(&german));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("label_4"))->text(), QStringLiteral("Kommentare"));
    QVERIFY(QCoreApplication::removeTranslator(&german));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("label_4"))->text(), QStringLiteral("Comments"));
    // The reasons stay as they were.
    QVERIFY(dialog.findChild<QGroupBox*>(QStringLiteral("REASONS"))->isHidden());
}

PLENDRA_TEST_MAIN(TestFeedback)
#include "tst_feedback.moc"
