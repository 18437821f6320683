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
    float minPlateDifference;           // a plate or gap below this keeps the pixel whole
    float subjectShare;                 // how much of the subject's difference counts
    float opaqueBelow, opaqueLevels;    // alpha 1 up to max(share, levels / gap) of the way
    float clearAbove, clearLevels;      // alpha 0 from min(share, 1 - levels / gap) of the way
    int dominantShift, otherShift;      // bit positions in the 0xAARRGGBB word
};

// The clean plate along one row, per pixel: the backdrop's colour and the
// subject's colour difference nearby.
struct PlateRow
{
    const float* red;
    const float* dominant;
    const float* other;
    const float* subject;
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

// Where the matte's scale lies at a pixel: from the subject's difference
// there (alpha 1) to the plate's (alpha 0), with the noise allowances at
// either end. A plate too weakly coloured, or a subject too close to it,
// keeps the pixel whole (scale 0).
inline void matteScale(const Matte& m, float sR, float sD, float sO, float subject, float* low, float* scale)
{
    const float plate = sD - otherTwo(m.cMax, m.cRed, m.cOther, sR, sO);
    const float from = std::min(subject, 0.5f * plate) * m.subjectShare;
    const float gap = plate - from;
    *low = 0.0f;
    *scale = 0.0f;
    if (plate >= m.minPlateDifference && gap >= m.minPlateDifference) {
        const float opaque = std::max(m.opaqueBelow, m.opaqueLevels / gap);
        const float clear = std::min(m.clearAbove, 1.0f - m.clearLevels / gap);
        const float span = std::max(clear - opaque, 1e-3f);
        *low = from + opaque * gap;
        *scale = 1.0f / (span * gap);
    }
}

// One pixel: the straight ARGB word of the cut-out for photo word `px` (its
// own alpha `pa` multiplies the matte's) over plate colour sR, sD, sO with
// the subject's difference nearby.
inline std::uint32_t softPixel(const Matte& m, std::uint32_t px, float sR, float sD, float sO, float subject)
{
    const std::uint32_t pa = px >> 24;
    const float r = float((px >> 16) & 255u);
    const float d = float((px >> m.dominantShift) & 255u);
    const float o = float((px >> m.otherShift) & 255u);

    // How far the pixel is from subject towards the plate, 0..1.
    float low, scale;
    matteScale(m, sR, sD, sO, subject, &low, &scale);
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

// The composite of a straight cut-out word over a background word: a F +
// (1-a) B per channel, rounded, opaque. Alpha 0 gives the background and
// alpha 255 the cut-out's colour, exactly.
inline std::uint32_t compositePixel(std::uint32_t front, std::uint32_t back)
{
    const std::uint32_t a = front >> 24;
    const std::uint32_t na = 255u - a;
    const std::uint32_t r = div255(a * ((front >> 16) & 255u) + na * ((back >> 16) & 255u) + 127u);
    const std::uint32_t g = div255(a * ((front >> 8) & 255u) + na * ((back >> 8) & 255u) + 127u);
    const std::uint32_t b = div255(a * (front & 255u) + na * (back & 255u) + 127u);
    return 0xFF000000u | r << 16 | g << 8 | b;
}

// Cut-out words for `width` photo words of one row; with a background row
// (`covered` of its words, black beyond), their composite on it instead.
void softRowPortable(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width,
                     const std::uint32_t* background, int covered);
#if defined(__x86_64__) || defined(__i386__)
#define PLENDRA_SOFT_HAS_AVX2 1
void softRowAvx2(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width,
                 const std::uint32_t* background, int covered);
#endif

} // namespace keying::softrows
