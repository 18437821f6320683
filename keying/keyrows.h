// SPDX-License-Identifier: MIT
#pragma once

// The row loops of the key mask for 32-bit photos, one per vector width.
// Internal to the keying library.

#include <cstdint>
#include <cstddef>

namespace keying::rows {

// The key colour in the form the row loops want it, worked out once per pass.
// "Dominant" is green for a green key and blue for a blue key, "other" the
// remaining one of the two; the decision treats the pair symmetrically.
struct Key
{
    std::int32_t red, dominant, other; // key channels, 0 counted as 1
    int dominantShift, otherShift;     // bit positions in the 0xAARRGGBB word
    std::uint32_t backgroundFill;      // ORed into every background word stored
    // False when no pixel close to the key can fail the dark-pixel rule, so
    // the loops may leave it out. A pixel that passes dominance and fails that
    // rule has a sum of at most 100 and D <= max(O, R) + 15; closeness gives
    // D >= dominant - 89, so its sum is at least 2 * (dominant - 89) - 15 + 1,
    // which is above 100 once the key's dominant channel is 147 or more.
    bool darkRuleCanFail;
};

// The row loops' form of a key that is green- or blue-dominant.
Key rowKey(std::int32_t red, std::int32_t green, std::int32_t blue, bool greenKey, std::uint32_t backgroundFill);

// A band of rows of the photo (keyed in place) and the background.
struct Band
{
    unsigned char* photo;
    const unsigned char* background;
    std::ptrdiff_t photoStride;
    std::ptrdiff_t backgroundStride;
    int width;
    int firstRow;
    int endRow;
};

// One loop per instruction set, each named by what it needs; the caller picks
// one per keying pass. Each keys the band's rows in place.
void keyRowsPortable(const Key& key, const Band& band);
#if defined(__SSE2__)
#define PLENDRA_KEYING_HAS_SSE2 1
void keyRowsSse2(const Key& key, const Band& band);
#endif
#if defined(__x86_64__) || defined(__i386__)
#define PLENDRA_KEYING_HAS_AVX2 1
void keyRowsAvx2(const Key& key, const Band& band);
#endif

} // namespace keying::rows
