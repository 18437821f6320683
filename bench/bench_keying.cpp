// SPDX-License-Identifier: MIT
// `make bench`: the key mask on generated 2, 24 and 45 megapixel photos, next
// to the per-pixel version (the oracle of the tests) and a plain memcpy of the
// same image, and the whole click in the preview next to a bare decode of the
// JPEG it reloads. Prints megapixels per second and the ratios, then the peak
// memory of a click on a 45 megapixel photo, measured in a fresh process.
#include "state/globals.h"
#include "state/imagelimits.h"
#include "bench/benchphotos.h"
#include "bench/listloading.h"
#include "keying/photoread.h"
#include "bench/peakmemory.h"
#include "keying/keymask.h"
#include "keying/keymask_tuning.h"
#include "mainwindow/dialog.h"
#include "tests/keying/keyingoracle.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLoggingCategory>
#include <QPixmap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTransform>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

const int kSizes[] = {2, 24, 45};
const int kClickMegapixels = 24;

struct Inputs
{
    QImage photo;
    QImage background;
    QImage work; // keyed in place, restored from photo before each pass
    QRgb key = 0;
};

Inputs& inputs(int megapixels)
{
    static std::map<int, Inputs> all;
    Inputs& in = all[megapixels];
    if (in.photo.isNull()) {
        const QSize size = benchphotos::sizeForMegapixels(megapixels);
        in.photo = benchphotos::studioShot(size, 1);
        in.background = benchphotos::backgroundPhoto(size, 3);
        in.work = in.photo.copy();
        in.key = in.photo.pixel(20, 20); // a click on the backdrop
    }
    return in;
}

void restore(Inputs& in)
{
    std::memcpy(in.work.bits(), in.photo.constBits(), size_t(in.photo.sizeInBytes()));
}

void setRate(benchmark::State& state, const QImage& img)
{
    state.counters["MP/s"] = benchmark::Counter(double(img.width()) * img.height() / 1e6,
                                                benchmark::Counter::kIsIterationInvariantRate);
}

enum class Keyer { Oracle, OneThread, Baseline, AllCores };

void keyBench(benchmark::State& state, int megapixels, Keyer keyer)
{
    Inputs& in = inputs(megapixels);
    const int cores = std::max(1u, std::thread::hardware_concurrency());
    for (auto _ : state) {
        state.PauseTiming();
        restore(in);
        state.ResumeTiming();
        switch (keyer) {
        case Keyer::Oracle:
            oracle::maskOut(in.work, in.background, in.key);
            break;
        case Keyer::OneThread:
            keying::maskOut(in.work, in.background, in.key, {keying::VectorPath::Automatic, 1});
            break;
        case Keyer::Baseline:
            keying::maskOut(in.work, in.background, in.key, {keying::VectorPath::Baseline, 1});
            break;
        case Keyer::AllCores:
            keying::maskOut(in.work, in.background, in.key, {keying::VectorPath::Automatic, cores});
            break;
        }
        benchmark::DoNotOptimize(in.work.constBits());
    }
    setRate(state, in.photo);
}

