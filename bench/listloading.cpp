// SPDX-License-Identifier: MIT
// The library photos are one generated 24 MP JPEG copied under many names:
// decoding costs the same for each, and writing it once keeps the run short.
// Icons count as filled when every item of both lists has a non-empty icon
// (every photo here is readable), so the same measurement holds for a window
// that makes its icons before it shows and for one that fills them later.
#include "bench/listloading.h"

#include "bench/benchphotos.h"
#include "state/globals.h"
#include "state/imagelimits.h"
#include "mainwindow/dialog.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QListWidget>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QWindow>

#include <cstdio>
#include <map>
#include <memory>

namespace {

const int kLibrarySizes[] = {0, 10, 50};
const int kAddCount = 50;
const int kMegapixels = 24;

// The generated photos, written once per process.
struct Masters
{
    QTemporaryDir dir;
    bool ok = false;
    QString sample() const { return dir.path(); }
    QString libraryPhoto() const { return dir.path() + QStringLiteral("/Bkg/a.jpg"); }
};

Masters& masters()
{
    static Masters m;
    static const bool made = [] {
        m.ok = benchphotos::makeSampleFolder(m.dir.path(), benchphotos::sizeForMegapixels(kMegapixels));
        return true;
    }();
    Q_UNUSED(made);
    return m;
}

// A folder beside the bundle with the two samples and `count` library photos.
bool makeAppFolder(const QString& folder, int count)
{
    const Masters& m = masters();
    bool ok = m.ok && QDir().mkpath(folder + QStringLiteral("/Bkg"));
    ok = ok && QFile::copy(m.sample() + QStringLiteral("/1green.JPG"), folder + QStringLiteral("/1green.JPG"));
    ok = ok && QFile::copy(m.sample() + QStringLiteral("/blue1.JPG"), folder + QStringLiteral("/blue1.JPG"));
    for (int i = 0; ok && i < count; ++i)
        ok = QFile::copy(m.libraryPhoto(), folder + QStringLiteral("/Bkg/bg%1.jpg").arg(i, 2, 10, QLatin1Char('0')));
    return ok;
}

bool everyIconFilled(Dialog& window)
{
    for (const QListWidget* list : window.findChildren<QListWidget*>())
        for (int row = 0; row < list->count(); ++row)
            if (list->item(row)->icon().isNull())
                return false;
    return true;
}

void untilEveryIconFilled(Dialog& window)
{
    while (!everyIconFilled(window)) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
}

// Shows the window and draws it once, as the first paint would.
void showAndDraw(Dialog& window)
{
    window.show();
    while (!window.windowHandle() || !window.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    benchmark::DoNotOptimize(window.grab().cacheKey());
}

struct StartupResult
{
    double windowSeconds = 0;
    double iconsSeconds = 0;
};
std::map<int, StartupResult> g_startups;

void startupBench(benchmark::State& state, int count)
{
    QTemporaryDir folder;
    if (!makeAppFolder(folder.path(), count)) {
        state.SkipWithError("could not write the library photos");
        return;
    }
    MyGlobal::appDir = folder.path();
    // The click benchmarks before this one leave a key point behind; the
    // program starts without one.
    MyGlobal::xyClicked = QPoint(0, 0);
    // The first window of the process also loads fonts, styles and plugins;
    // one unmeasured window first, so that every library size is measured
    // in the same warm process.
    static const bool warmedUp = [] {
        Dialog warmUp;
        showAndDraw(warmUp);
        untilEveryIconFilled(warmUp);
        return true;
    }();
    Q_UNUSED(warmedUp);
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        auto window = std::make_unique<Dialog>();
        showAndDraw(*window);
        const double shown = clock.nsecsElapsed() / 1e9;
        untilEveryIconFilled(*window);
        const double filled = clock.nsecsElapsed() / 1e9;
        window.reset();
        state.SetIterationTime(shown);
        state.counters["icons_s"] = filled;
        g_startups[count] = {shown, filled};
    }
}

// A "Vm..." line of /proc/self/status in kilobytes, or -1.
long statusKb(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toLong();
    return -1;
}

} // namespace

void registerListLoadingBenchmarks()
{
    for (int count : kLibrarySizes)
        benchmark::RegisterBenchmark(("startup/Bkg" + std::to_string(count) + "x24MP").c_str(), startupBench, count)
            ->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

double bareLibraryDecodeSeconds()
{
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer clock;
        clock.start();
        const QImage photo(masters().libraryPhoto());
        benchmark::DoNotOptimize(photo.constBits());
        best = std::min(best, clock.nsecsElapsed() / 1e9);
    }
    return best;
}

