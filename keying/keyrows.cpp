// SPDX-License-Identifier: MIT
// The key mask's inner loop, written once on vectors of N pixels and built
// twice: 4 pixels for the SSE2 baseline every x86-64 processor has, 8 pixels
// with AVX2 for processors that have it (chosen at run time by the caller).
//
// Every step is exact with respect to the per-pixel rule: channel values are
// small integers, so differences, sums and the closeness and darkness tests
// are done in 32-bit integers. The ratio tests need no division either. For
// channel values a and b from 1 to 255, the single-precision a / b widened to
// double reaches 1.16 exactly when 25a > 29b, and reaches 1.29 exactly when
// 100a > 129b: 116/100 and 129/100 themselves round to just under their
// doubles, and no other fraction with such small terms lies between a
// threshold and the float it rounds from. (The all-colours test checks every
// one of them.) The products are exact in single precision.
#include "keying/keyrows.h"

#include <cstring>

namespace keying::rows {

namespace {

// Vectors of N pixels: signed channel values, raw 0xAARRGGBB words, floats.
template <int N>
struct Lanes;
template <>
struct Lanes<4>
{
    typedef std::int32_t I __attribute__((vector_size(16)));
    typedef std::uint32_t U __attribute__((vector_size(16)));
    typedef float F __attribute__((vector_size(16)));
};
template <>
struct Lanes<8>
{
    typedef std::int32_t I __attribute__((vector_size(32)));
    typedef std::uint32_t U __attribute__((vector_size(32)));
    typedef float F __attribute__((vector_size(32)));
};

template <int N>
__attribute__((always_inline)) inline void keyBand(const Key& k, const Band& band)
{
    using I = typename Lanes<N>::I;
    using U = typename Lanes<N>::U;
    using F = typename Lanes<N>::F;

    const std::int32_t keyRed = k.red;
    const std::int32_t keyDominant = k.dominant;
    const std::int32_t keyOther = k.other;
    const int dominantShift = k.dominantShift;
    const int otherShift = k.otherShift;
    const std::uint32_t fill = k.backgroundFill;
    const int width = band.width;
    // Biases of the closeness test: 89 - key channel, plus the sign flip.
    const std::uint32_t redBias = std::uint32_t(89 - keyRed) + 0x80000000u;
    const std::uint32_t dominantBias = std::uint32_t(89 - keyDominant) + 0x80000000u;
    const std::uint32_t otherBias = std::uint32_t(89 - keyOther) + 0x80000000u;
    const std::int32_t closeLimit = std::int32_t(0x80000000u + 179u);
    const std::int32_t darkLimit = std::int32_t(0x80000000u + 30u);

    for (int y = band.firstRow; y < band.endRow; ++y) {
        auto* photoRow = reinterpret_cast<std::uint32_t*>(band.photo + y * band.photoStride);
        const auto* bkgRow = reinterpret_cast<const std::uint32_t*>(band.background + y * band.backgroundStride);

        for (int x = 0; x < width; x += N) {
            // The last few pixels of a row go through the same vector code via
            // a padded copy, so that no read or write leaves the row.
            const int n = width - x < N ? width - x : N;
            std::uint32_t tailPhoto[N];
            std::uint32_t tailBkg[N];
            std::uint32_t* p = photoRow + x;
            const std::uint32_t* b = bkgRow + x;
            if (n < N) {
                std::memset(tailPhoto, 0, sizeof tailPhoto);
                std::memset(tailBkg, 0, sizeof tailBkg);
                std::memcpy(tailPhoto, p, std::size_t(n) * 4);
                std::memcpy(tailBkg, b, std::size_t(n) * 4);
                p = tailPhoto;
                b = tailBkg;
            }

            U w;
            U bg;
            std::memcpy(&w, p, sizeof w);
            std::memcpy(&bg, b, sizeof bg);

            I red = (I)((w >> 16) & 0xFFu);
            I dom = (I)((w >> dominantShift) & 0xFFu);
            I oth = (I)((w >> otherShift) & 0xFFu);
            // A channel of 0 counts as 1 (a true comparison is -1).
            red -= (red == 0);
            dom -= (dom == 0);
            oth -= (oth == 0);

            // Closer than 90 levels to the key in every channel:
            // -90 < c - k < 90, i.e. c - k + 89 in 0..178 as an unsigned
            // number, compared as signed after flipping the sign bit.
            const I close = ((I)((U)red + redBias) < closeLimit) & ((I)((U)dom + dominantBias) < closeLimit)
                & ((I)((U)oth + otherBias) < closeLimit);

            // The dominant channel stands above the other two: r1 = dom / oth
            // and r2 = dom / red against 1.16 (25/29) and 1.29 (100/129).
            const F fRed = __builtin_convertvector(red, F);
            const F fDom = __builtin_convertvector(dom, F);
            const F fOth = __builtin_convertvector(oth, F);
            const F dom25 = fDom * 25.0f;
            const F dom100 = fDom * 100.0f;
            const I r1Lower = dom25 > fOth * 29.0f;
            const I r1Upper = dom100 > fOth * 129.0f;
            const I r2Lower = dom25 > fRed * 29.0f;
            const I r2Upper = dom100 > fRed * 129.0f;
            const I dominant = (r1Lower & r2Upper) | (r2Lower & r1Upper);

            // Bright pixels pass. A dark one passes when green equals blue, or
            // when the larger of the two is more than 15 levels from red and
            // more than 15 above the smaller one (|d| > 15: d + 15 beyond 0..30
            // as an unsigned number).
            const I bright = (red + dom + oth) > 100;
            const I domAbove = dom > oth;
            const I larger = oth ^ ((dom ^ oth) & domAbove);
            const I apart = (I)(((U)(dom - oth) + 15u) ^ 0x80000000u) > darkLimit;
            const I clearOfRed = (I)(((U)(larger - red) + 15u) ^ 0x80000000u) > darkLimit;
            const I darkPasses = (dom == oth) | (apart & clearOfRed);

            const I replace = close & dominant & (bright | darkPasses);
            const U out = w ^ ((w ^ (bg | fill)) & (U)replace);
            std::memcpy(p, &out, sizeof out);

            if (n < N)
                std::memcpy(photoRow + x, tailPhoto, std::size_t(n) * 4);
        }
    }
}

} // namespace

void keyBandBaseline(const Key& key, const Band& band)
{
    keyBand<4>(key, band);
}

#ifdef PLENDRA_KEYING_HAS_WIDE
__attribute__((target("avx2"))) void keyBandWide(const Key& key, const Band& band)
{
    keyBand<8>(key, band);
}
#endif

} // namespace keying::rows
