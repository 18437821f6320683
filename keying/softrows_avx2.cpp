// SPDX-License-Identifier: MIT
// The soft keyer's row loop for processors with AVX2, eight pixels at a time
// in single-precision lanes. Each step is the operation softPixel() does, in
// the same order: lane minimum and maximum equal std::min and std::max as no
// value is ever NaN, division is exact in both, and truncation of a value in
// 0..255.5 is the conversion with truncation. So the bytes are the same.
#include "keying/softrows.h"

#ifdef PLENDRA_SOFT_HAS_AVX2

#include <immintrin.h>

#include <algorithm>
#include <cstring>

namespace keying::softrows {

namespace {

#define PLENDRA_WIDE __attribute__((target("avx2"), always_inline)) inline

struct WideMatte
{
    __m256 cMax, cRed, cOther, sMax, sRed, sOther, recoverGain;
    __m256 minPlateDifference, subjectShare, opaqueBelow, opaqueLevels, clearAbove, clearLevels;
    __m128i dominantShift, otherShift;
};

PLENDRA_WIDE __m256 otherTwo8(__m256 cMax, __m256 cRed, __m256 cOther, __m256 r, __m256 o)
{
    return _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(cMax, _mm256_max_ps(r, o)), _mm256_mul_ps(cRed, r)),
                         _mm256_mul_ps(cOther, o));
}

PLENDRA_WIDE __m256 clamp8(__m256 v, __m256 lo, __m256 hi)
{
    return _mm256_min_ps(_mm256_max_ps(v, lo), hi);
}

PLENDRA_WIDE __m256i toByte8(__m256 v)
{
    const __m256 c = clamp8(v, _mm256_setzero_ps(), _mm256_set1_ps(255.0f));
    return _mm256_cvttps_epi32(_mm256_add_ps(c, _mm256_set1_ps(0.5f)));
}

// a F + (1-a) B for eight cut-out words and eight background words, as
// compositePixel() does it: 32-bit lanes, the same integer steps.
PLENDRA_WIDE __m256i composite8(__m256i front, __m256i back)
{
    const __m256i byteMask = _mm256_set1_epi32(255);
    const __m256i a = _mm256_srli_epi32(front, 24);
    const __m256i na = _mm256_sub_epi32(byteMask, a);
    const __m256i bias = _mm256_set1_epi32(127);
    const __m256i k = _mm256_set1_epi32(32897);
    __m256i word = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    for (int shift = 0; shift <= 16; shift += 8) {
        const __m256i f = _mm256_and_si256(_mm256_srli_epi32(front, shift), byteMask);
        const __m256i b = _mm256_and_si256(_mm256_srli_epi32(back, shift), byteMask);
        const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(a, f), _mm256_mullo_epi32(na, b)), bias);
        word = _mm256_or_si256(word, _mm256_slli_epi32(_mm256_srli_epi32(_mm256_mullo_epi32(sum, k), 23), shift));
    }
    return word;
}

