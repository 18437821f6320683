// SPDX-License-Identifier: MIT
#pragma once

// Drives the built program on the X display of the test (under xvfb-run):
// starts the bundle, finds its window, clicks and types with xdotool, and
// takes screenshots with ImageMagick's import; where the window's parts lie
// and what a screenshot shows of them.

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>

namespace testsupport {

// The title of the program's window.
inline const QString kWindowTitle = QStringLiteral("Plendra - photo v1.3");

// Where the window lays out the parts the tests touch, in window coordinates.
namespace windowplaces {
inline const QRect kAddButton(20, 90, 71, 31);
inline const QRect kRemoveBackground(724, 90, 71, 31);
inline const QRect kForegrounds(20, 120, 151, 311);
inline const QRect kBackgrounds(643, 120, 151, 311);
inline const QRect kPreview(200, 80, 421, 351);
inline const QRect kSaveImage(310, 470, 161, 34);
} // namespace windowplaces

class DesktopSession
{
public:
    // `home` becomes HOME of the program; `env` may add or override more.
    explicit DesktopSession(const QString& home, const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());
    ~DesktopSession();

    // Starts another program instead of the built bundle (an installed
    // launcher, say), in `workingDirectory` when one is given.
    void useProgram(const QString& program, const QString& workingDirectory = QString());

    // Starts the bundle in the build folder and waits until a window with this
    // title is shown; false when it did not appear within the time limit.
    bool start(const QString& title = kWindowTitle);
    QString windowId() const { return m_windowId; }
    // The window's top-left corner on the screen.
    QPoint windowOrigin() const { return m_origin; }
    QSize windowSize() const { return m_size; }

    // Clicks at a point given in window coordinates.
    bool click(QPoint inWindow, int button = 1);
    bool key(const QString& keys);
    bool type(const QString& text);
    // A screenshot of the whole screen, also written to `keepAs` when given.
    QImage screenshot(const QString& keepAs = QString());
    // The window's part of a screenshot.
    QImage windowShot(const QString& keepAs = QString());

    // Waits for the program to end; -1 when it did not end in time or crashed.
    int waitForExit(int milliseconds = 20000);
    QProcess& process() { return m_process; }

    // Runs xdotool with these arguments and returns what it printed.
    static QString xdotool(const QStringList& arguments, bool* ok = nullptr);
    // The id of a shown window with exactly this title (the program's own or
    // one of its dialogs), waiting up to `milliseconds`; empty when none came.
    static QString findWindow(const QString& title, int milliseconds = 20000);
    static bool windowExists(const QString& title);

private:
    bool readGeometry();

    QProcess m_process;
    QString m_windowId;
    QPoint m_origin;
    QSize m_size;
};

// The sum of the channel differences of a pixel and a colour.
int colourDistance(QRgb a, QColor b);
// Share of the pixels in `rect` of `image` within a small distance of `colour`.
double colourShare(const QImage& image, const QRect& rect, QColor colour);
// Lowest row of `area` (a list) in a window shot that holds an item, or -1:
// rows are compared with the list's empty background just above its
// horizontal scroll bar.
int lowestContentRow(const QImage& window, const QRect& area);

// Share of the pixels in `rect` of `image` that are clearly backdrop green.
double greenShare(const QImage& image, const QRect& rect);
// Share of the pixels in `rect` that are clearly backdrop blue.
double blueShare(const QImage& image, const QRect& rect);

} // namespace testsupport
