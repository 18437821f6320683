// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the forms' tests: the recorder of the addresses the forms
// hand to the desktop (the browser is never started), a translator that
// announces a language change, clicks on marks and button boxes, and the
// reading of the settings dialog's preview; the test case base that routes
// the web address's scheme to the recorder and gives each test a current
// folder and a folder of pictures of its own.

#include <QColor>
#include <QDialogButtonBox>
#include <QHash>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPixmap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTranslator>
#include <QUrl>

#include <memory>

class Advanced;
class QAbstractButton;
class QDialog;
class QScrollBar;

namespace formstest {

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

// How the overlay text shows up on plain paper: every pixel is either paper,
// or paper blended towards the expected colour (antialiased edges), or exactly
// the expected colour where a glyph covers it fully. Anything else is stray.
struct TextPixels
{
    int exact = 0;
    int blended = 0;
    int stray = 0;
};

// A radio button or check box reacts to clicks on its mark and its text, not
// on the empty rest of its rectangle: click the mark.
void clickMark(QAbstractButton* button);

void clickButtonBox(QDialog* dialog, QDialogButtonBox::StandardButton which);

QStringList childNames(const QObject* parent);

QImage filled(int width, int height, QColor colour);

TextPixels inspectText(const QImage& picture, QColor paper, QColor expected);

// The colour a fully covered glyph pixel takes: `colour` at `alpha` over paper.
QColor overPaper(QColor colour, int alpha, QColor paper);

QPixmap shownPreview(Advanced& dialog);

// Puts the bar at `value` the way a drag does: sliderMoved while the handle is
// held, valueChanged as it goes (the bar tracks).
void dragBarTo(QScrollBar* bar, int value);

// The base of the forms' test cases (no slots of its own: each test case calls
// these from its initTestCase, init, cleanup and cleanupTestCase).
class FormsTestCase : public QObject
{
protected:
    void setUpRun();
    void tearDownRun();
    void setUpTest();
    void tearDownTest();
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

} // namespace formstest
