// SPDX-License-Identifier: MIT
#include "keying/softkey.h"

#include "keying/cleanplate.h"
#include "keying/imagedetails.h"
#include "keying/keymask.h"
#include "keying/rowpool.h"
#include "keying/softkey_tuning.h"
#include "keying/softrows.h"

#include <algorithm>
#include <vector>

namespace keying {

namespace {

using RowLoop = void (*)(const softrows::Matte&, const softrows::PlateRow&, const std::uint32_t*, std::uint32_t*, int,
                         const std::uint32_t*, int);

RowLoop softLoopFor(VectorPath path)
{
#ifdef PLENDRA_SOFT_HAS_AVX2
    if (path != VectorPath::Baseline && wideVectorsAvailable())
        return &softrows::softRowAvx2;
#else
    static_cast<void>(path);
#endif
    return &softrows::softRowPortable;
}

bool isWords(const QImage& image)
{
    return image.format() == QImage::Format_ARGB32 || image.format() == QImage::Format_RGB32;
}

// The photo's pixels as 32-bit words with their alpha in the top byte.
QImage asWords(const QImage& photo)
{
    return isWords(photo) ? photo : photo.convertToFormat(QImage::Format_ARGB32);
}

PlateColour channelsOf(const KeyColour& k)
{
    // KeyColour counts a channel of 0 as 1; the colour difference reads the
    // levels as they are, which that changes by one level at most.
    return {k.r, k.greenKey ? k.g : k.b, k.greenKey ? k.b : k.g};
}

softrows::Matte matteFor(const SoftTuning& t, bool greenKey)
{
    softrows::Matte m;
    const float mix = 1.0f - t.maxShare;
    m.cMax = t.maxShare;
    m.cRed = mix * t.redWeight;
    m.cOther = mix * (1.0f - t.redWeight);
    const float spillMix = 1.0f - t.spillMax;
    m.sMax = t.spillMax;
    m.sRed = spillMix * t.redWeight;
    m.sOther = spillMix * (1.0f - t.redWeight);
    m.recoverGain = t.recoverFrom > 0 ? 1.0f / t.recoverFrom : 1e6f;
    m.minPlateDifference = t.minPlateDifference;
    m.subjectShare = t.subjectShare;
    m.opaqueBelow = t.opaqueBelow;
    m.opaqueLevels = 0; // set from the photo's grain
    m.clearAbove = t.clearAbove;
    m.clearLevels = t.clearLevels;
    m.dominantShift = greenKey ? 8 : 0;
    m.otherShift = greenKey ? 0 : 8;
    return m;
}

SureBackdrop sureFor(const SoftTuning& t, const softrows::Matte& m, const PlateColour& key)
{
    SureBackdrop s;
    s.key = key;
    s.cMax = m.cMax;
    s.cRed = m.cRed;
    s.cOther = m.cOther;
    const float keyDifference = key.dominant - softrows::otherTwo(m.cMax, m.cRed, m.cOther, key.red, key.other);
    s.minDifference = std::max(t.minPlateDifference * 0.5f, t.sureDifference * keyDifference);
    s.redRatio = key.red / key.dominant;
    s.otherRatio = key.other / key.dominant;
    s.tolerance = t.sureTolerance;
    s.keepShare = t.plateKeep;
    s.outlier = t.plateOutlier;
    s.subjectLowest = t.subjectLowest;
    s.subjectReach = int(t.subjectReach);
    s.subjectBelow = t.subjectBelow * (key.dominant - std::max(key.red, key.other));
    s.dominantShift = m.dominantShift;
    s.otherShift = m.otherShift;
    return s;
}

// One row of a F + (1-a) B: `covered` pixels over the background row `b`,
// the rest over black.
void compositeRow(const std::uint32_t* f, const std::uint32_t* b, int covered, std::uint32_t* o, int width)
{
    // Alpha 255 gives the cut-out's colour and alpha 0 the background,
    // exactly; only soft pixels need the sums.
    for (int x = 0; x < covered; ++x) {
        const std::uint32_t a = f[x] >> 24;
        o[x] = a == 255u ? f[x] : a == 0u ? b[x] | 0xFF000000u : softrows::compositePixel(f[x], b[x]);
    }
    for (int x = covered; x < width; ++x)
        o[x] = softrows::compositePixel(f[x], 0u);
}

// a F + (1-a) B of the cut-out `front` (ARGB32) over `background` into
// `out` (32-bit, the cut-out's size; may be `front` itself).
void compositeInto(const QImage& front, const QImage& background, QImage& out, int threads)
{
    const QImage back = asWords(background);
    const int width = front.width();
    const int height = front.height();
    const int backWidth = back.isNull() ? 0 : std::min(width, back.width());
    const int backHeight = back.isNull() ? 0 : std::min(height, back.height());
    uchar* outBits = out.bits();
    const qsizetype outStride = out.bytesPerLine();
    const uchar* frontBits = front.constBits();
    const qsizetype frontStride = front.bytesPerLine();
    const uchar* backBits = back.isNull() ? nullptr : back.constBits();
    const qsizetype backStride = back.isNull() ? 0 : back.bytesPerLine();
    runRowsOnPool(height, rowThreadsFor(qsizetype(width) * height, height, threads), [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const auto* f = reinterpret_cast<const std::uint32_t*>(frontBits + y * frontStride);
            const auto* b = y < backHeight ? reinterpret_cast<const std::uint32_t*>(backBits + y * backStride) : nullptr;
            auto* o = reinterpret_cast<std::uint32_t*>(outBits + y * outStride);
            compositeRow(f, b, b ? backWidth : 0, o, width);
        }
    });
}

// The soft cut-out of `words` (32-bit RGB or ARGB) into `out` (32-bit, of
// the same size; may be `words` itself); with a `background`, each row of
// the cut-out is composited on it at once, while the row is still in cache.
void keyInto(const QImage& words, QImage& out, QRgb key, const SoftOptions& options, const QImage* background = nullptr)
{
    const int width = words.width();
    const int height = words.height();
    const KeyColour k = keyColourOf(key);
    if (!k.greenKey && !k.blueKey) {
        // Nothing is backdrop: the photo, opaque where it was.
        for (int y = 0; y < height; ++y) {
            const auto* in = reinterpret_cast<const std::uint32_t*>(words.constScanLine(y));
            auto* o = reinterpret_cast<std::uint32_t*>(out.scanLine(y));
            const std::uint32_t fill = words.format() == QImage::Format_RGB32 ? 0xFF000000u : 0u;
            for (int x = 0; x < width; ++x)
                o[x] = in[x] | fill;
        }
        if (background)
            compositeInto(out, *background, out, options.threads);
        return;
    }
    const SoftTuning& t = options.tuning;
    softrows::Matte matte = matteFor(t, k.greenKey);
    const int threads = rowThreadsFor(qsizetype(width) * height, height, options.threads);
    const CleanPlate plate = cleanPlateFor(words, key, t, threads);
    const RowLoop loop = softLoopFor(options.path);
    // The noise allowances widen with the photo's own grain.
    matte.opaqueLevels = t.opaqueGrain * plate.grainLevels();
    matte.clearLevels = t.clearLevels + t.clearGrain * plate.grainLevels();
    // bits() detaches a shared image once, here, before the pool's threads
    // touch raw rows.
    uchar* outBits = out.bits();
    const qsizetype outStride = out.bytesPerLine();
    const uchar* in = words.constBits();
    const qsizetype inStride = words.bytesPerLine();
    const QImage back = background ? asWords(*background) : QImage();
    const int backWidth = back.isNull() ? 0 : std::min(width, back.width());
    const int backHeight = back.isNull() ? 0 : std::min(height, back.height());
    const std::vector<std::uint32_t> blackRow(background ? std::size_t(width) : 0, 0u);
    runRowsOnPool(height, threads, [&](int first, int end) {
        // Kept by each thread from run to run and photo to photo.
        thread_local std::vector<float> buffer;
        buffer.resize(std::size_t(width) * 4);
        float* red = buffer.data();
        float* dominant = red + width;
        float* other = dominant + width;
        float* subject = other + width;
        const softrows::PlateRow row{red, dominant, other, subject};
        for (int y = first; y < end; ++y) {
            plate.row(y, red, dominant, other, subject);
            auto* o = reinterpret_cast<std::uint32_t*>(outBits + y * outStride);
            const std::uint32_t* b = nullptr;
            int covered = 0;
            if (background) {
                // Rows the background does not reach are composited on black.
                b = y < backHeight ? reinterpret_cast<const std::uint32_t*>(back.constScanLine(y)) : blackRow.data();
                covered = y < backHeight ? backWidth : width;
            }
            loop(matte, row, reinterpret_cast<const std::uint32_t*>(in + y * inStride), o, width, b, covered);
        }
    });
}

} // namespace

