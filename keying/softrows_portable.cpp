// SPDX-License-Identifier: MIT
// The soft keyer's row loop for any processor: the per-pixel decision itself.
#include "keying/softrows.h"

namespace keying::softrows {

void softRowPortable(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width,
                     const std::uint32_t* background, int covered)
{
    for (int x = 0; x < width; ++x) {
        const std::uint32_t cut = softPixel(m, photo[x], plate.red[x], plate.dominant[x], plate.other[x], plate.subject[x]);
        out[x] = background ? compositePixel(cut, x < covered ? background[x] : 0u) : cut;
    }
}

} // namespace keying::softrows
