// SPDX-License-Identifier: MIT
#include "tests/forms/formstestsupport.h"

#include "forms/advanced.h"
#include "state/globals.h"
#include "state/webaddress.h"
#include "tests/fixture/widgetactions.h"
#include "tests/support/testsupport.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QGraphicsView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace formstest {



QList<QStringList> titleAndTextAcrossLanguageChange(const QWidget& form, const QString& name,
                                                    const QHash<QString, QString>& words)
{
    const auto read = [&form, &name]() {
        QString text = QStringLiteral("<missing>");
        if (auto* label = form.findChild<QLabel*>(name))
            text = label->text();
        else if (auto* button = form.findChild<QAbstractButton*>(name))
            text = button->text();
        return QStringList({form.windowTitle(), text});
    };
    WordTranslator translator;
    translator.words = words;
    if (!QCoreApplication::installTranslator(&translator))
        return {};
    QCoreApplication::processEvents();
    const QStringList translated = read();
    if (!QCoreApplication::removeTranslator(&translator))
        return {};
    QCoreApplication::processEvents();
    return {translated, read()};
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

QStringList wrongTexts(const QWidget& form, const NamedTexts& expected, bool orButton)
{
    QStringList wrong;
    for (const auto& [name, text] : expected) {
        QString shown = QStringLiteral("<missing>");
        if (auto* label = form.findChild<QLabel*>(name))
            shown = label->text();
        else if (auto* button = orButton ? form.findChild<QAbstractButton*>(name) : nullptr)
            shown = button->text();
        if (shown != text)
            wrong << name + QStringLiteral(": ") + shown;
    }
    return wrong;
}

QImage filled(int width, int height, QColor colour)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}


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
    return view ? widgettest::shownPixmap(view->scene()) : QPixmap();
}

// Puts the bar at `value` the way a drag does: sliderMoved while the handle is
// held, valueChanged as it goes (the bar tracks).
void dragBarTo(QScrollBar* bar, int value)
{
    bar->setSliderDown(true);
    bar->setSliderPosition(value);
    bar->setSliderDown(false);
}

void FormsTestCase::initTestCase()
{
    // The toolkit's own pickers, so that the tests can answer them.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    m_scheme = QUrl(productWebAddress()).scheme();
    QVERIFY(!m_scheme.isEmpty());
    QDesktopServices::setUrlHandler(m_scheme, &m_recorder, "openUrl");
    m_savedCurrent = QDir::currentPath();
}

void FormsTestCase::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(m_scheme);
}

void FormsTestCase::resetSettings()
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

void FormsTestCase::init()
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

void FormsTestCase::cleanup()
{
    QVERIFY(QDir::setCurrent(m_savedCurrent));
    m_tmp.reset();
    resetSettings();
}

QColor FormsTestCase::selectPaperWithArial(int fontPixelSize, bool bold)
{
    const QColor paper(255, 255, 255);
    MyGlobal::CurSelection = writePicture(QStringLiteral("paper.png"), filled(355, 286, paper));
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(fontPixelSize);
    font.setBold(bold);
    UserSettings::m_font = font;
    return paper;
}

QString FormsTestCase::writePicture(const QString& name, const QImage& image)
{
    const QString path = m_pictures + QLatin1Char('/') + name;
    if (!testsupport::writeImage(image, path))
        return QString();
    return path;
}

} // namespace formstest
