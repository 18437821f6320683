// SPDX-License-Identifier: MIT
// The key mask's row loop for processors with AVX2, eight pixels per 256-bit
// register, worked on the 0xAARRGGBB words as they lie in memory: byte
// operations test all channels of a pixel at once, so no channel is ever
// unpacked into a lane of its own.
//
// Why each step equals the per-pixel rule (c' is a channel with 0 counted as
// 1; "dominant" D is green for a green key and blue for a blue key, "other" O
// the remaining one of the two, R red):
//
// 1. Zero counts as one: an unsigned byte maximum with 1 in every byte.
// 2. Closeness: |k' - c'| < 90 is c' in [k' - 89, k' + 89], clamped to
//    0..255; a saturating subtraction of the lower bound from c' (and of c'
//    from the upper bound) is zero exactly inside. The alpha byte gets the
//    bounds 0 and 255, so it never counts.
// 3. Dominance. For a, b in 1..255 the single-precision a / b widened to
//    double reaches 1.16 exactly when 25a > 29b and 1.29 exactly when
//    100a > 129b. With X = D' - b' saturated at zero these are
//    25X - 4b' > 0 and 100X - 29b' > 0 (when D' <= b' both sides are false,
//    as -4b' and -29b' are negative). A byte shuffle lays out
//    [D', O', D', R'], a 16-bit shift and a saturating byte subtraction turn
//    that into [D'-O', O', D'-R', R'], and one multiply-add of unsigned bytes
//    by signed bytes gives the two 16-bit values per pixel: at most
//    100 * 254 = 25400 in size, so never saturated.
//    The rule, (r1 >= 1.16 and r2 >= 1.29) or (r2 >= 1.16 and r1 >= 1.29),
//    equals "both ratios reach 1.16 and at least one reaches 1.29", because
//    reaching 1.29 implies reaching 1.16: one multiply-add tests both lower
//    limits, the other both upper limits.
// 4. Darkness. A pixel that passes dominance has D' above O' and R', so the
//    dark-pixel rule reads: the sum is above 100, or D' - O' and D' - R' both
//    exceed 15. Those differences are already in the bytes of step 3; the
//    sum is D'-O' + 2O' + R', one more multiply-add and a 16-bit pair add.
//    A key whose dominant channel is 147 or more never needs this step (see
//    Key::darkRuleCanFail), and its loop leaves it out.
// 5. Replace: a byte blend of the background word (ORed with the opaque
//    alpha where the photo keeps its pixels opaque) under the lanes that
//    passed. Every run of eight is read and written back whole, whether or
//    not it changes: a branch that skipped unchanged runs measured slower on
//    large photos, as it broke the steady streams through memory.
#include "keying/keyrows.h"

#ifdef PLENDRA_KEYING_HAS_AVX2

#include <immintrin.h>

#include <cstring>