CleanPlate cleanPlateFor(const QImage& words, QRgb key, const SoftTuning& tuning, int threads)
{
    const KeyColour k = keyColourOf(key);
    return CleanPlate(words, sureFor(tuning, matteFor(tuning, k.greenKey), channelsOf(k)), threads);
}

QImage softCutOut(const QImage& photo, QRgb key)
{
    return softCutOut(photo, key, SoftOptions());
}

QImage softCutOut(QImage&& photo, QRgb key)
{
    return softCutOut(std::move(photo), key, SoftOptions());
}

QImage softCutOut(const QImage& photo, QRgb key, const SoftOptions& options)
{
    if (photo.isNull())
        return QImage();
    const QImage words = asWords(photo);
    QImage out(words.size(), QImage::Format_ARGB32);
    if (out.isNull())
        return out;
    carryDetails(photo, out);
    keyInto(words, out, key, options);
    return out;
}

QImage softCutOut(QImage&& photo, QRgb key, const SoftOptions& options)
{
    if (!isWords(photo) || !photo.isDetached())
        return softCutOut(static_cast<const QImage&>(photo), key, options);
    QImage words = std::move(photo);
    // Each row is read whole before it is written: keying in place is safe.
    keyInto(words, words, key, options);
    words.reinterpretAsFormat(QImage::Format_ARGB32);
    return words;
}