// The cut-out words of eight pixels, or their composite on `back` when given.
PLENDRA_WIDE void softEight(const WideMatte& m, const float* sRp, const float* sDp, const float* sOp,
                            const float* subjectp, const std::uint32_t* in, std::uint32_t* out, const std::uint32_t* back)
{
    const __m256i opaqueAlpha = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    const __m256i byteMask = _mm256_set1_epi32(255);
    const __m256 zero = _mm256_setzero_ps();
    const __m256 one = _mm256_set1_ps(1.0f);
    const __m256 c255 = _mm256_set1_ps(255.0f);
    const __m256 half = _mm256_set1_ps(0.5f);

    const __m256i px = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    const __m256i pa = _mm256_srli_epi32(px, 24);
    const __m256 r = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(px, 16), byteMask));
    const __m256 d = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srl_epi32(px, m.dominantShift), byteMask));
    const __m256 o = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srl_epi32(px, m.otherShift), byteMask));

    const __m256 sR = _mm256_loadu_ps(sRp);
    const __m256 sD = _mm256_loadu_ps(sDp);
    const __m256 sO = _mm256_loadu_ps(sOp);

    // matteScale(): lanes that cannot be keyed compute freely (even 1/0)
    // and are given low 0 and scale 0 at the end.
    const __m256 plate = _mm256_sub_ps(sD, otherTwo8(m.cMax, m.cRed, m.cOther, sR, sO));
    const __m256 from = _mm256_mul_ps(_mm256_min_ps(_mm256_loadu_ps(subjectp), _mm256_mul_ps(_mm256_set1_ps(0.5f), plate)),
                                      m.subjectShare);
    const __m256 gap = _mm256_sub_ps(plate, from);
    const __m256 keyable = _mm256_and_ps(_mm256_cmp_ps(plate, m.minPlateDifference, _CMP_GE_OQ),
                                         _mm256_cmp_ps(gap, m.minPlateDifference, _CMP_GE_OQ));
    const __m256 opaque = _mm256_max_ps(m.opaqueBelow, _mm256_div_ps(m.opaqueLevels, gap));
    const __m256 clear = _mm256_min_ps(m.clearAbove, _mm256_sub_ps(one, _mm256_div_ps(m.clearLevels, gap)));
    const __m256 span = _mm256_max_ps(_mm256_sub_ps(clear, opaque), _mm256_set1_ps(1e-3f));
    const __m256 low = _mm256_and_ps(keyable, _mm256_add_ps(from, _mm256_mul_ps(opaque, gap)));
    const __m256 scale = _mm256_and_ps(keyable, _mm256_div_ps(one, _mm256_mul_ps(span, gap)));

    const __m256 diff = _mm256_sub_ps(d, otherTwo8(m.cMax, m.cRed, m.cOther, r, o));
    const __m256 t = clamp8(_mm256_mul_ps(_mm256_sub_ps(diff, low), scale), zero, one);

    // Most of a photo is clear backdrop or whole subject. Eight clear
    // pixels are 0; eight whole, opaque pixels keep their colour under the
    // spill limit (what the full steps below give for alpha 1 and 0).
    const __m256i opaquePhoto = _mm256_cmpeq_epi32(pa, _mm256_set1_epi32(255));
    const int clearLanes = _mm256_movemask_ps(_mm256_cmp_ps(t, one, _CMP_EQ_OQ));
    if (clearLanes == 0xFF) {
        const __m256i cleared = back ? _mm256_or_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(back)), opaqueAlpha)
                                     : _mm256_setzero_si256();
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), cleared);
        return;
    }
    const int wholeLanes = _mm256_movemask_ps(_mm256_and_ps(_mm256_cmp_ps(t, zero, _CMP_EQ_OQ), _mm256_castsi256_ps(opaquePhoto)));
    if (wholeLanes == 0xFF) {
        const __m256 limited = _mm256_min_ps(d, otherTwo8(m.sMax, m.sRed, m.sOther, r, o));
        __m256i word = _mm256_or_si256(_mm256_set1_epi32(static_cast<int>(0xFF000000u)),
                                       _mm256_slli_epi32(_mm256_cvttps_epi32(_mm256_add_ps(r, half)), 16));
        word = _mm256_or_si256(word, _mm256_sll_epi32(toByte8(limited), m.dominantShift));
        word = _mm256_or_si256(word, _mm256_sll_epi32(_mm256_cvttps_epi32(_mm256_add_ps(o, half)), m.otherShift));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), word);
        return;
    }
    static_cast<void>(opaqueAlpha);
    const __m256i matte = _mm256_cvttps_epi32(_mm256_add_ps(_mm256_mul_ps(_mm256_sub_ps(one, t), c255), half));
    const __m256i a = _mm256_srli_epi32(
        _mm256_mullo_epi32(_mm256_add_epi32(_mm256_mullo_epi32(matte, pa), _mm256_set1_epi32(127)), _mm256_set1_epi32(32897)),
        23);

    // Lanes of alpha 0 give 1/0 here, and are zeroed at the end; nothing
    // between looks at them.
    const __m256 af = _mm256_mul_ps(_mm256_cvtepi32_ps(matte), _mm256_set1_ps(1.0f / 255.0f));
    const __m256 keep = _mm256_sub_ps(one, af);
    const __m256 inv = _mm256_div_ps(one, _mm256_max_ps(af, _mm256_set1_ps(1.0f / 255.0f)));
    __m256 fr = clamp8(_mm256_mul_ps(_mm256_sub_ps(r, _mm256_mul_ps(keep, sR)), inv), zero, c255);
    __m256 fd = clamp8(_mm256_mul_ps(_mm256_sub_ps(d, _mm256_mul_ps(keep, sD)), inv), zero, c255);
    __m256 fo = clamp8(_mm256_mul_ps(_mm256_sub_ps(o, _mm256_mul_ps(keep, sO)), inv), zero, c255);
    const __m256 u = _mm256_min_ps(_mm256_mul_ps(af, m.recoverGain), one);
    const __m256 dd = _mm256_min_ps(d, otherTwo8(m.sMax, m.sRed, m.sOther, r, o));
    fr = _mm256_add_ps(r, _mm256_mul_ps(u, _mm256_sub_ps(fr, r)));
    fd = _mm256_add_ps(dd, _mm256_mul_ps(u, _mm256_sub_ps(fd, dd)));
    fo = _mm256_add_ps(o, _mm256_mul_ps(u, _mm256_sub_ps(fo, o)));
    fd = _mm256_min_ps(fd, otherTwo8(m.sMax, m.sRed, m.sOther, fr, fo));

    __m256i word = _mm256_or_si256(_mm256_slli_epi32(a, 24), _mm256_slli_epi32(toByte8(fr), 16));
    word = _mm256_or_si256(word, _mm256_sll_epi32(toByte8(fd), m.dominantShift));
    word = _mm256_or_si256(word, _mm256_sll_epi32(toByte8(fo), m.otherShift));
    word = _mm256_andnot_si256(_mm256_cmpeq_epi32(a, _mm256_setzero_si256()), word);
    if (back)
        word = composite8(word, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(back)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), word);
}

} // namespace

