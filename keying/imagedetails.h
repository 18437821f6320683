// SPDX-License-Identifier: MIT
#pragma once

// What a photo carries besides its pixels: resolution, offset, device pixel
// ratio, colour space and text. The image encoders write them, so an image
// made afresh from a photo carries them too, to give the bytes that keying the
// photo in its own memory gives.

#include <QImage>

namespace keying {

// Gives `into` the details of `from`. Text is only added, never taken off:
// `into` should hold none that `from` lacks.
void carryDetails(const QImage& from, QImage& into);

} // namespace keying
