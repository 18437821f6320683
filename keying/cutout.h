// SPDX-License-Identifier: MIT
#pragma once

// What of a photo is backdrop for a key colour, told apart from the subject
// without a background: the transparent cut-out and the share of the photo a
// composite replaces. Both follow the key mask's own decision, pixel for pixel,
// so that they match the composite the window makes. QtGui only, safe on any
// thread.

#include <QImage>
#include <QRgb>

namespace keying {

// The photo as 32-bit ARGB with every pixel the window would replace by the
// background made fully transparent (0x00000000); every other pixel is the
// photo's own, opaque unless the photo itself holds transparency. Null for a
// null photo.
QImage cutOut(const QImage& photo, QRgb key);

// The share of the photo's pixels (0 to 1) that keying with `key` replaces;
// 0 for an empty photo.
double backdropShare(const QImage& photo, QRgb key);

} // namespace keying
