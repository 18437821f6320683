// SPDX-License-Identifier: MIT
// The help-request and feedback forms (the addresses they hand to the
// desktop) and the text-overlay settings dialog (its preview, transparency
// bar, pickers and ways out). The browser is never started: the web address's
// scheme is routed to a recorder for the whole run.

#include "state/globals.h"
#include "state/webaddress.h"
#include "forms/advanced.h"
#include "forms/feedback.h"
#include "forms/helprequest.h"
#include "output/outputchoices.h"
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

namespace {

// Takes the addresses the forms hand to the desktop.
class UrlRecorder : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void openUrl(const QUrl& url) { urls.append(url); }
};

// A translator that knows a few words, or none: installing it makes the
// application announce a language change to every window.
class WordTranslator : public QTranslator
{
public:
    QHash<QString, QString> words; // "context|source" -> translation

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* = nullptr, int = -1) const override
    {
        return words.value(QString::fromLatin1(context) + QLatin1Char('|') + QString::fromUtf8(sourceText));
    }
};

// Answers the next modal dialog of type T from a single-shot timer, re-armed
// until the dialog is up. If it never comes, whatever modal window is open is
// closed so that the test fails instead of hanging.
template <typename T, typename Answer>
void answerModal(Answer answer, bool* answered, int triesLeft = 500)
{
    QTimer::singleShot(10, qApp, [answer, answered, triesLeft]() {
        if (auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget())) {
            *answered = true;
            answer(dialog);
        } else if (triesLeft > 0) {
            answerModal<T>(answer, answered, triesLeft - 1);
        } else if (QWidget* other = QApplication::activeModalWidget()) {
            other->close();
        }
    });
}

// A radio button or check box reacts to clicks on its mark and its text, not
// on the empty rest of its rectangle: click the mark.
void clickMark(QAbstractButton* button)
{
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, QPoint(8, button->height() / 2));
}

void clickButtonBox(QDialog* dialog, QDialogButtonBox::StandardButton which)
{
    auto* box = dialog->findChild<QDialogButtonBox*>();
    QVERIFY(box);
    QPushButton* button = box->button(which);
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
}

QStringList childNames(const QObject* parent)
{
    QStringList names;
    for (const QObject* child : parent->children()) {
        if (child->isWidgetType())
            names << child->objectName();
    }
    return names;
}

QImage filled(int width, int height, QColor colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

// How the overlay text shows up on plain paper: every pixel is either paper,
// or paper blended towards the expected colour (antialiased edges), or exactly
// the expected colour where a glyph covers it fully. Anything else is stray.
struct TextPixels
{
    int exact = 0;
    int blended = 0;
    int stray = 0;
};

TextPixels inspectText(const QImage& picture, QColor paper, QColor expected)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    const int paperRgb[3] = {paper.red(), paper.green(), paper.blue()};
    const int expectedRgb[3] = {expected.red(), expected.green(), expected.blue()};
    TextPixels result;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int rgb[3] = {qRed(row[x]), qGreen(row[x]), qBlue(row[x])};
            bool isPaper = true;
            bool isExact = true;
            for (int c = 0; c < 3; ++c) {
                isPaper = isPaper && std::abs(rgb[c] - paperRgb[c]) <= 1;
                isExact = isExact && std::abs(rgb[c] - expectedRgb[c]) <= 2;
            }
            if (isPaper)
                continue;
            if (isExact) {
                ++result.exact;
                continue;
            }
            // Partial coverage: one blend factor for every channel that moves.
            double lowest = 2.0;
            double highest = -1.0;
            bool fits = true;
            for (int c = 0; c < 3; ++c) {
                const int span = expectedRgb[c] - paperRgb[c];
                if (std::abs(span) < 24) {
                    fits = fits && std::abs(rgb[c] - paperRgb[c]) <= std::abs(span) + 3;
                    continue;
                }
                const double t = double(rgb[c] - paperRgb[c]) / span;
                lowest = std::min(lowest, t);
                highest = std::max(highest, t);
            }
            fits = fits && lowest >= -0.03 && highest <= 1.03 && highest - lowest <= 0.12;
            if (fits)
                ++result.blended;
            else
                ++result.stray;
        }
    }
    return result;
}

