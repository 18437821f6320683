// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the forms' tests: the recorder of the addresses the forms
// hand to the desktop (the browser is never started), a translator that
// announces a language change, clicks on marks and button boxes, the texts a
// form shows, and the reading of the settings dialog's preview; the test case
// base that routes the web address's scheme to the recorder and gives each
// test its settings back, a current folder and a folder of pictures of its
// own.

#include <QColor>
#include <QDialogButtonBox>
#include <QHash>
#include <QImage>
#include <QList>
#include <QPair>
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
class QWidget;

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

// The title of `form` and the text of its label or button `name` while a
// translator that knows `words` is installed, then after it was removed again,
// each time once the windows heard of the language change; empty when the
// translator could not be installed or removed.
QList<QStringList> titleAndTextAcrossLanguageChange(const QWidget& form, const QString& name,
                                                    const QHash<QString, QString>& words);

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

// Object names and the texts their widgets must show.
using NamedTexts = QList<QPair<QString, QString>>;
// The entries of `expected` whose label (or, with `orButton`, label or else
// button) does not show the text given, as "name: what it shows" ("<missing>"
// when `form` has no such widget).
QStringList wrongTexts(const QWidget& form, const NamedTexts& expected, bool orButton = false);

QImage filled(int width, int height, QColor colour);

TextPixels inspectText(const QImage& picture, QColor paper, QColor expected);

// The colour a fully covered glyph pixel takes: `colour` at `alpha` over paper.
QColor overPaper(QColor colour, int alpha, QColor paper);

QPixmap shownPreview(Advanced& dialog);

// Puts the bar at `value` the way a drag does: sliderMoved while the handle is
// held, valueChanged as it goes (the bar tracks).
void dragBarTo(QScrollBar* bar, int value);

// The base of the forms' test cases: the web address's scheme routed to the
// recorder for the run, and for each test the settings put back and a current
// folder and a folder of pictures of its own.
class FormsTestCase : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

protected:
    void resetSettings();
    QString writePicture(const QString& name, const QImage& image);
    // A white picture of the preview box's size made current (so the shown
    // copy is not resampled) and the overlay font set to Arial of
    // `fontPixelSize` pixels; returns the paper's colour.
    QColor selectPaperWithArial(int fontPixelSize, bool bold);
    QUrl lastUrl() const { return m_recorder.urls.isEmpty() ? QUrl() : m_recorder.urls.last(); }

    UrlRecorder m_recorder;
    QString m_scheme;
    QString m_savedCurrent;
    std::unique_ptr<QTemporaryDir> m_tmp;
    QString m_work;      // the current folder while a test runs
    QString m_pictures;  // where the test's pictures are kept
};

} // namespace formstest
