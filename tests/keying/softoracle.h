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

// The plate at pixel (x, y): between the four grid nodes around it.
inline Channels plateAt(const keying::CleanPlate& plate, int x, int y)
{
    const int cell = plate.cellSize();
    const float gy = (float(y) + 0.5f) / float(cell) - 0.5f;
    const int top = std::clamp(int(std::floor(gy)), 0, plate.rows() - 1);
    const int bottom = std::min(top + 1, plate.rows() - 1);
    const float fy = bottom > top ? std::clamp(gy - float(top), 0.0f, 1.0f) : 0.0f;
    const float gx = (float(x) + 0.5f) / float(cell) - 0.5f;
    const int left = std::clamp(int(std::floor(gx)), 0, plate.columns() - 1);
    const int right = std::min(left + 1, plate.columns() - 1);
    const float fx = right > left ? std::clamp(gx - float(left), 0.0f, 1.0f) : 0.0f;
    const keying::PlateColour tl = plate.node(left, top), bl = plate.node(left, bottom);
    const keying::PlateColour tr = plate.node(right, top), br = plate.node(right, bottom);
    const Channels l{lerp(tl.red, bl.red, fy), lerp(tl.dominant, bl.dominant, fy), lerp(tl.other, bl.other, fy)};
    const Channels r{lerp(tr.red, br.red, fy), lerp(tr.dominant, br.dominant, fy), lerp(tr.other, br.other, fy)};
    return {l.red + fx * (r.red - l.red), l.key + fx * (r.key - l.key), l.other + fx * (r.other - l.other)};
}

inline int byteOf(float v)
{
    return int(std::min(std::max(v, 0.0f), 255.0f) + 0.5f);
}

// The cut-out word for one photo pixel over the plate colour s.
inline QRgb softPixel(const keying::SoftTuning& t, bool greenKey, QRgb px, const Channels& s)
{
    const float r = float(qRed(px));
    const float k = float(greenKey ? qGreen(px) : qBlue(px));
    const float o = float(greenKey ? qBlue(px) : qGreen(px));

    // Alpha: the pixel's colour difference as a share of the plate's.
    const float plateDiff = s.key - otherTwo(t.maxShare, t.redWeight, s.red, s.other);
    float matte = 1.0f;
    if (plateDiff >= t.minPlateDifference) {
        const float span = std::max(t.clearAbove - t.opaqueBelow, 1e-3f);
        const float low = t.opaqueBelow * plateDiff;
        const float scale = 1.0f / (span * plateDiff);
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
        for (int x = 0; x < photo.width(); ++x)
            out.setPixel(x, y, softPixel(t, greenKey, photo.pixel(x, y), plateAt(plate, x, y)));
    }
    return out;
}

} // namespace softoracle
