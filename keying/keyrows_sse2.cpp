// SPDX-License-Identifier: MIT
// The key mask's row loop for SSE2, which every x86-64 processor has: four
// pixels per register. Processors with AVX2 take keyrows_avx2.cpp instead and
// others keyrows_portable.cpp (chosen once per call by the caller).
//
// Why the SSE2 steps equal the per-pixel rule (c' is a channel with 0 counted
// as 1; D is the dominant channel of the key, O the other of green and blue,
// R red):
//
// 1. Zero counts as one: an unsigned byte maximum with 1 in every byte.
// 2. Closeness: |k' - c'| < 90 is c' in [k' - 89, k' + 89], clamped to
//    0..255; a saturating subtraction of the lower bound from c' (and of c'
//    from the upper bound) is zero exactly inside. The alpha byte gets the
//    bounds 0 and 255, so it never counts.
// 3. Dominance. For a, b in 1..255 the single-precision a / b widened to
//    double reaches 1.16 exactly when 25a > 29b and 1.29 exactly when
//    100a > 129b: 116/100 and 129/100 themselves round to just under their
//    doubles, and no other fraction with such small terms lies between a
//    threshold and the float it rounds from (the all-colours test checks
//    every one of them). Each pixel word becomes the 16-bit pairs (D', O')
//    and (D', R'), and one 16-bit multiply-add per test gives 25D' - 29b' or
//    100D' - 129b' exactly in 32 bits. The rule,
//    (r1 >= 1.16 and r2 >= 1.29) or (r2 >= 1.16 and r1 >= 1.29), equals
//    "both ratios reach 1.16 and at least one reaches 1.29", because
//    reaching 1.29 implies reaching 1.16.
// 4. Darkness. A pixel that passes dominance has D' above O' and R', so the
//    dark-pixel rule reads: the sum is above 100, or D' - O' and D' - R' both
//    exceed 15; the same pairs give the sum and the differences. A key whose
//    dominant channel is 147 or more never needs this step (see
//    Key::darkRuleCanFail), and its loop leaves it out.
// 5. Replace: the background word (ORed with the opaque alpha where the
//    photo keeps its pixels opaque) under the lanes that passed; every run of
//    four is written back whole, which keeps the loop free of branches.
#include "keying/keyrows.h"

#ifdef PLENDRA_KEYING_HAS_SSE2

#include <emmintrin.h>

#include <cstring>

namespace keying::rows {

namespace {


// Two signed 16-bit weights for the multiply-add of a (D', b') pair.
__m128i weights(int onDominant, int onOther)
{
    return _mm_set1_epi32(static_cast<int>((std::uint32_t(onDominant) & 0xFFFFu)
                                           | (std::uint32_t(onOther) & 0xFFFFu) << 16));
}

// Per-byte bounds of the closeness test: blue, green, red, then alpha, which
// is never tested.
__m128i channelBounds(int blue, int green, int red, int alpha)
{
    const auto byteOf = [](int v) { return static_cast<std::uint32_t>(v < 0 ? 0 : v > 255 ? 255 : v); };
    const std::uint32_t word = byteOf(blue) | byteOf(green) << 8 | byteOf(red) << 16 | byteOf(alpha) << 24;
    return _mm_set1_epi32(static_cast<int>(word));
}

// What the loop needs of the key, in registers.
struct BaselineKey
{
    __m128i ones;        // 1 in every byte
    __m128i lowerBound;  // per byte: lowest channel value close to the key
    __m128i upperBound;  // per byte: highest channel value close to the key
    __m128i lowByte;     // 0xFF in the low byte of every word
    __m128i thirdByte;   // 0xFF in the red byte of every word
    __m128i lowerRatio;  // 25, -29
    __m128i upperRatio;  // 100, -129
    __m128i fill;        // ORed into every background word stored
    int dominantShift;   // bit position of D in the word
    int otherToHigh;     // left shift that brings O to the red byte
};

BaselineKey baselineKey(const Key& k)
{
    const int dominantByte = k.dominantShift / 8;
    const int otherByte = k.otherShift / 8;
    int channel[3];
    channel[dominantByte] = k.dominant;
    channel[otherByte] = k.other;
    channel[2] = k.red;

    BaselineKey b;
    b.ones = _mm_set1_epi8(1);
    b.lowerBound = channelBounds(channel[0] - 89, channel[1] - 89, channel[2] - 89, 0);
    b.upperBound = channelBounds(channel[0] + 89, channel[1] + 89, channel[2] + 89, 255);
    b.lowByte = _mm_set1_epi32(0xFF);
    b.thirdByte = _mm_set1_epi32(0xFF0000);
    b.lowerRatio = weights(25, -29);
    b.upperRatio = weights(100, -129);
    b.fill = _mm_set1_epi32(static_cast<int>(k.backgroundFill));
    b.dominantShift = k.dominantShift;
    b.otherToHigh = 16 - k.otherShift;
    return b;
}

// Four pixels at p (photo, keyed in place) and b (background).
template <bool DarkRule>
inline void keyFour(const BaselineKey& k, std::uint32_t* p, const std::uint32_t* b)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i one = _mm_set1_epi32(1);
    const __m128i word = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i c = _mm_max_epu8(word, k.ones);