QImage softCompositeOf(QImage photo, QRgb key, const QImage& fittedBackground)
{
    return softCompositeOf(std::move(photo), key, fittedBackground, SoftOptions());
}

QImage softCompositeOf(QImage photo, QRgb key, const QImage& fittedBackground, const SoftOptions& options)
{
    if (photo.isNull())
        return QImage();
    if (!isWords(photo))
        photo = photo.convertToFormat(QImage::Format_ARGB32);
    if (!photo.isDetached()) {
        QImage out(photo.size(), QImage::Format_RGB32);
        if (out.isNull())
            return out;
        carryDetails(photo, out);
        keyInto(photo, out, key, options, &fittedBackground);
        return out;
    }
    // Each row is read whole before it is written: keying in place is safe.
    keyInto(photo, photo, key, options, &fittedBackground);
    photo.reinterpretAsFormat(QImage::Format_RGB32);
    return photo;
}

QImage softComposite(const QImage& cutOut, const QImage& fittedBackground)
{
    return softComposite(cutOut, fittedBackground, 0);
}

QImage softComposite(QImage&& cutOut, const QImage& fittedBackground)
{
    return softComposite(std::move(cutOut), fittedBackground, 0);
}

QImage softComposite(const QImage& cutOut, const QImage& fittedBackground, int threads)
{
    if (cutOut.isNull())
        return QImage();
    const QImage front = cutOut.format() == QImage::Format_ARGB32 ? cutOut : cutOut.convertToFormat(QImage::Format_ARGB32);
    QImage out(front.size(), QImage::Format_RGB32);
    if (out.isNull())
        return out;
    // Made afresh, the composite carries the cut-out's details, as one made
    // in the cut-out's own memory does.
    carryDetails(front, out);
    compositeInto(front, fittedBackground, out, threads);
    return out;
}

QImage softComposite(QImage&& cutOut, const QImage& fittedBackground, int threads)
{
    if (cutOut.format() != QImage::Format_ARGB32 || !cutOut.isDetached())
        return softComposite(static_cast<const QImage&>(cutOut), fittedBackground, threads);
    QImage out = std::move(cutOut);
    // Each pixel is read before it is written: compositing in place is safe.
    compositeInto(out, fittedBackground, out, threads);
    out.reinterpretAsFormat(QImage::Format_RGB32);
    return out;
}

} // namespace keying
