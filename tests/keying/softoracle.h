// SPDX-License-Identifier: MIT
#pragma once

// The soft keyer written out plainly, one pixel at a time: the clean plate
// read bilinearly from its grid nodes at each pixel, the colour difference,
// the alpha, the recovered colour and the spill limit, each as the keyer
// describes it, with the image class's own pixel reads and writes. The
// keyer's row loops (portable and AVX2) must give exactly these bytes. The
// single-precision steps are written in the order the keyer documents, and
// this file is built without fused multiply-adds, as the keyer is.

#include "keying/cleanplate.h"
#include "keying/keymask.h"
#include "keying/softkey_tuning.h"

#include <QImage>
#include <QRgb>

#include <algorithm>
#include <cmath>

namespace softoracle {

struct Channels
{
    float red, key, other;
};

// The "other two" channels: a share of the larger of red and the non-key
// channel, the rest a mix weighted towards red.
inline float otherTwo(float share, float redWeight, float r, float o)
{
    const float mix = 1.0f - share;
    return (share * std::max(r, o) + mix * redWeight * r) + mix * (1.0f - redWeight) * o;
}

inline float lerp(float a, float b, float t)
{
    return a + (b - a) * t;
}

// A grid's value at pixel (x, y): between the four nodes around it, and
// beyond the outer nodes on along the line of the last two.
inline float gridAt(const keying::PlateGrid& grid, int x, int y, int channel)
{
    const int cell = grid.cell();
    const float gy = (float(y) + 0.5f) / float(cell) - 0.5f;
    const int top = std::clamp(int(std::floor(gy)), 0, std::max(0, grid.rows() - 2));
    const int bottom = std::min(top + 1, grid.rows() - 1);
    const float fy = bottom > top ? gy - float(top) : 0.0f;
    const float gx = (float(x) + 0.5f) / float(cell) - 0.5f;
    const int left = std::clamp(int(std::floor(gx)), 0, std::max(0, grid.columns() - 2));
    const int right = std::min(left + 1, grid.columns() - 1);
    const float fx = right > left ? gx - float(left) : 0.0f;
    const float l = lerp(grid.value(left, top, channel), grid.value(left, bottom, channel), fy);
    const float r = lerp(grid.value(right, top, channel), grid.value(right, bottom, channel), fy);
    return l + fx * (r - l);
}

// The plate at pixel (x, y): the backdrop's channels and the subject's
// colour difference.
inline Channels plateAt(const keying::CleanPlate& plate, int x, int y, float* subject = nullptr)
{
    if (subject)
        *subject = gridAt(plate.subject(), x, y, 0);
    return {gridAt(plate.backdrop(), x, y, 0), gridAt(plate.backdrop(), x, y, 1), gridAt(plate.backdrop(), x, y, 2)};
}

inline int byteOf(float v)
{
    return int(std::min(std::max(v, 0.0f), 255.0f) + 0.5f);
}

// The cut-out word for one photo pixel over the plate colour s, with the
// subject's difference nearby and the grain the plate measured (levels).
inline QRgb softPixel(const keying::SoftTuning& t, float grain, bool greenKey, QRgb px, const Channels& s, float subject)
{
    const float r = float(qRed(px));
    const float k = float(greenKey ? qGreen(px) : qBlue(px));
    const float o = float(greenKey ? qBlue(px) : qGreen(px));

    // Alpha: the pixel's colour difference on the scale from the subject's
    // difference nearby (alpha 1) to the plate's (alpha 0).
    const float plateDiff = s.key - otherTwo(t.maxShare, t.redWeight, s.red, s.other);
    const float from = std::min(subject, 0.5f * plateDiff) * t.subjectShare;
    const float gap = plateDiff - from;
    float matte = 1.0f;
    if (plateDiff >= t.minPlateDifference && gap >= t.minPlateDifference) {
        const float opaque = std::max(t.opaqueBelow, t.opaqueGrain * grain / gap);
        const float clear = std::min(t.clearAbove, 1.0f - (t.clearLevels + t.clearGrain * grain) / gap);
        const float span = std::max(clear - opaque, 1e-3f);
        const float low = from + opaque * gap;
        const float scale = 1.0f / (span * gap);
        const float diff = k - otherTwo(t.maxShare, t.redWeight, r, o);
        matte = 1.0f - std::min(std::max((diff - low) * scale, 0.0f), 1.0f);
    }
    const int stored = int(matte * 255.0f + 0.5f);
    const int a = (stored * qAlpha(px) + 127) / 255;
    if (a == 0)
        return 0;

    // Colour: the plate's share taken out, leaning towards the despilled
    // pixel at small alpha, then the spill limit.
    const float af = float(stored) * (1.0f / 255.0f);
    const float keep = 1.0f - af;
    const float inv = 1.0f / af;
    float fr = std::min(std::max((r - keep * s.red) * inv, 0.0f), 255.0f);
    float fk = std::min(std::max((k - keep * s.key) * inv, 0.0f), 255.0f);
    float fo = std::min(std::max((o - keep * s.other) * inv, 0.0f), 255.0f);
    const float gain = t.recoverFrom > 0 ? 1.0f / t.recoverFrom : 1e6f;
    const float u = std::min(af * gain, 1.0f);
    const float despilled = std::min(k, otherTwo(t.spillMax, t.redWeight, r, o));
    fr = r + u * (fr - r);
    fk = despilled + u * (fk - despilled);
    fo = o + u * (fo - o);
    fk = std::min(fk, otherTwo(t.spillMax, t.redWeight, fr, fo));

    const int key = byteOf(fk), other = byteOf(fo);
    return qRgba(byteOf(fr), greenKey ? key : other, greenKey ? other : key, a);
}

// The whole cut-out against a given plate.
inline QImage softCutOut(const QImage& photo, QRgb key, const keying::CleanPlate& plate, const keying::SoftTuning& t)
{
    const bool greenKey = keying::keyColourOf(key).greenKey;
    QImage out(photo.size(), QImage::Format_ARGB32);
    for (int y = 0; y < photo.height(); ++y) {
        for (int x = 0; x < photo.width(); ++x) {
            float subject = 0;
            const Channels s = plateAt(plate, x, y, &subject);
            out.setPixel(x, y, softPixel(t, plate.grainLevels(), greenKey, photo.pixel(x, y), s, subject));
        }
    }
    return out;
}

} // namespace softoracle