// The colour a fully covered glyph pixel takes: `colour` at `alpha` over paper.
QColor overPaper(QColor colour, int alpha, QColor paper)
{
    auto mix = [alpha](int source, int under) { return (source * alpha + under * (255 - alpha) + 127) / 255; };
    return QColor(mix(colour.red(), paper.red()), mix(colour.green(), paper.green()), mix(colour.blue(), paper.blue()));
}

QPixmap shownPreview(Advanced& dialog)
{
    auto* view = dialog.findChild<QGraphicsView*>(QStringLiteral("graphicsView"));
    return view ? testsupport::shownPixmap(view->scene()) : QPixmap();
}

// Puts the bar at `value` the way a drag does: sliderMoved while the handle is
// held, valueChanged as it goes (the bar tracks).
void dragBarTo(QScrollBar* bar, int value)
{
    bar->setSliderDown(true);
    bar->setSliderPosition(value);
    bar->setSliderDown(false);
}

} // namespace

class TestForms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    // Help request
    void helpRequestFormHoldsItsWidgetsAndTexts();
    void helpRequestTurnsLineBreaksIntoDashes();
    void helpRequestReplacesEveryLineBreak();
    void helpRequestSendsEmptyFieldsAsEmptyValues();
    void helpRequestCancelOpensNothing();
    void helpRequestTypedHashCutsTheQuery();
    void helpRequestRetranslatesOnLanguageChange();

    // Feedback
    void feedbackFormHoldsItsWidgetsAndTexts();
    void feedbackWithoutAnswerSaysConsideringNo();
    void feedbackWithYesSaysConsideringYes();
    void noShowsReasonsAndYesHidesThem();
    void priceAndFeaturesSentInEitherState_data();
    void priceAndFeaturesSentInEitherState();
    void feedbackKeepsCommentLineBreaks();
    void feedbackTitleReadsDialogAgainAfterLanguageChange();

    // Advanced text settings
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

private:
    void resetSettings();
    QString writePicture(const QString& name, const QImage& image);
    QUrl lastUrl() const { return m_recorder.urls.isEmpty() ? QUrl() : m_recorder.urls.last(); }

    UrlRecorder m_recorder;
    QString m_scheme;
    QString m_savedCurrent;
    std::unique_ptr<QTemporaryDir> m_tmp;
    QString m_work;      // the current folder while a test runs
    QString m_pictures;  // where the test's pictures are kept
};

void TestForms::initTestCase()
{
    // The toolkit's own pickers, so that the tests can answer them.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    m_scheme = QUrl(productWebAddress()).scheme();
    QVERIFY(!m_scheme.isEmpty());
    QDesktopServices::setUrlHandler(m_scheme, &m_recorder, "openUrl");
    m_savedCurrent = QDir::currentPath();
}

void TestForms::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(m_scheme);
}

void TestForms::resetSettings()
{
    UserSettings::m_clr = QColor(Qt::black);
    UserSettings::m_font = QFont(QStringLiteral("Arial"));
    UserSettings::m_usedefault = true;
    UserSettings::m_transparency = 127;
    Defaults::m_font = QFont();
    Defaults::m_clr = QColor();
    MyGlobal::Cur_wmText = QStringLiteral("Text");
    MyGlobal::Cur_wmpos = 132;
    MyGlobal::PrevSize2 = QSize(355, 286);
    MyGlobal::CurSelection.clear();
}

void TestForms::init()
{
    m_recorder.urls.clear();
    resetSettings();
    // The settings dialog writes "preview2.jpeg" into the current folder.
    m_tmp = std::make_unique<QTemporaryDir>();
    QVERIFY(m_tmp->isValid());
    QDir root(m_tmp->path());
    QVERIFY(root.mkpath(QStringLiteral("work")));
    QVERIFY(root.mkpath(QStringLiteral("pictures")));
    m_work = root.filePath(QStringLiteral("work"));
    m_pictures = root.filePath(QStringLiteral("pictures"));
    QVERIFY(QDir::setCurrent(m_work));
    MyGlobal::CurSelection = writePicture(QStringLiteral("fg.png"), testsupport::backgroundPicture(320, 240));
}

