// SPDX-License-Identifier: MIT
#include "keying/keymask.h"

#include "keying/keymask_tuning.h"
#include "keying/keyrows.h"

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <memory>
#include <cmath>

namespace keying {

namespace {

// A palette cannot hold the background's colours.
void makeStorable(QImage& img)
{
    if (img.format() == QImage::Format_Indexed8 || img.format() == QImage::Format_Mono
        || img.format() == QImage::Format_MonoLSB) {
        img = img.convertToFormat(img.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    }
}

bool isPlain32Bit(QImage::Format f)
{
    return f == QImage::Format_RGB32 || f == QImage::Format_ARGB32;
}

// Photos load as 32-bit RGB or ARGB; those are keyed on row pointers. The
// background must cover the photo, or per-pixel reads keep its out-of-range
// answers.
bool takesRowPath(const QImage& img, const QImage& bkg)
{
    return isPlain32Bit(img.format()) && isPlain32Bit(bkg.format()) && bkg.width() >= img.width()
        && bkg.height() >= img.height();
}

// Formats other than 32-bit RGB/ARGB: the image class's own per-pixel reads
// and writes give its exact store rules for each format.
void maskOutPerPixel(QImage& img, const QImage& bkg, const KeyColour& k)
{
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            if (isBackdrop(k, img.pixel(x, y)))
                img.setPixel(x, y, bkg.pixel(x, y));
        }
    }
}

VectorPath resolvedPath(VectorPath wanted)
{
    if (wanted == VectorPath::Baseline)
        return VectorPath::Baseline;
    return wideVectorsAvailable() ? VectorPath::Wide : VectorPath::Baseline;
}

int threadsFor(const QImage& img, int wanted)
{
    int threads = wanted;
    if (threads <= 0) {
        const qsizetype pixels = qsizetype(img.width()) * img.height();
        threads = pixels >= kParallelKeyingPixels ? QThreadPool::globalInstance()->maxThreadCount() : 1;
    }
    return std::clamp(threads, 1, std::max(1, img.height()));
}

using RowLoop = void (*)(const rows::Key&, const rows::Band&);

// The row loop for a vector path, chosen once per keying pass.
RowLoop rowLoopFor(VectorPath path)
{
    RowLoop loop = &rows::keyRowsPortable;
#ifdef PLENDRA_KEYING_HAS_SSE2
    loop = &rows::keyRowsSse2;
#endif
#ifdef PLENDRA_KEYING_HAS_AVX2
    if (path == VectorPath::Wide)
        loop = &rows::keyRowsAvx2;
#else
    static_cast<void>(path);
#endif
    return loop;
}

rows::Band wholeImage(QImage& img, const QImage& bkg)
{
    rows::Band whole;
    whole.photo = img.bits();
    whole.background = bkg.constBits();
    whole.photoStride = img.bytesPerLine();
    whole.backgroundStride = bkg.bytesPerLine();
    whole.width = img.width();
    whole.firstRow = 0;
    whole.endRow = img.height();
    return whole;
}

// Keys every row of `whole` with `loop` on up to `threads` threads, and
// returns when all rows are done. Rows are handed out in short runs from a
// shared counter rather than in one band per thread: a core that is busy with
// another program takes fewer runs, and the call does not wait for its band.
// This thread keys runs too. Helpers come from Qt's shared pool, and only
// when a pool thread is free at once: when every one is busy (a batch keying
// several photos at a time), this thread simply keys all rows itself.
void keyRowsOnPool(RowLoop loop, const rows::Key& key, const rows::Band& whole, int threads)
{
    if (threads <= 1) {
        loop(key, whole);
        return;
    }
    const int height = whole.endRow;
    const int run = std::clamp(height / (threads * 16), 1, 64);
    std::atomic<int> nextRow{0};
    auto keyRuns = [&] {
        for (;;) {
            const int first = nextRow.fetch_add(run, std::memory_order_relaxed);
            if (first >= height)
                return;
            rows::Band b = whole;
            b.firstRow = first;
            b.endRow = std::min(first + run, height);
            loop(key, b);
        }
    };
    // Each helper holds the semaphore too, so that its last release never
    // touches a semaphore this call has already dropped.
    const auto finished = std::make_shared<QSemaphore>();
    int helpers = 0;
    QThreadPool* pool = QThreadPool::globalInstance();
    for (int i = 1; i < threads; ++i) {
        if (!pool->tryStart([&keyRuns, finished] {
                keyRuns();
                finished->release();
            }))
            break;
        ++helpers;
    }
    keyRuns();
    finished->acquire(helpers);
}

} // namespace

bool wideVectorsAvailable()
{
#ifdef PLENDRA_KEYING_HAS_AVX2
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return available;
#else
    return false;
#endif
}

MaskOutPlan planMaskOut(const QImage& img, const QImage& bkg, const MaskOutOptions& options)
{
    const VectorPath path = resolvedPath(options.path);
    if (!takesRowPath(img, bkg))
        return {path, 0};
    return {path, threadsFor(img, options.threads)};
}

void maskOut(QImage& img, const QImage& bkg, QRgb key)
{
    maskOut(img, bkg, key, MaskOutOptions());
}

void maskOut(QImage& img, const QImage& bkg, QRgb key, const MaskOutOptions& options)
{
    makeStorable(img);
    if (img.isNull() || img.width() <= 0 || img.height() <= 0)
        return;
    const KeyColour k = keyColourOf(key);
    // Neither green nor blue dominates the key: no pixel can pass, and the
    // image is left exactly as it was (not even detached).
    if (!k.greenKey && !k.blueKey)
        return;

    if (!takesRowPath(img, bkg)) {
        maskOutPerPixel(img, bkg, k);
        return;
    }

    // The image class stores what its pixel read of the background returns,
    // and a 32-bit RGB photo keeps its pixels opaque: the background's alpha
    // is forced to 255 when either image has no alpha channel.
    const std::uint32_t fill = (img.format() == QImage::Format_RGB32 || bkg.format() == QImage::Format_RGB32)
        ? 0xFF000000u : 0u;
    const rows::Key rowKey = rows::rowKey(static_cast<std::int32_t>(k.r), static_cast<std::int32_t>(k.g),
                                          static_cast<std::int32_t>(k.b), k.greenKey, fill);
    const MaskOutPlan plan = planMaskOut(img, bkg, options);
    // bits() detaches a shared photo once, here on the calling thread; the
    // pool's threads only touch raw rows.
    keyRowsOnPool(rowLoopFor(plan.path), rowKey, wholeImage(img, bkg), plan.threads);
}

} // namespace keying