namespace keying::rows {

namespace {

#define PLENDRA_WIDE __attribute__((target("avx2"), always_inline)) inline

// What the loop needs of the key, in registers.
struct WideKey
{
    __m256i ones;          // 1 in every byte
    __m256i lowerBound;    // per byte: lowest channel value close to the key
    __m256i upperBound;    // per byte: highest channel value close to the key
    __m256i layout;        // byte shuffle to [D', O', D', R'] per pixel
    __m256i lowerRatio;    // 25, -4 in every byte pair
    __m256i upperRatio;    // 100, -29 in every byte pair
    __m256i sumWeights;    // 1, 2, 0, 1: sum of the three channels
    __m256i marginWeights; // subtracts 15 from D'-O' and D'-R', zeroes the rest
    __m256i fill;          // ORed into every background word stored
};

// A byte shuffle that picks, for every pixel, bytes `a b c d` of that same
// pixel (0 = blue, 1 = green, 2 = red).
PLENDRA_WIDE __m256i pixelShuffle(int a, int b, int c, int d)
{
    alignas(32) unsigned char bytes[32];
    const int pick[4] = {a, b, c, d};
    for (int i = 0; i < 32; ++i)
        bytes[i] = static_cast<unsigned char>((i & 12) + pick[i & 3]);
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(bytes));
}

// Per-byte bounds of the closeness test: blue, green, red, then alpha, which
// is never tested.
PLENDRA_WIDE __m256i channelBounds(int blue, int green, int red, int alpha)
{
    const auto byteOf = [](int v) { return static_cast<std::uint32_t>(v < 0 ? 0 : v > 255 ? 255 : v); };
    const std::uint32_t word = byteOf(blue) | byteOf(green) << 8 | byteOf(red) << 16 | byteOf(alpha) << 24;
    return _mm256_set1_epi32(static_cast<int>(word));
}

PLENDRA_WIDE WideKey wideKey(const Key& k)
{
    const int dominantByte = k.dominantShift / 8;
    const int otherByte = k.otherShift / 8;
    // Channel values in the order of the bytes of a word.
    int channel[3];
    channel[dominantByte] = k.dominant;
    channel[otherByte] = k.other;
    channel[2] = k.red;

    WideKey w;
    w.ones = _mm256_set1_epi8(1);
    w.lowerBound = channelBounds(channel[0] - 89, channel[1] - 89, channel[2] - 89, 0);
    w.upperBound = channelBounds(channel[0] + 89, channel[1] + 89, channel[2] + 89, 255);
    w.layout = pixelShuffle(dominantByte, otherByte, dominantByte, 2);
    w.lowerRatio = _mm256_set1_epi16(static_cast<short>(25 | (-4 & 0xFF) << 8));
    w.upperRatio = _mm256_set1_epi16(static_cast<short>(100 | (-29 & 0xFF) << 8));
    w.sumWeights = _mm256_set1_epi32(1 | 2 << 8 | 0 << 16 | 1 << 24);
    w.marginWeights = _mm256_set1_epi32(static_cast<int>(15u | 255u << 8 | 15u << 16 | 255u << 24));
    w.fill = _mm256_set1_epi32(static_cast<int>(k.backgroundFill));
    return w;
}

// Eight pixels at p (photo, keyed in place) and b (background).
template <bool DarkRule>
PLENDRA_WIDE void keyEight(const WideKey& k, std::uint32_t* p, const std::uint32_t* b)
{
    const __m256i zero = _mm256_setzero_si256();
    const __m256i word = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i c = _mm256_max_epu8(word, k.ones);

    // Nonzero in some byte when a channel is 90 or more from the key.
    __m256i fails = _mm256_or_si256(_mm256_subs_epu8(k.lowerBound, c), _mm256_subs_epu8(c, k.upperBound));

    // [D'-O', O', D'-R', R'] per pixel.
    const __m256i picked = _mm256_shuffle_epi8(c, k.layout);
    const __m256i excess = _mm256_subs_epu8(picked, _mm256_srli_epi16(picked, 8));

    // Both lower limits reached: every 16-bit value at least 1.
    const __m256i lower = _mm256_maddubs_epi16(excess, k.lowerRatio);
    fails = _mm256_or_si256(fails, _mm256_cmpgt_epi16(_mm256_set1_epi16(1), lower));
    // At least one upper limit reached: some 16-bit value above 0.
    const __m256i upper = _mm256_maddubs_epi16(excess, k.upperRatio);
    fails = _mm256_or_si256(fails, _mm256_cmpeq_epi32(_mm256_cmpgt_epi16(upper, zero), zero));

    if constexpr (DarkRule) {
        // Sum at most 100, and D'-O' or D'-R' at most 15 (a zero 16-bit value
        // once 15 is taken off and the O' and R' bytes are cleared).
        const __m256i sum = _mm256_madd_epi16(_mm256_maddubs_epi16(excess, k.sumWeights), _mm256_set1_epi16(1));
        const __m256i dark = _mm256_cmpgt_epi32(_mm256_set1_epi32(101), sum);
        const __m256i unclear = _mm256_cmpeq_epi16(_mm256_subs_epu8(excess, k.marginWeights), zero);
        fails = _mm256_or_si256(fails, _mm256_and_si256(dark, unclear));
    }

    const __m256i replace = _mm256_cmpeq_epi32(fails, zero);
    const __m256i bkg = _mm256_or_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(b)), k.fill);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_blendv_epi8(word, bkg, replace));
}

template <bool DarkRule>
__attribute__((target("avx2"))) void keyBand(const Key& key, const Band& band)
{
    const WideKey k = wideKey(key);
    const int width = band.width;
    const int whole = width - width % 8;
    for (int y = band.firstRow; y < band.endRow; ++y) {
        auto* photoRow = reinterpret_cast<std::uint32_t*>(band.photo + y * band.photoStride);
        const auto* bkgRow = reinterpret_cast<const std::uint32_t*>(band.background + y * band.backgroundStride);
        for (int x = 0; x < whole; x += 8)
            keyEight<DarkRule>(k, photoRow + x, bkgRow + x);
        // The last few pixels go through a padded copy, so that no read or
        // write leaves the row.
        if (whole < width) {
            const std::size_t bytes = std::size_t(width - whole) * 4;
            std::uint32_t tailPhoto[8] = {};
            std::uint32_t tailBkg[8] = {};
            std::memcpy(tailPhoto, photoRow + whole, bytes);
            std::memcpy(tailBkg, bkgRow + whole, bytes);
            keyEight<DarkRule>(k, tailPhoto, tailBkg);
            std::memcpy(photoRow + whole, tailPhoto, bytes);
        }
    }
}

#undef PLENDRA_WIDE

} // namespace

__attribute__((target("avx2"))) void keyRowsAvx2(const Key& key, const Band& band)
{
    if (key.darkRuleCanFail)
        keyBand<true>(key, band);
    else
        keyBand<false>(key, band);
}

} // namespace keying::rows

#endif