void memcpyBench(benchmark::State& state, int megapixels)
{
    Inputs& in = inputs(megapixels);
    std::vector<uchar> target(size_t(in.photo.sizeInBytes()), 1);
    for (auto _ : state) {
        std::memcpy(target.data(), in.photo.constBits(), target.size());
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    setRate(state, in.photo);
}

// The window with a 24 megapixel studio shot and background beside it.
struct ClickRig
{
    QTemporaryDir folder;
    std::unique_ptr<Dialog> window;
    QString photoPath;
    QSize size;
};

std::unique_ptr<ClickRig> g_clickRig;

ClickRig& clickRig()
{
    if (!g_clickRig)
        g_clickRig = std::make_unique<ClickRig>();
    ClickRig& rig = *g_clickRig;
    if (!rig.window) {
        rig.size = benchphotos::sizeForMegapixels(kClickMegapixels);
        if (!benchphotos::makeSampleFolder(rig.folder.path(), rig.size))
            std::fprintf(stderr, "could not write the click photos to %s\n", qPrintable(rig.folder.path()));
        rig.photoPath = rig.folder.path() + QStringLiteral("/1green.JPG");
        MyGlobal::appDir = rig.folder.path();
        rig.window = std::make_unique<Dialog>();
    }
    return rig;
}

void clickBench(benchmark::State& state)
{
    ClickRig& rig = clickRig();
    for (auto _ : state) {
        // A click near the top-left corner of the preview lands on the backdrop.
        QMetaObject::invokeMethod(rig.window.get(), "GVClicked", Qt::DirectConnection, Q_ARG(int, 20), Q_ARG(int, 20));
    }
    state.counters["MP/s"] = benchmark::Counter(double(rig.size.width()) * rig.size.height() / 1e6,
                                                benchmark::Counter::kIsIterationInvariantRate);
}

// How a photo is read: a bare QImage, the program's read into fresh memory,
// and its read into the memory of the photo before.
enum class Read { BareQImage, Fresh, IntoPrevious };

void decodeBench(benchmark::State& state, Read how)
{
    ClickRig& rig = clickRig();
    QImage previous;
    for (auto _ : state) {
        QImage img;
        switch (how) {
        case Read::BareQImage:
            img = QImage(rig.photoPath);
            break;
        case Read::Fresh:
            img = keying::readPhoto(rig.photoPath);
            break;
        case Read::IntoPrevious:
            keying::readPhotoInto(rig.photoPath, previous);
            img = previous;
            break;
        }
        benchmark::DoNotOptimize(img.constBits());
    }
    state.counters["MP/s"] = benchmark::Counter(double(rig.size.width()) * rig.size.height() / 1e6,
                                                benchmark::Counter::kIsIterationInvariantRate);
}

// The steps of a click after the decode, one by one, to show where time goes.
enum class Step { IdentityTransform, ToPixmap, PreviewScale };

void stepBench(benchmark::State& state, Step step)
{
    Inputs& in = inputs(kClickMegapixels);
    const QPixmap pixmap = QPixmap::fromImage(in.photo);
    for (auto _ : state) {
        switch (step) {
        case Step::IdentityTransform: {
            const QImage turned = in.photo.transformed(QTransform(), Qt::FastTransformation);
            benchmark::DoNotOptimize(turned.constBits());
            break;
        }
        case Step::ToPixmap: {
            const QPixmap p = QPixmap::fromImage(in.photo);
            benchmark::DoNotOptimize(p.cacheKey());
            break;
        }
        case Step::PreviewScale: {
            const QPixmap fitted = pixmap.scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            benchmark::DoNotOptimize(fitted.cacheKey());
            break;
        }
        }
    }
    setRate(state, in.photo);
}

// Remembers each benchmark's wall time per iteration for the summary.
class SummaryReporter : public benchmark::ConsoleReporter
{
public:
    std::map<std::string, double> seconds;

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred && run.iterations > 0)
                seconds[run.run_name.function_name] = run.real_accumulated_time / double(run.iterations);
        }
        ConsoleReporter::ReportRuns(runs);
    }
};

std::string name(const char* what, int megapixels)
{
    return std::string(what) + "/" + std::to_string(megapixels) + "MP";
}

