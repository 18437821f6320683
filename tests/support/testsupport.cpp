// SPDX-License-Identifier: MIT
#include "tests/support/testsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QMap>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstring>

#include <unistd.h>

namespace testsupport {

namespace {

int clampChannel(int v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

QMap<QString, std::function<void()>>& scenarios()
{
    static QMap<QString, std::function<void()>> all;
    return all;
}

} // namespace

QImage studioShot(int width, int height, QColor backdrop, quint32 seed)
{
    QImage img(width, height, QImage::Format_RGB32);
    QRandomGenerator rng(seed);
    for (int y = 0; y < height; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int n = int(rng.bounded(9u)) - 4;
            row[x] = qRgb(clampChannel(backdrop.red() + n), clampChannel(backdrop.green() + n),
                          clampChannel(backdrop.blue() + n));
        }
    }
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(Qt::NoPen);
    // Body, head and dark hair.
    p.setBrush(QColor(70, 45, 40));
    p.drawRect(width * 3 / 8, height / 2, width / 4, height / 2);
    p.setBrush(QColor(215, 170, 140));
    p.drawEllipse(QPoint(width / 2, height * 3 / 8), width / 10, height / 8);
    p.setBrush(QColor(25, 20, 18));
    p.drawRect(width / 2 - width / 10, height / 4 - height / 40, width / 5, height / 14);
    return img;
}

QImage backgroundPicture(int width, int height, quint32 seed)
{
    QImage img(width, height, QImage::Format_RGB32);
    QRandomGenerator rng(seed);
    const int a = int(rng.bounded(60u));
    for (int y = 0; y < height; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < width; ++x)
            row[x] = qRgb(clampChannel(200 - a + x * 50 / qMax(1, width)), clampChannel(90 + y * 80 / qMax(1, height)),
                          clampChannel(40 + a + (x + y) % 32));
    }
    return img;
}

QImage randomImage(int width, int height, QImage::Format format, quint32 seed)
{
    QImage img(width, height, QImage::Format_ARGB32);
    QRandomGenerator rng(seed);
    for (int y = 0; y < height; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < width; ++x)
            row[x] = rng.generate();
    }
    return format == QImage::Format_ARGB32 ? img : img.convertToFormat(format);
}

bool writeImage(const QImage& image, const QString& path, int quality)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    // Endings Qt cannot write (".gif", say) still get a picture, as PNG data.
    const QByteArray suffix = QFileInfo(path).suffix().toLower().toLatin1();
    const char* format = QImageWriter::supportedImageFormats().contains(suffix) ? nullptr : "PNG";
    return image.save(path, format, quality);
}

bool makeSampleFolder(const QString& folder, const QStringList& backgroundNames, int width, int height)
{
    bool ok = writeImage(studioShot(width, height, QColor(40, 180, 60), 11), folder + QStringLiteral("/1green.JPG"));
    ok = writeImage(studioShot(width, height, QColor(40, 70, 200), 12), folder + QStringLiteral("/blue1.JPG")) && ok;
    ok = QDir().mkpath(folder + QStringLiteral("/Bkg")) && ok;
    quint32 seed = 100;
    for (const QString& name : backgroundNames)
        ok = writeImage(backgroundPicture(width, height, seed++), folder + QStringLiteral("/Bkg/") + name) && ok;
    return ok;
}

QString emptyHomeWithOutputFolder(const QString& home)
{
    QDir dir(home);
    const QStringList entries = dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        const QFileInfo info(dir.filePath(entry));
        if (info.isDir() && !info.isSymLink())
            QDir(info.filePath()).removeRecursively();
        else
            QFile::remove(info.filePath());
    }
    const QString output = home + QStringLiteral("/Documents/Plendra");
    return QDir().mkpath(output) ? output : QString();
}