    // Nonzero in some byte when a channel is 90 or more from the key.
    __m128i fails = _mm_or_si128(_mm_subs_epu8(k.lowerBound, c), _mm_subs_epu8(c, k.upperBound));

    // The 16-bit pairs (D', O') and (D', R') of each pixel.
    const __m128i dominant = _mm_and_si128(_mm_srli_epi32(c, k.dominantShift), k.lowByte);
    const __m128i withOther = _mm_or_si128(dominant, _mm_and_si128(_mm_slli_epi32(c, k.otherToHigh), k.thirdByte));
    const __m128i withRed = _mm_or_si128(dominant, _mm_and_si128(c, k.thirdByte));

    // Both lower limits reached, and at least one upper limit.
    const __m128i lowerFails = _mm_or_si128(_mm_cmpgt_epi32(one, _mm_madd_epi16(withOther, k.lowerRatio)),
                                            _mm_cmpgt_epi32(one, _mm_madd_epi16(withRed, k.lowerRatio)));
    const __m128i upperFails = _mm_and_si128(_mm_cmpgt_epi32(one, _mm_madd_epi16(withOther, k.upperRatio)),
                                             _mm_cmpgt_epi32(one, _mm_madd_epi16(withRed, k.upperRatio)));
    fails = _mm_or_si128(fails, _mm_or_si128(lowerFails, upperFails));

    if constexpr (DarkRule) {
        // Sum at most 100, and D'-O' or D'-R' at most 15.
        const __m128i sum = _mm_add_epi32(_mm_madd_epi16(withOther, weights(1, 1)), _mm_madd_epi16(withRed, weights(0, 1)));
        const __m128i dark = _mm_cmpgt_epi32(_mm_set1_epi32(101), sum);
        const __m128i margin = _mm_set1_epi32(15);
        const __m128i clear = _mm_and_si128(_mm_cmpgt_epi32(_mm_madd_epi16(withOther, weights(1, -1)), margin),
                                            _mm_cmpgt_epi32(_mm_madd_epi16(withRed, weights(1, -1)), margin));
        fails = _mm_or_si128(fails, _mm_andnot_si128(clear, dark));
    }

    const __m128i replace = _mm_cmpeq_epi32(fails, zero);
    const __m128i bkg = _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(b)), k.fill);
    const __m128i out = _mm_or_si128(_mm_and_si128(replace, bkg), _mm_andnot_si128(replace, word));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), out);
}

template <bool DarkRule>
void keyBand(const Key& key, const Band& band)
{
    const BaselineKey k = baselineKey(key);
    const int width = band.width;
    const int whole = width - width % 4;
    for (int y = band.firstRow; y < band.endRow; ++y) {
        auto* photoRow = reinterpret_cast<std::uint32_t*>(band.photo + y * band.photoStride);
        const auto* bkgRow = reinterpret_cast<const std::uint32_t*>(band.background + y * band.backgroundStride);
        for (int x = 0; x < whole; x += 4)
            keyFour<DarkRule>(k, photoRow + x, bkgRow + x);
        // The last few pixels go through a padded copy, so that no read or
        // write leaves the row.
        if (whole < width) {
            const std::size_t bytes = std::size_t(width - whole) * 4;
            std::uint32_t tailPhoto[4] = {};
            std::uint32_t tailBkg[4] = {};
            std::memcpy(tailPhoto, photoRow + whole, bytes);
            std::memcpy(tailBkg, bkgRow + whole, bytes);
            keyFour<DarkRule>(k, tailPhoto, tailBkg);
            std::memcpy(photoRow + whole, tailPhoto, bytes);
        }
    }
}

} // namespace

void keyRowsSse2(const Key& key, const Band& band)
{
    if (key.darkRuleCanFail)
        keyBand<true>(key, band);
    else
        keyBand<false>(key, band);
}

} // namespace keying::rows

#endif // PLENDRA_KEYING_HAS_SSE2