void TestForms::cleanup()
{
    QVERIFY(QDir::setCurrent(m_savedCurrent));
    m_tmp.reset();
    resetSettings();
}

QString TestForms::writePicture(const QString& name, const QImage& image)
{
    const QString path = m_pictures + QLatin1Char('/') + name;
    if (!testsupport::writeImage(image, path))
        return QString();
    return path;
}

// ---------------------------------------------------------------- help request

void TestForms::helpRequestFormHoldsItsWidgetsAndTexts()
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

void TestForms::helpRequestTurnsLineBreaksIntoDashes()
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

void TestForms::helpRequestReplacesEveryLineBreak()
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

void TestForms::helpRequestSendsEmptyFieldsAsEmptyValues()
{
    HelpRequest dialog;
    dialog.show();
    clickButtonBox(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(m_recorder.urls.size(), 1);
    QCOMPARE(lastUrl(), QUrl(productWebAddress() + QStringLiteral("/helprequest?emailid=&comments=")));
}

void TestForms::helpRequestCancelOpensNothing()
{
    HelpRequest dialog;
    dialog.show();
    dialog.findChild<QLineEdit*>(QStringLiteral("lineEdit"))->setText(QStringLiteral("me"));
    clickButtonBox(&dialog, QDialogButtonBox::Cancel);
    QVERIFY(m_recorder.urls.isEmpty());
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestForms::helpRequestTypedHashCutsTheQuery()
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

void TestForms::helpRequestRetranslatesOnLanguageChange()
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

// -------------------------------------------------------------------- feedback

void TestForms::feedbackFormHoldsItsWidgetsAndTexts()
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

    auto text = [&dialog](const char* name) -> QString {
        const QString objectName = QString::fromLatin1(name);
        if (auto* label = dialog.findChild<QLabel*>(objectName))
            return label->text();
        if (auto* button = dialog.findChild<QAbstractButton*>(objectName))
            return button->text();
        return QStringLiteral("<missing>");
    };
    QCOMPARE(text("label"), QStringLiteral("Email Id"));
    QCOMPARE(text("label_2"), QStringLiteral("Are you inclined to purchase this software ?"));
    QCOMPARE(text("radioNo"), QStringLiteral("No"));
    QCOMPARE(text("radioYes"), QStringLiteral("Yes"));
    QCOMPARE(text("SubmitFeedback"), QStringLiteral("Submit"));
    QCOMPARE(text("label_4"), QStringLiteral("Comments"));
    QCOMPARE(text("checkBox_2"), QStringLiteral("Price"));
    QCOMPARE(text("label_6"), QStringLiteral("suggest one"));
    QCOMPARE(text("label_5"), QStringLiteral("Which ones?"));
    QCOMPARE(text("checkBox"), QStringLiteral("Missing features"));
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

void TestForms::feedbackWithoutAnswerSaysConsideringNo()
{
    Feedback dialog;
    dialog.show();
    QTest::keyClicks(dialog.findChild<QLineEdit*>(QStringLiteral("mailid")), QStringLiteral("me"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments"))->setPlainText(QStringLiteral("nice"));

    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("SubmitFeedback")), Qt::LeftButton);

    QCOMPARE(m_recorder.urls.size(), 1);
    const QString expected =
        productWebAddress() + QStringLiteral("/feedback?emailid=me&considering=No&features=&price=&comments=nice");
    QCOMPARE(lastUrl(), QUrl(expected));
    QCOMPARE(lastUrl().toString(), QUrl(expected).toString());
    QCOMPARE(QUrlQuery(lastUrl()).queryItemValue(QStringLiteral("considering")), QStringLiteral("No"));
    // Submitting closes the form.
    QVERIFY(!dialog.isVisible());
}

void TestForms::feedbackWithYesSaysConsideringYes()
{
    Feedback dialog;
    dialog.show();
    clickMark(dialog.findChild<QRadioButton*>(QStringLiteral("radioYes")));
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("SubmitFeedback")), Qt::LeftButton);
    QCOMPARE(m_recorder.urls.size(), 1);
    QCOMPARE(lastUrl(), QUrl(productWebAddress()
                             + QStringLiteral("/feedback?emailid=&considering=Yes&features=&price=&comments=")));
}