void printSummary(const std::map<std::string, double>& s)
{
    auto get = [&](const std::string& n) {
        const auto it = s.find(n);
        return it == s.end() ? 0.0 : it->second;
    };
    std::printf("\nKey mask (%s path; %u cores)\n", keying::wideVectorsAvailable() ? "AVX2" : "SSE2 baseline",
                std::thread::hardware_concurrency());
    std::printf("%-6s %12s %22s %22s %22s %12s %14s\n", "photo", "oracle MP/s", "one core MP/s (x)",
                "SSE2 one core MP/s (x)", "all cores MP/s (x)", "memcpy MP/s", "all/memcpy time");
    for (int mp : kSizes) {
        const QSize size = benchphotos::sizeForMegapixels(mp);
        const double pixels = double(size.width()) * size.height() / 1e6;
        const double oracle = get(name("key/oracle", mp));
        const double one = get(name("key/fast_one_thread", mp));
        const double sse = get(name("key/sse2_one_thread", mp));
        const double all = get(name("key/fast_all_cores", mp));
        const double copy = get(name("memcpy", mp));
        if (oracle <= 0 || one <= 0 || all <= 0 || copy <= 0 || sse <= 0)
            continue;
        std::printf("%-6s %12.1f %14.1f (%5.1fx) %14.1f (%5.1fx) %14.1f (%5.1fx) %12.1f %13.2fx\n",
                    (std::to_string(mp) + "MP").c_str(), pixels / oracle, pixels / one, oracle / one, pixels / sse,
                    oracle / sse, pixels / all, oracle / all, pixels / copy, all / copy);
    }
    const double click = get("click/GVClicked/24MP");
    const double decode = get("click/jpeg_decode/24MP");
    if (click > 0 && decode > 0)
        std::printf("\nClick on a %d MP JPEG: %.1f ms; bare decode %.1f ms; click/decode %.2fx\n", kClickMegapixels,
                    click * 1e3, decode * 1e3, click / decode);
    const double fresh = get("click/read_photo/24MP");
    const double into = get("click/read_into_previous/24MP");
    if (decode > 0 && fresh > 0 && into > 0)
        std::printf("Reading that JPEG: bare QImage %.1f ms; the program's read into fresh memory %.1f ms (%.2fx),"
                    " into the photo before %.1f ms (%.2fx)\n",
                    decode * 1e3, fresh * 1e3, fresh / decode, into * 1e3, into / decode);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc >= 3 && std::strcmp(argv[1], kPeakMemoryChildFlag) == 0)
        return peakMemoryChild(argc, argv);
    if (argc >= 2 && std::strcmp(argv[1], kAddPeakChildFlag) == 0)
        return addPeakChild(argc, argv);

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    allowLargePhotos();
    QLoggingCategory::setFilterRules(QStringLiteral("qt.core.qmetaobject.connectslotsbyname=false"));
    benchmark::Initialize(&argc, argv);

    for (int mp : kSizes) {
        benchmark::RegisterBenchmark(name("key/oracle", mp).c_str(), keyBench, mp, Keyer::Oracle)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
        benchmark::RegisterBenchmark(name("key/sse2_one_thread", mp).c_str(), keyBench, mp, Keyer::Baseline)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
        benchmark::RegisterBenchmark(name("key/fast_one_thread", mp).c_str(), keyBench, mp, Keyer::OneThread)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
        benchmark::RegisterBenchmark(name("key/fast_all_cores", mp).c_str(), keyBench, mp, Keyer::AllCores)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
        benchmark::RegisterBenchmark(name("memcpy", mp).c_str(), memcpyBench, mp)
            ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.5);
    }
    benchmark::RegisterBenchmark("click/GVClicked/24MP", clickBench)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    benchmark::RegisterBenchmark("click/jpeg_decode/24MP", decodeBench, Read::BareQImage)
        ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    benchmark::RegisterBenchmark("click/read_photo/24MP", decodeBench, Read::Fresh)
        ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    benchmark::RegisterBenchmark("click/read_into_previous/24MP", decodeBench, Read::IntoPrevious)
        ->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);
    benchmark::RegisterBenchmark("click_step/identity_transform/24MP", stepBench, Step::IdentityTransform)
        ->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("click_step/to_pixmap/24MP", stepBench, Step::ToPixmap)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("click_step/preview_scale/24MP", stepBench, Step::PreviewScale)
        ->Unit(benchmark::kMillisecond)->UseRealTime();

    registerListLoadingBenchmarks();

    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printSummary(reporter.seconds);
    printListLoadingSummary(bareLibraryDecodeSeconds());
    std::fflush(stdout);
    g_clickRig.reset(); // the window goes before the application object

    // Peak memory is measured in fresh processes so nothing above inflates it.
    const int add = runAddPeakChild(QCoreApplication::applicationFilePath());
    std::fflush(stdout);
    return runPeakMemoryChild(QCoreApplication::applicationFilePath(), 45) || add;
}
