// SPDX-License-Identifier: MIT
#include "state/imagelimits.h"

#include <QImageReader>

void allowLargePhotos()
{
    // 2 GB: a 100-megapixel photo needs 400 MB as 32-bit pixels, and its
    // 16-bit-per-channel form 800 MB; the limit still stops absurd headers.
    QImageReader::setAllocationLimit(2048);
}
