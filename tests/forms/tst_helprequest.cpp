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
    void initTestCase() { setUpRun(); }
    void init() { setUpTest(); }
    void cleanup() { tearDownTest(); }
    void cleanupTestCase() { tearDownRun(); }

    void helpRequestFormHoldsItsWidgetsAndTexts();
    void helpRequestTurnsLineBreaksIntoDashes();
    void helpRequestReplacesEveryLineBreak();
    void helpRequestSendsEmptyFieldsAsEmptyValues();
    void helpRequestCancelOpensNothing();
    void helpRequestTypedHashCutsTheQuery();
    void helpRequestRetranslatesOnLanguageChange();
};

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
    HelpRequest dialog;
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit"))->setText(QStringLiteral("a@b.c"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("plainTextEdit"))->setPlainText(QStringLiteral("one\ntwo\n\nthree\n"));

    clickButtonBox(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(m_recorder.urls.size(), 1);
    const QString expected =
        productWebAddress() + QStringLiteral("/helprequest?emailid=a@b.c&comments=one - two -  - three - ");
    QCOMPARE(lastUrl(), QUrl(expected));
    QCOMPARE(QUrlQuery(lastUrl()).queryItemValue(QStringLiteral("comments")), QStringLiteral("one - two -  - three - "));
}

void TestHelpRequest::helpRequestSendsEmptyFieldsAsEmptyValues()
{
    HelpRequest dialog;
    dialog.show();
    clickButtonBox(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(m_recorder.urls.size(), 1);
    QCOMPARE(lastUrl(), QUrl(productWebAddress() + QStringLiteral("/helprequest?emailid=&comments=")));
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
    HelpRequest dialog;
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit"))->setText(QStringLiteral("a#b"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("plainTextEdit"))->setPlainText(QStringLiteral("c"));
    clickButtonBox(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(m_recorder.urls.size(), 1);
    QCOMPARE(lastUrl(), QUrl(productWebAddress() + QStringLiteral("/helprequest?emailid=a#b&comments=c")));
    QCOMPARE(lastUrl().query(), QStringLiteral("emailid=a"));
    QCOMPARE(lastUrl().fragment(), QStringLiteral("b&comments=c"));
}

void TestHelpRequest::helpRequestRetranslatesOnLanguageChange()
{
    HelpRequest dialog;
    WordTranslator translator;
    translator.words.insert(QStringLiteral("HelpRequest|Email Id"), QStringLiteral("E-Mail"));
    translator.words.insert(QStringLiteral("HelpRequest|Help"), QStringLiteral("Hilfe"));
    QVERIFY(QCoreApplication::installTranslator(&translator));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Hilfe"));
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("label_3"))->text(), QStringLiteral("E-Mail"));
    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Help"));
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("label_3"))->text(), QStringLiteral("Email Id"));
}

PLENDRA_TEST_MAIN(TestHelpRequest)
#include "tst_helprequest.moc"