void printListLoadingSummary(double decode)
{
    const int cores = QThread::idealThreadCount();
    const auto empty = g_startups.find(0);
    if (empty == g_startups.end() || decode <= 0)
        return;
    std::printf("\nStart-up with 24 MP JPEGs in \"Bkg\" (%d cores; one bare decode %.0f ms; empty \"Bkg\" %.0f ms)\n",
                cores, decode * 1e3, empty->second.windowSeconds * 1e3);
    std::printf("%-6s %12s %26s %14s %32s\n", "Bkg", "window ms", "/(empty + 1 decode)", "icons ms",
                "/(count x decode / cores)");
    for (const auto& [count, r] : g_startups) {
        const double windowFloor = empty->second.windowSeconds + decode;
        const double iconsFloor = count * decode / cores;
        std::printf("%-6d %12.0f %25.2fx %14.0f", count, r.windowSeconds * 1e3, r.windowSeconds / windowFloor,
                    r.iconsSeconds * 1e3);
        if (count > 0)
            std::printf(" %31.2fx\n", r.iconsSeconds / iconsFloor);
        else
            std::printf(" %32s\n", "-");
    }
}

int runAddPeakChild(const QString& executable)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(executable, {QString::fromLatin1(kAddPeakChildFlag)});
    if (!child.waitForStarted(30000) || !child.waitForFinished(900000))
        return 1;
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : 1;
}

int addPeakChild(int argc, char** argv)
{
    QApplication app(argc, argv);
    allowLargePhotos();
    QLoggingCategory::setFilterRules(QStringLiteral("qt.core.qmetaobject.connectslotsbyname=false"));
    QTemporaryDir appFolder;
    QTemporaryDir shoot;
    bool ok = makeAppFolder(appFolder.path(), 1);
    for (int i = 0; ok && i < kAddCount; ++i)
        ok = QFile::copy(masters().libraryPhoto(), shoot.path() + QStringLiteral("/shot%1.jpg").arg(i, 2, 10, QLatin1Char('0')));
    if (!ok) {
        std::fprintf(stderr, "could not write the photos of the Add\n");
        return 1;
    }
    const double decode = bareLibraryDecodeSeconds();
    const QSize size = benchphotos::sizeForMegapixels(kMegapixels);
    const double photoMb = double(size.width()) * size.height() * 4 / (1024.0 * 1024.0);
    const int cores = QThread::idealThreadCount();

    MyGlobal::appDir = appFolder.path();
    const long beforeWindow = statusKb("VmRSS");
    Dialog window;
    showAndDraw(window);
    untilEveryIconFilled(window);
    const long beforeAdd = statusKb("VmRSS");

    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    const bool resettable = clear.open(QIODevice::WriteOnly) && clear.write("5") == 1;
    clear.close();
    QElapsedTimer clock;
    clock.start();
    // The watched folder's scan: the same listing and showing as an Add,
    // without the file dialog.
    window.addAllFilesinFolder(shoot.path());
    const double busy = clock.nsecsElapsed() / 1e9;
    untilEveryIconFilled(window);
    const double filled = clock.nsecsElapsed() / 1e9;
    const long peak = statusKb("VmHWM");

    auto copies = [&](long kb) { return kb / 1024.0 / photoMb; };
    std::printf("\nAdd of %d photos of %d MP (%d cores; one bare decode %.0f ms; one decoded photo %.0f MB)\n", kAddCount,
                kMegapixels, cores, decode * 1e3, photoMb);
    std::printf("  window busy in the Add: %.0f ms (%.1f decodes)\n", busy * 1e3, busy / decode);
    std::printf("  every icon filled:      %.0f ms = %.2fx (count x decode / cores = %.0f ms)\n", filled * 1e3,
                filled / (kAddCount * decode / cores), kAddCount * decode / cores * 1e3);
    if (resettable && beforeWindow > 0 && peak > 0)
        std::printf("  peak memory: %.0f MB = %.2f photos above the start (%.2f above the %.0f MB before the Add);"
                    " bound cores + 2 = %d\n",
                    peak / 1024.0, copies(peak - beforeWindow), copies(peak - beforeAdd), beforeAdd / 1024.0, cores + 2);
    else
        std::printf("  (no /proc peak reset here)\n");
    std::printf("  method: wall clock; VmHWM from /proc/self/status, reset through /proc/self/clear_refs before the Add\n");
    return 0;
}
