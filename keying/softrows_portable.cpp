// SPDX-License-Identifier: MIT
// The soft keyer's row loop for any processor: the per-pixel decision itself.
#include "keying/softrows.h"

namespace keying::softrows {

void softRowPortable(const Matte& m, const PlateRow& plate, const std::uint32_t* photo, std::uint32_t* out, int width)
{
    for (int x = 0; x < width; ++x)
        out[x] = softPixel(m, photo[x], plate.red[x], plate.dominant[x], plate.other[x], plate.low[x], plate.scale[x]);
}

} // namespace keying::softrows
