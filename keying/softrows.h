// SPDX-License-Identifier: MIT
#pragma once

// The soft keyer's per-pixel decision and its row loops. Internal to the
// keying library. Every loop gives exactly the bytes of softPixel(): the
// vector loop does the same single-precision operations in the same order
// (these sources are built without contraction into fused multiply-adds).

#include <algorithm>
#include <cstdint>

namespace keying::softrows {

// The matte's constants, worked out once per pass. "Dominant" is the key
// channel (green or blue), "other" the remaining one of green and blue.
struct Matte
{
    float cMax, cRed, cOther;           // other two = cMax max(R, O) + cRed R + cOther O
    float sMax, sRed, sOther;           // the spill limit on the key channel, same form
    float recoverGain;                  // 1 / the alpha from which colour is fully recovered
    int dominantShift, otherShift;      // bit positions in the 0xAARRGGBB word
};

// The clean plate along one row, per pixel: its colour, and the pixel
// difference at which alpha starts to fall (`low`) with the scale that
// turns the difference above it into 0..1 of the way to clear backdrop.
// A scale of 0 keeps the pixel whole.
struct PlateRow
{
    const float* red;
    const float* dominant;
    const float* other;
    const float* low;
    const float* scale;
};

// v / 255 rounded down for v up to 255 * 255 + 127, in integers.
inline std::uint32_t div255(std::uint32_t v)
{
    return (v * 32897u) >> 23;
}

inline float otherTwo(float cMax, float cRed, float cOther, float r, float o)
{
    return (cMax * std::max(r, o) + cRed * r) + cOther * o;
}

inline std::uint32_t toByte(float v)
{
    return static_cast<std::uint32_t>(std::min(std::max(v, 0.0f), 255.0f) + 0.5f);
}

// One pixel: the straight ARGB word of the cut-out for photo word `px` (its
// own alpha `pa` multiplies the matte's) over plate colour sR, sD, sO.
inline std::uint32_t softPixel(const Matte& m, std::uint32_t px, float sR, float sD, float sO, float low, float scale)
{
    const std::uint32_t pa = px >> 24;
    const float r = float((px >> 16) & 255u);
    const float d = float((px >> m.dominantShift) & 255u);
    const float o = float((px >> m.otherShift) & 255u);

    // How far the pixel is from subject towards the plate, 0..1.
    const float diff = d - otherTwo(m.cMax, m.cRed, m.cOther, r, o);
    const float t = std::min(std::max((diff - low) * scale, 0.0f), 1.0f);
    const std::uint32_t matte = static_cast<std::uint32_t>((1.0f - t) * 255.0f + 0.5f);
    const std::uint32_t a = div255(matte * pa + 127u);
    if (a == 0)
        return 0;

    // F = (I - (1 - a) S) / a with the matte's alpha as stored, so that a
    // composite of the stored word gives back the photo where the plate is
    // right. The photo's own transparency is not backdrop and takes no part.
    const float af = float(matte) * (1.0f / 255.0f);
    const float keep = 1.0f - af;
    const float inv = 1.0f / af;
    float fr = std::min(std::max((r - keep * sR) * inv, 0.0f), 255.0f);
    float fd = std::min(std::max((d - keep * sD) * inv, 0.0f), 255.0f);
    float fo = std::min(std::max((o - keep * sO) * inv, 0.0f), 255.0f);
    // At small alpha, lean towards the pixel's own colour, despilled.
    const float u = std::min(af * m.recoverGain, 1.0f);
    const float dd = std::min(d, otherTwo(m.sMax, m.sRed, m.sOther, r, o));
    fr = r + u * (fr - r);
    fd = dd + u * (fd - dd);
    fo = o + u * (fo - o);
    // Backdrop light on the subject: the key channel no higher than the
    // others allow. The larger of them is the limit, so yellow, blond and
    // brown keep their hue.
    fd = std::min(fd, otherTwo(m.sMax, m.sRed, m.sOther, fr, fo));

    return a << 24 | toByte(fr) << 16 | toByte(fd) << m.dominantShift | toByte(fo) << m.otherShift;
}

// Cut-out words for `width` photo words of one row.
void softRowPortable(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width);
#if defined(__x86_64__) || defined(__i386__)
#define PLENDRA_SOFT_HAS_AVX2 1
void softRowAvx2(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width);
#endif

} // namespace keying::softrows
