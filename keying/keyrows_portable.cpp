// SPDX-License-Identifier: MIT
// The key mask's row loop for processors without SSE2 or AVX2: the per-pixel
// decision itself, on row pointers. Also the one place that turns a key colour
// into the row loops' form.
#include "keying/keyrows.h"

#include "keying/keymask.h"

namespace keying::rows {

Key rowKey(std::int32_t red, std::int32_t green, std::int32_t blue, bool greenKey, std::uint32_t backgroundFill)
{
    Key k;
    k.red = red;
    k.dominant = greenKey ? green : blue;
    k.other = greenKey ? blue : green;
    k.dominantShift = greenKey ? 8 : 0;
    k.otherShift = greenKey ? 0 : 8;
    k.backgroundFill = backgroundFill;
    k.darkRuleCanFail = k.dominant < 147;
    return k;
}

void keyRowsPortable(const Key& key, const Band& band)
{
    KeyColour k;
    k.r = float(key.red);
    k.g = float(key.dominantShift == 8 ? key.dominant : key.other);
    k.b = float(key.dominantShift == 8 ? key.other : key.dominant);
    k.greenKey = key.dominantShift == 8;
    k.blueKey = !k.greenKey;
    for (int y = band.firstRow; y < band.endRow; ++y) {
        auto* photoRow = reinterpret_cast<std::uint32_t*>(band.photo + y * band.photoStride);
        const auto* bkgRow = reinterpret_cast<const std::uint32_t*>(band.background + y * band.backgroundStride);
        for (int x = 0; x < band.width; ++x) {
            if (isBackdrop(k, photoRow[x]))
                photoRow[x] = bkgRow[x] | key.backgroundFill;
        }
    }
}

} // namespace keying::rows