void TestForms::noShowsReasonsAndYesHidesThem()
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

void TestForms::priceAndFeaturesSentInEitherState_data()
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

void TestForms::priceAndFeaturesSentInEitherState()
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

    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("SubmitFeedback")), Qt::LeftButton);

    QCOMPARE(m_recorder.urls.size(), 1);
    const QString expected = productWebAddress() + QStringLiteral("/feedback?emailid=me&considering=") + considering
        + QStringLiteral("&features=layers&price=20&comments=ok");
    QCOMPARE(lastUrl(), QUrl(expected));
    const QUrlQuery query(lastUrl());
    QCOMPARE(query.queryItemValue(QStringLiteral("price")), QStringLiteral("20"));
    QCOMPARE(query.queryItemValue(QStringLiteral("features")), QStringLiteral("layers"));
}

void TestForms::feedbackKeepsCommentLineBreaks()
{
    Feedback dialog;
    dialog.show();
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("comments"))->setPlainText(QStringLiteral("x\ny"));
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("SubmitFeedback")), Qt::LeftButton);
    QCOMPARE(m_recorder.urls.size(), 1);
    const QString expected =
        productWebAddress() + QStringLiteral("/feedback?emailid=&considering=No&features=&price=&comments=x\ny");
    QCOMPARE(lastUrl(), QUrl(expected));
    QCOMPARE(QUrlQuery(lastUrl()).queryItemValue(QStringLiteral("comments"), QUrl::FullyDecoded),
             QStringLiteral("x\ny"));
}

void TestForms::feedbackTitleReadsDialogAgainAfterLanguageChange()
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

// ------------------------------------------------------------ advanced settings

