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

// The composite compositeWithKey(photo, fittedBackground, key) makes, built
// from the photo and its cut-out for that key (cutOut(photo, key)) without
// keying again: a photo keyed once is laid on several backgrounds this way,
// each composite byte for byte the one keying it onto that background gives.
// Photos as they are decoded (32-bit RGB or ARGB) take the cut-out; a photo
// of another format is keyed again, with the key mask's own per-pixel reads.
QImage compositeFromCutOut(QImage photo, const QImage& cutOut, const QImage& fittedBackground, QRgb key);

// The share of the photo's pixels (0 to 1) that keying with `key` replaces;
// 0 for an empty photo.
double backdropShare(const QImage& photo, QRgb key);

} // namespace keying
