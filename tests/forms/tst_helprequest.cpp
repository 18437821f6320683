// SPDX-License-Identifier: MIT
// The help-request form: its widgets and texts, and the address it hands to the
// desktop (the browser is never started).

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

class TestHelpRequest : public FormsTestCase
{
    Q_OBJECT

private slots:
    void helpRequestFormHoldsItsWidgetsAndTexts();
    void helpRequestTurnsLineBreaksIntoDashes();
    void helpRequestReplacesEveryLineBreak();
    void helpRequestSendsEmptyFieldsAsEmptyValues();
    void helpRequestCancelOpensNothing();
    void helpRequestTypedHashCutsTheQuery();
    void helpRequestRetranslatesOnLanguageChange();

private:
    // The one address OK hands to the desktop with `mail` and `comments` in
    // the form's two fields; empty when it hands over none or more than one.
    QUrl sentOnOk(const QString& mail, const QString& comments);
};

QUrl TestHelpRequest::sentOnOk(const QString& mail, const QString& comments)
{
    HelpRequest dialog;
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit"))->setText(mail);
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("plainTextEdit"))->setPlainText(comments);
    clickButtonBox(&dialog, QDialogButtonBox::Ok);
    return m_recorder.urls.size() == 1 ? lastUrl() : QUrl();
}

void TestHelpRequest::helpRequestFormHoldsItsWidgetsAndTexts()
{
    HelpRequest dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Help"));
    QCOMPARE(dialog.font().family(), QStringLiteral("Arial"));
    QCOMPARE(childNames(&dialog), QStringList({"buttonBox", "label_2", "plainTextEdit", "label", "lineEdit", "label_3"}));

    auto* box = dialog.findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    QVERIFY(box);
    QCOMPARE(box->orientation(), Qt::Horizontal);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* prompt = dialog.findChild<QLabel*>(QStringLiteral("label_2"));
    auto* intro = dialog.findChild<QLabel*>(QStringLiteral("label"));
    auto* mail = dialog.findChild<QLabel*>(QStringLiteral("label_3"));
    QVERIFY(prompt && intro && mail);
    QCOMPARE(prompt->text(), QStringLiteral("Please tell us what is confusing in this utility and how it can be improved"));
    QVERIFY(prompt->wordWrap());
    QCOMPARE(intro->text(), QStringLiteral("We were hoping you wouldn't have to click on the Help button. We endeavour to "
                                           "make this product so easy and intuitive to use that no help manual is required."));
    QVERIFY(intro->wordWrap());
    QCOMPARE(mail->text(), QStringLiteral("Email Id"));
    QVERIFY(dialog.findChild<QPlainTextEdit*>(QStringLiteral("plainTextEdit")));
    QVERIFY(dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit")));

    // Kept for a look at the arrangement.
    QVERIFY(dialog.grab().save(QStringLiteral(PLENDRA_BUILD_DIR "/tests/forms/helprequest.png")));
}

void TestHelpRequest::helpRequestTurnsLineBreaksIntoDashes()
{
    HelpRequest dialog;
    dialog.show();
    QTest::keyClicks(dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit")), QStringLiteral("me"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("plainTextEdit"))->setPlainText(QStringLiteral("x\ny"));

    clickButtonBox(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(m_recorder.urls.size(), 1);
    const QString expected = productWebAddress() + QStringLiteral("/helprequest?emailid=me&comments=x - y");
    QCOMPARE(lastUrl(), QUrl(expected));
    QCOMPARE(lastUrl().toString(), QUrl(expected).toString());
    QCOMPARE(QUrlQuery(lastUrl()).queryItemValue(QStringLiteral("comments")), QStringLiteral("x - y"));
    // OK also closes the form.
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void TestHelpRequest::helpRequestReplacesEveryLineBreak()
{
    const QUrl sent = sentOnOk(QStringLiteral("a@b.c"), QStringLiteral("one\ntwo\n\nthree\n"));
    const QString expected =
        productWebAddress() + QStringLiteral("/helprequest?emailid=a@b.c&comments=one - two -  - three - ");
    QCOMPARE(sent, QUrl(expected));
    QCOMPARE(QUrlQuery(sent).queryItemValue(QStringLiteral("comments")), QStringLiteral("one - two -  - three - "));
}

void TestHelpRequest::helpRequestSendsEmptyFieldsAsEmptyValues()
{
    QCOMPARE(sentOnOk(QString(), QString()), QUrl(productWebAddress() + QStringLiteral("/helprequest?emailid=&comments=")));
}

void TestHelpRequest::helpRequestCancelOpensNothing()
{
    HelpRequest dialog;
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit"))->setText(QStringLiteral("me"));
    clickButtonBox(&dialog, QDialogButtonBox::Cancel);
    QVERIFY(m_recorder.urls.isEmpty());
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestHelpRequest::helpRequestTypedHashCutsTheQuery()
{
    // Nothing is escaped: a typed "#" starts the fragment, as it always has.
    const QUrl sent = sentOnOk(QStringLiteral("a#b"), QStringLiteral("c"));
    QCOMPARE(sent, QUrl(productWebAddress() + QStringLiteral("/helprequest?emailid=a#b&comments=c")));
    QCOMPARE(sent.query(), QStringLiteral("emailid=a"));
    QCOMPARE(sent.fragment(), QStringLiteral("b&comments=c"));
}

void TestHelpRequest::helpRequestRetranslatesOnLanguageChange()
{
    HelpRequest dialog;
    const QHash<QString, QString> german{{QStringLiteral("HelpRequest|Email Id"), QStringLiteral("E-Mail")},
                                         {QStringLiteral("HelpRequest|Help"), QStringLiteral("Hilfe")}};
    QCOMPARE(titleAndTextAcrossLanguageChange(dialog, QStringLiteral("label_3"), german),
             QList<QStringList>({{"Hilfe", "E-Mail"}, {"Help", "Email Id"}}));
}

PLENDRA_TEST_MAIN(TestHelpRequest)
#include "tst_helprequest.moc"