void TestForms::advancedFormHoldsItsWidgetsAndTexts()
{
    Advanced dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Advanced Settings (Manual)"));
    QCOMPARE(dialog.font().family(), QStringLiteral("Arial"));
    QCOMPARE(childNames(&dialog),
             QStringList({"Reset", "ApplySetting", "FontColor", "FontSize", "label", "label_2", "label_3", "graphicsView",
                          "horizontalScrollBar", "label_4", "label_5", "label_6", "ChooseOutDir", "label_7", "comboBox",
                          "comboFormats", "label_8"}));

    auto button = [&dialog](const char* name) { return dialog.findChild<QPushButton*>(QString::fromLatin1(name)); };
    auto label = [&dialog](const char* name) {
        QLabel* found = dialog.findChild<QLabel*>(QString::fromLatin1(name));
        return found ? found->text() : QStringLiteral("<missing>");
    };
    QVERIFY(button("Reset") && button("ApplySetting") && button("FontColor") && button("FontSize")
            && button("ChooseOutDir"));
    QCOMPARE(button("Reset")->text(), QStringLiteral("Return to Defaults"));
    QCOMPARE(button("Reset")->toolTip(), QStringLiteral("Restore the  default settings and return to main screen."));
    QCOMPARE(button("ApplySetting")->text(), QStringLiteral("Apply My Settings"));
    QCOMPARE(button("FontColor")->text(), QStringLiteral("Change Font Color"));
    QCOMPARE(button("FontSize")->text(), QStringLiteral("Change Font"));
    QCOMPARE(button("FontSize")->toolTip(), QStringLiteral("If picture dimensions are large, use large font size accordingly."));
    QCOMPARE(button("ChooseOutDir")->text(), QStringLiteral("Output Folder"));
    QCOMPARE(label("label"), QStringLiteral("Change transparency"));
    QCOMPARE(label("label_2"), QStringLiteral("opaque"));
    QCOMPARE(label("label_3"), QStringLiteral("transparent"));
    QCOMPARE(label("label_4"), QStringLiteral("Note: These Manual settings will override the intelligent defaults."));
    QCOMPARE(label("label_5"), QStringLiteral("Try maximizing font size if you "));
    QCOMPARE(label("label_6"), QStringLiteral("can't see Text in preview"));
    QCOMPARE(label("label_7"), QStringLiteral("Output dimension"));
    QCOMPARE(label("label_8"), QStringLiteral("Output Format"));
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

void TestForms::advancedHasOnlyACloseButton()
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

void TestForms::advancedOffersTheOutputSizesAndFormats()
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

void TestForms::previewFileWrittenEachTimeDialogIsBuilt()
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

void TestForms::previewFileIsTheFirstReadAt355x280()
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

void TestForms::openingWithAlpha127PutsBarAt49AndLeaves124()
{
    QCOMPARE(UserSettings::m_transparency, 127);
    Advanced dialog;
    QCOMPARE(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"))->value(), 49);
    QCOMPARE(UserSettings::m_transparency, 124);
}

void TestForms::openingRoundsTheStoredAlphaThroughTheBar_data()
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

void TestForms::openingRoundsTheStoredAlphaThroughTheBar()
{
    QFETCH(int, stored);
    QFETCH(int, bar);
    QFETCH(int, after);
    UserSettings::m_transparency = stored;
    Advanced dialog;
    QCOMPARE(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar"))->value(), bar);
    QCOMPARE(UserSettings::m_transparency, after);
}

void TestForms::scrollBarEndsGiveOpaqueAndTransparent_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("alpha");

    QTest::newRow("100 is opaque") << 100 << 255;
    QTest::newRow("0 is transparent") << 0 << 0;
    QTest::newRow("50") << 50 << 127;
    QTest::newRow("1") << 1 << 2;
    QTest::newRow("99") << 99 << 252;
}

void TestForms::scrollBarEndsGiveOpaqueAndTransparent()
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

void TestForms::scrollBarKeysReachBothEnds()
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

void TestForms::previewFitsTheSettingsPreviewBox_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("shown");

    QTest::newRow("wide") << QSize(710, 400) << QSize(355, 200);
    QTest::newRow("tall") << QSize(300, 600) << QSize(143, 286);
    QTest::newRow("small grows") << QSize(71, 40) << QSize(355, 200);
    QTest::newRow("box shape") << QSize(710, 572) << QSize(355, 286);
}

void TestForms::previewFitsTheSettingsPreviewBox()
{
    QFETCH(QSize, picture);
    QFETCH(QSize, shown);
    MyGlobal::CurSelection = writePicture(QStringLiteral("pic.png"), filled(picture.width(), picture.height(), Qt::gray));
    Advanced dialog;
    QCOMPARE(shownPreview(dialog).size(), shown);
}

void TestForms::previewTextCarriesChosenColourAndTransparency_data()
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

void TestForms::previewTextCarriesChosenColourAndTransparency()
{
    QFETCH(QColor, colour);
    QFETCH(int, bar);
    QFETCH(int, alpha);

    // A picture of the preview box's size, so the shown copy is not resampled.
    const QColor paper(255, 255, 255);
    MyGlobal::CurSelection = writePicture(QStringLiteral("paper.png"), filled(355, 286, paper));
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(110);
    font.setBold(true);
    UserSettings::m_font = font;
    UserSettings::m_clr = colour;

    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dragBarTo(dialog.findChild<QScrollBar*>(QStringLiteral("horizontalScrollBar")), bar);
    QCOMPARE(UserSettings::m_transparency, alpha);
    // The colour itself is left opaque; only the pen takes the alpha.
    QCOMPARE(UserSettings::m_clr, colour);

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

void TestForms::previewTextFollowsPositionAndText()
{
    const QColor paper(255, 255, 255);
    MyGlobal::CurSelection = writePicture(QStringLiteral("paper.png"), filled(355, 286, paper));
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(60);
    UserSettings::m_font = font;
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

void TestForms::unreadablePictureLeavesPreviewEmpty()
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

void TestForms::fontPickerAcceptedStoresFontAndRedraws()
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
    answerModal<QFontDialog>(
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

void TestForms::fontPickerCancelledKeepsFont()
{
    Advanced dialog;
    dialog.show();
    const QFont original = UserSettings::m_font;
    const QImage before = shownPreview(dialog).toImage();
    bool answered = false;
    answerModal<QFontDialog>(
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

void TestForms::colourPickerAcceptedStoresColourAndRedraws()
{
    const QColor paper(255, 255, 255);
    MyGlobal::CurSelection = writePicture(QStringLiteral("paper.png"), filled(355, 286, paper));
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(110);
    font.setBold(true);
    UserSettings::m_font = font;
    UserSettings::m_transparency = 255; // the bar at 100 keeps it so
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(UserSettings::m_transparency, 255);

    bool answered = false;
    QColor offered;
    const QColor chosen(10, 200, 30);
    answerModal<QColorDialog>(
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

void TestForms::colourPickerCancelledKeepsColour()
{
    UserSettings::m_clr = QColor(200, 100, 0);
    Advanced dialog;
    dialog.show();
    const QImage before = shownPreview(dialog).toImage();
    bool answered = false;
    QColor offered;
    answerModal<QColorDialog>(
        [&offered](QColorDialog* picker) {
            offered = picker->currentColor();
            picker->setCurrentColor(QColor(0, 0, 255));
            clickButtonBox(picker, QDialogButtonBox::Cancel);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontColor")), Qt::LeftButton);
    QVERIFY(answered);
    QCOMPARE(offered, QColor(200, 100, 0));
    QCOMPARE(UserSettings::m_clr, QColor(200, 100, 0));
    QCOMPARE(shownPreview(dialog).toImage(), before);
}

void TestForms::openingCopiesSettingsIntoDefaults()
{
    UserSettings::m_clr = QColor(1, 2, 3);
    QFont font(QStringLiteral("Arial"));
    font.setPointSize(31);
    font.setItalic(true);
    UserSettings::m_font = font;
    QVERIFY(!Defaults::m_clr.isValid());
    Advanced dialog;
    QCOMPARE(Defaults::m_clr, QColor(1, 2, 3));
    QCOMPARE(Defaults::m_font, font);
}

void TestForms::applyMySettingsClearsUseDefaultAndCloses()
{
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(UserSettings::m_usedefault);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("ApplySetting")), Qt::LeftButton);
    QVERIFY(!UserSettings::m_usedefault);
    QVERIFY(!dialog.isVisible());
}

void TestForms::returnToDefaultsKeepsChangedColour()
{
    UserSettings::m_usedefault = false;
    Advanced dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(Defaults::m_clr, QColor(Qt::black));

    bool answered = false;
    answerModal<QColorDialog>(
        [](QColorDialog* picker) {
            picker->setCurrentColor(QColor(250, 240, 10));
            clickButtonBox(picker, QDialogButtonBox::Ok);
        },
        &answered);
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("FontColor")), Qt::LeftButton);
    QVERIFY(answered);
    QCOMPARE(UserSettings::m_clr, QColor(250, 240, 10));

    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("Reset")), Qt::LeftButton);
    QVERIFY(UserSettings::m_usedefault);
    QVERIFY(!dialog.isVisible());
    // The colour picked stays; the copy taken at opening is not put back.
    QCOMPARE(UserSettings::m_clr, QColor(250, 240, 10));
    QCOMPARE(Defaults::m_clr, QColor(Qt::black));
}

void TestForms::resetThreeDoesNothing()
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
    QCOMPARE(UserSettings::m_clr, QColor(Qt::black));
    QCOMPARE(shownPreview(dialog).toImage(), before);
}

void TestForms::outputControlsDoNothingHere()
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

void TestForms::advancedRetranslatesOnLanguageChange()
{
    Advanced dialog;
    WordTranslator translator;
    translator.words.insert(QStringLiteral("Advanced|Advanced Settings (Manual)"), QStringLiteral("Erweitert"));
    translator.words.insert(QStringLiteral("Advanced|Apply My Settings"), QStringLiteral("Anwenden"));
    QVERIFY(QCoreApplication::installTranslator(&translator));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Erweitert"));
    QCOMPARE(dialog.findChild<QPushButton*>(QStringLiteral("ApplySetting"))->text(), QStringLiteral("Anwenden"));
    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QCoreApplication::processEvents();
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Advanced Settings (Manual)"));
    QCOMPARE(dialog.findChild<QPushButton*>(QStringLiteral("ApplySetting"))->text(), QStringLiteral("Apply My Settings"));
    // The boxes' entries come from the constructor and survive it.
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("comboBox"))->count(), 6);
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("comboFormats"))->count(), 6);
}

PLENDRA_TEST_MAIN(TestForms)

#include "tst_forms.moc"
