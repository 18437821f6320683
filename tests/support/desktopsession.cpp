// SPDX-License-Identifier: MIT
#include "tests/support/desktopsession.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QThread>

namespace testsupport {

DesktopSession::DesktopSession(const QString& home, const QProcessEnvironment& env)
{
    QProcessEnvironment e = env;
    e.insert(QStringLiteral("HOME"), home);
    e.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    e.remove(QStringLiteral("QT_LOGGING_RULES"));
    // Qt's own file dialog, never a desktop's native one.
    e.insert(QStringLiteral("QT_QPA_PLATFORMTHEME"), QStringLiteral("generic"));
    e.remove(QStringLiteral("XDG_CURRENT_DESKTOP"));
    e.remove(QStringLiteral("DESKTOP_SESSION"));
    m_process.setProcessEnvironment(e);
    m_process.setWorkingDirectory(QStringLiteral(PLENDRA_BUILD_DIR));
    m_process.setProgram(QStringLiteral(PLENDRA_BUNDLE_EXE));
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

void DesktopSession::useProgram(const QString& program, const QString& workingDirectory)
{
    m_process.setProgram(program);
    if (!workingDirectory.isEmpty())
        m_process.setWorkingDirectory(workingDirectory);
}

DesktopSession::~DesktopSession()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString DesktopSession::xdotool(const QStringList& arguments, bool* ok)
{
    QProcess run;
    run.start(QStringLiteral("xdotool"), arguments);
    const bool finished = run.waitForFinished(30000);
    if (ok)
        *ok = finished && run.exitStatus() == QProcess::NormalExit && run.exitCode() == 0;
    return QString::fromUtf8(run.readAllStandardOutput()).trimmed();
}

QString DesktopSession::findWindow(const QString& title, int milliseconds)
{
    const QString pattern = QLatin1Char('^') + QRegularExpression::escape(title) + QLatin1Char('$');
    QElapsedTimer clock;
    clock.start();
    do {
        bool ok = false;
        const QString found = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), pattern}, &ok);
        if (ok && !found.isEmpty())
            return found.split(QLatin1Char('\n')).first();
        QThread::msleep(200);
    } while (clock.elapsed() < milliseconds);
    return QString();
}

bool DesktopSession::windowExists(const QString& title)
{
    return !findWindow(title, 0).isEmpty();
}

bool DesktopSession::start(const QString& title)
{
    m_process.start();
    if (!m_process.waitForStarted(10000))
        return false;
    m_windowId = findWindow(title, 30000);
    if (m_windowId.isEmpty())
        return false;
    // Let the first paint land before anyone looks.
    QThread::msleep(700);
    return readGeometry();
}

bool DesktopSession::readGeometry()
{
    bool ok = false;
    const QString shell = xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), m_windowId}, &ok);
    if (!ok)
        return false;
    int x = 0, y = 0, w = 0, h = 0;
    for (const QString& line : shell.split(QLatin1Char('\n'))) {
        const QStringList kv = line.split(QLatin1Char('='));
        if (kv.size() != 2)
            continue;
        if (kv[0] == QLatin1String("X")) x = kv[1].toInt();
        if (kv[0] == QLatin1String("Y")) y = kv[1].toInt();
        if (kv[0] == QLatin1String("WIDTH")) w = kv[1].toInt();
        if (kv[0] == QLatin1String("HEIGHT")) h = kv[1].toInt();
    }
    m_origin = QPoint(x, y);
    m_size = QSize(w, h);
    return w > 0 && h > 0;
}

bool DesktopSession::click(QPoint inWindow, int button)
{
    bool moved = false;
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(m_origin.x() + inWindow.x()),
             QString::number(m_origin.y() + inWindow.y())},
            &moved);
    bool clicked = false;
    xdotool({QStringLiteral("click"), QString::number(button)}, &clicked);
    QThread::msleep(400);
    return moved && clicked;
}

bool DesktopSession::key(const QString& keys)
{
    bool ok = false;
    xdotool({QStringLiteral("key"), QStringLiteral("--clearmodifiers"), keys}, &ok);
    QThread::msleep(300);
    return ok;
}

bool DesktopSession::type(const QString& text)
{
    bool ok = false;
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text}, &ok);
    QThread::msleep(300);
    return ok;
}

QImage DesktopSession::screenshot(const QString& keepAs)
{
    QTemporaryFile shot(QDir::tempPath() + QStringLiteral("/plendra-shot-XXXXXX.png"));
    if (!shot.open())
        return QImage();
    shot.close();
    QProcess import;
    import.start(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), shot.fileName()});
    if (!import.waitForFinished(30000) || import.exitCode() != 0)
        return QImage();
    QImage image(shot.fileName());
    if (!keepAs.isEmpty() && !image.isNull())
        image.save(keepAs);
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage DesktopSession::windowShot(const QString& keepAs)
{
    const QImage screen = screenshot();
    const QImage window = screen.copy(QRect(m_origin, m_size));
    if (!keepAs.isEmpty() && !window.isNull())
        window.save(keepAs);
    return window;
}

int DesktopSession::waitForExit(int milliseconds)
{
    if (!m_process.waitForFinished(milliseconds))
        return -1;
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

namespace {

template <typename Test>
double share(const QImage& image, const QRect& rect, Test isIt)
{
    const QRect area = rect.intersected(image.rect());
    if (area.isEmpty())
        return 0.0;
    long hits = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            hits += isIt(image.pixel(x, y)) ? 1 : 0;
    return double(hits) / (double(area.width()) * area.height());
}

} // namespace

int colourDistance(QRgb a, QColor b)
{
    return qAbs(qRed(a) - b.red()) + qAbs(qGreen(a) - b.green()) + qAbs(qBlue(a) - b.blue());
}

double colourShare(const QImage& image, const QRect& rect, QColor colour)
{
    return share(image, rect, [colour](QRgb p) { return colourDistance(p, colour) < 60; });
}

int lowestContentRow(const QImage& window, const QRect& area)
{
    const int bottom = area.bottom() - 24;
    const QRgb empty = window.pixel(area.center().x(), bottom);
    for (int y = bottom; y >= area.top(); --y)
        for (int x = area.left() + 4; x <= area.right() - 4; ++x)
            if (colourDistance(window.pixel(x, y), QColor(empty)) > 30)
                return y;
    return -1;
}

double greenShare(const QImage& image, const QRect& rect)
{
    return share(image, rect, [](QRgb p) {
        return qGreen(p) > 80 && qGreen(p) > qRed(p) * 1.3 && qGreen(p) > qBlue(p) * 1.3;
    });
}

double blueShare(const QImage& image, const QRect& rect)
{
    return share(image, rect, [](QRgb p) {
        return qBlue(p) > 80 && qBlue(p) > qRed(p) * 1.3 && qBlue(p) > qGreen(p) * 1.3;
    });
}

} // namespace testsupport