__attribute__((target("avx2"))) void softRowAvx2(const Matte& m, const PlateRow& plate, const std::uint32_t* photo,
                                                 std::uint32_t* out, int width, const std::uint32_t* background,
                                                 int covered)
{
    WideMatte w;
    w.cMax = _mm256_set1_ps(m.cMax);
    w.cRed = _mm256_set1_ps(m.cRed);
    w.cOther = _mm256_set1_ps(m.cOther);
    w.sMax = _mm256_set1_ps(m.sMax);
    w.sRed = _mm256_set1_ps(m.sRed);
    w.sOther = _mm256_set1_ps(m.sOther);
    w.recoverGain = _mm256_set1_ps(m.recoverGain);
    w.minPlateDifference = _mm256_set1_ps(m.minPlateDifference);
    w.subjectShare = _mm256_set1_ps(m.subjectShare);
    w.opaqueBelow = _mm256_set1_ps(m.opaqueBelow);
    w.opaqueLevels = _mm256_set1_ps(m.opaqueLevels);
    w.clearAbove = _mm256_set1_ps(m.clearAbove);
    w.clearLevels = _mm256_set1_ps(m.clearLevels);
    w.dominantShift = _mm_cvtsi32_si128(m.dominantShift);
    w.otherShift = _mm_cvtsi32_si128(m.otherShift);
    // Runs of eight wholly over the background (or with none) go eight at a
    // time; the rest through the per-pixel decision itself, so that no read
    // leaves a row.
    const int whole = background ? std::min(width, covered) / 8 * 8 : width / 8 * 8;
    for (int x = 0; x < whole; x += 8) {
        softEight(w, plate.red + x, plate.dominant + x, plate.other + x, plate.subject + x, photo + x, out + x,
                  background ? background + x : nullptr);
    }
    for (int x = whole; x < width; ++x) {
        const std::uint32_t cut = softPixel(m, photo[x], plate.red[x], plate.dominant[x], plate.other[x], plate.subject[x]);
        out[x] = background ? compositePixel(cut, x < covered ? background[x] : 0u) : cut;
    }
}

#undef PLENDRA_WIDE

} // namespace keying::softrows

#endif