double meanDifference(const QImage& a, const QImage& b)
{
    const QImage x = a.convertToFormat(QImage::Format_RGB32);
    const QImage y = b.convertToFormat(QImage::Format_RGB32);
    if (x.size() != y.size() || x.isNull())
        return 255.0;
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        const QRgb* p = reinterpret_cast<const QRgb*>(x.constScanLine(row));
        const QRgb* q = reinterpret_cast<const QRgb*>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col)
            sum += qAbs(qRed(p[col]) - qRed(q[col])) + qAbs(qGreen(p[col]) - qGreen(q[col]))
                + qAbs(qBlue(p[col]) - qBlue(q[col]));
    }
    return sum / (3.0 * x.width() * x.height());
}

bool samePixels(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull() != b.isNull())
        return false;
    return a.convertToFormat(QImage::Format_ARGB32) == b.convertToFormat(QImage::Format_ARGB32);
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

int sourceLineOf(const QString& file, const QString& text)
{
    QFile source(QStringLiteral(PLENDRA_SOURCE_DIR "/") + file);
    if (!source.open(QIODevice::ReadOnly))
        return 0;
    int line = 0;
    while (!source.atEnd()) {
        ++line;
        if (QString::fromUtf8(source.readLine()).contains(text))
            return line;
    }
    return 0;
}

namespace {

ChildRun runChild(const QString& program, const QStringList& arguments, const QProcessEnvironment& env)
{
    ChildRun run;
    // The child's temporary files (its own home included) go into a folder of
    // the parent's, so that even a child that aborts leaves nothing behind.
    // A caller that chose the child's TMPDIR keeps its choice.
    QTemporaryDir childTemp;
    QProcessEnvironment childEnv = env;
    if (childEnv.value(QStringLiteral("TMPDIR")) == qEnvironmentVariable("TMPDIR"))
        childEnv.insert(QStringLiteral("TMPDIR"), childTemp.path());
    QProcess child;
    child.setProcessEnvironment(childEnv);
    child.start(program, arguments);
    run.started = child.waitForStarted(30000);
    if (!run.started)
        return run;
    child.waitForFinished(120000);
    run.crashed = child.exitStatus() == QProcess::CrashExit;
    run.exitCode = child.exitCode();
    run.standardError = child.readAllStandardError();
    run.standardOutput = child.readAllStandardOutput();
    return run;
}

} // namespace

ChildRun runChildScenario(const QString& name, const QProcessEnvironment& env)
{
    return runChild(QCoreApplication::applicationFilePath(), {QStringLiteral("--child"), name}, env);
}

ChildRun runChildScenarioWithoutFileOverrides(const QString& name, const QProcessEnvironment& env)
{
    if (::geteuid() != 0)
        return runChildScenario(name, env);
    // Root keeps its user id but loses CAP_DAC_OVERRIDE and CAP_DAC_READ_SEARCH
    // from the bounding set, so the child never gains them again on exec.
    const QString caps = QStringLiteral("-dac_override,-dac_read_search");
    return runChild(QStringLiteral("setpriv"),
                    {QStringLiteral("--bounding-set=") + caps, QStringLiteral("--inh-caps=") + caps,
                     QCoreApplication::applicationFilePath(), QStringLiteral("--child"), name},
                    env);
}

bool registerChildScenario(const char* name, std::function<void()> body)
{
    scenarios().insert(QString::fromLatin1(name), std::move(body));
    return true;
}

class IsolatedHome
{
public:
    QTemporaryDir dir;
};

IsolatedHome* isolateHome()
{
    static IsolatedHome home;
    if (!home.dir.isValid())
        return nullptr;
    qputenv("HOME", QFile::encodeName(home.dir.path()));
    qunsetenv("XDG_CONFIG_HOME");
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_CACHE_HOME");
    return &home;
}

bool runRequestedChildScenario(int argc, char** argv, int* exitCode)
{
    if (argc < 3 || std::strcmp(argv[1], "--child") != 0)
        return false;
    const auto found = scenarios().constFind(QString::fromLocal8Bit(argv[2]));
    if (found == scenarios().constEnd()) {
        *exitCode = 3;
        return true;
    }
    found.value()();
    *exitCode = 0;
    return true;
}

} // namespace testsupport
