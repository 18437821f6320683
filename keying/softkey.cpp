// SPDX-License-Identifier: MIT
#include "keying/softkey.h"

#include "keying/cleanplate.h"
#include "keying/keymask.h"
#include "keying/rowpool.h"
#include "keying/softkey_tuning.h"
#include "keying/softrows.h"

#include <algorithm>
#include <vector>

namespace keying {

namespace {

using RowLoop = void (*)(const softrows::Matte&, const softrows::PlateRow&, const std::uint32_t*, std::uint32_t*, int);

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

// The photo's pixels as 32-bit words with their alpha in the top byte.
QImage asWords(const QImage& photo)
{
    if (photo.format() == QImage::Format_ARGB32 || photo.format() == QImage::Format_RGB32)
        return photo;
    return photo.convertToFormat(QImage::Format_ARGB32);
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

// Where the matte's scale lies at a pixel: from the subject's difference
// there (alpha 1) to the plate's (alpha 0), with the noise allowances at
// either end (the grain's, and at the clear end at least `clearLevels`). A plate too weakly coloured, or a subject too close to it,
// keeps the pixel whole (scale 0).
inline void matteScale(const SoftTuning& t, const softrows::Matte& m, float grain, float sR, float sD, float sO,
                       float subject, float* low, float* scale)
{
    const float plate = sD - softrows::otherTwo(m.cMax, m.cRed, m.cOther, sR, sO);
    const float from = std::min(subject, 0.5f * plate) * t.subjectShare;
    const float gap = plate - from;
    const bool keyable = plate >= t.minPlateDifference && gap >= t.minPlateDifference;
    const float opaque = keyable ? std::max(t.opaqueBelow, t.opaqueGrain * grain / gap) : 0.0f;
    const float clear = keyable ? std::min(t.clearAbove, 1.0f - (t.clearLevels + t.clearGrain * grain) / gap) : 1.0f;
    const float span = std::max(clear - opaque, 1e-3f);
    *low = keyable ? from + opaque * gap : 0.0f;
    *scale = keyable ? 1.0f / (span * gap) : 0.0f;
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

QImage softCutOut(const QImage& photo, QRgb key, const SoftOptions& options)
{
    if (photo.isNull())
        return QImage();
    const QImage words = asWords(photo);
    const KeyColour k = keyColourOf(key);
    if (!k.greenKey && !k.blueKey)
        return words.convertToFormat(QImage::Format_ARGB32);

    const int width = words.width();
    const int height = words.height();
    const SoftTuning& t = options.tuning;
    const softrows::Matte matte = matteFor(t, k.greenKey);
    const int threads = rowThreadsFor(qsizetype(width) * height, height, options.threads);
    const CleanPlate plate = cleanPlateFor(words, key, t, threads);
    const RowLoop loop = softLoopFor(options.path);

    // The noise allowances widen with the photo's own grain.
    const float grain = plate.grainLevels();
    QImage out(words.size(), QImage::Format_ARGB32);
    if (out.isNull())
        return out;
    const uchar* in = words.constBits();
    const qsizetype inStride = words.bytesPerLine();
    uchar* outBits = out.bits();
    const qsizetype outStride = out.bytesPerLine();
    runRowsOnPool(height, threads, [&](int first, int end) {
        std::vector<float> buffer(std::size_t(width) * 6);
        float* red = buffer.data();
        float* dominant = red + width;
        float* other = dominant + width;
        float* low = other + width;
        float* scale = low + width;
        float* subject = scale + width;
        const softrows::PlateRow row{red, dominant, other, low, scale};
        for (int y = first; y < end; ++y) {
            plate.row(y, red, dominant, other, subject);
            for (int x = 0; x < width; ++x)
                matteScale(t, matte, grain, red[x], dominant[x], other[x], subject[x], &low[x], &scale[x]);
            loop(matte, row, reinterpret_cast<const std::uint32_t*>(in + y * inStride),
                 reinterpret_cast<std::uint32_t*>(outBits + y * outStride), width);
        }
    });
    return out;
}

QImage softComposite(const QImage& cutOut, const QImage& fittedBackground)
{
    return softComposite(cutOut, fittedBackground, 0);
}

QImage softComposite(const QImage& cutOut, const QImage& fittedBackground, int threads)
{
    if (cutOut.isNull())
        return QImage();
    const QImage front = cutOut.format() == QImage::Format_ARGB32 ? cutOut : cutOut.convertToFormat(QImage::Format_ARGB32);
    const QImage back = asWords(fittedBackground);
    const int width = front.width();
    const int height = front.height();
    QImage out(front.size(), QImage::Format_RGB32);
    if (out.isNull())
        return out;
    const int backWidth = back.isNull() ? 0 : std::min(width, back.width());
    const int backHeight = back.isNull() ? 0 : std::min(height, back.height());
    const uchar* frontBits = front.constBits();
    const qsizetype frontStride = front.bytesPerLine();
    const uchar* backBits = back.isNull() ? nullptr : back.constBits();
    const qsizetype backStride = back.isNull() ? 0 : back.bytesPerLine();
    uchar* outBits = out.bits();
    const qsizetype outStride = out.bytesPerLine();
    runRowsOnPool(height, rowThreadsFor(qsizetype(width) * height, height, threads), [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const auto* f = reinterpret_cast<const std::uint32_t*>(frontBits + y * frontStride);
            const auto* b = y < backHeight ? reinterpret_cast<const std::uint32_t*>(backBits + y * backStride) : nullptr;
            auto* o = reinterpret_cast<std::uint32_t*>(outBits + y * outStride);
            const int covered = b ? backWidth : 0;
            for (int x = 0; x < width; ++x) {
                const std::uint32_t fw = f[x];
                const std::uint32_t bw = x < covered ? b[x] : 0u;
                const std::uint32_t a = fw >> 24;
                const std::uint32_t na = 255u - a;
                const std::uint32_t r = softrows::div255(a * ((fw >> 16) & 255u) + na * ((bw >> 16) & 255u) + 127u);
                const std::uint32_t g = softrows::div255(a * ((fw >> 8) & 255u) + na * ((bw >> 8) & 255u) + 127u);
                const std::uint32_t bl = softrows::div255(a * (fw & 255u) + na * (bw & 255u) + 127u);
                o[x] = 0xFF000000u | r << 16 | g << 8 | bl;
            }
        }
    });
    return out;
}

} // namespace keying
