// SPDX-License-Identifier: MIT
#pragma once

// The window's own images: icon, logo and the small button glyphs.

#include <QImage>

namespace samplegen {

QImage makeIcon();        // 256 x 256
QImage makeLogo();        // 81 x 51, for the logo area on the light window background
QImage makePlusGlyph();   // 32 x 32
QImage makeMinusGlyph();  // 32 x 32
QImage makeApplyGlyph();  // 32 x 32, a check mark

} // namespace samplegen
