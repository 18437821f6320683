// SPDX-License-Identifier: MIT
#pragma once

// The soft keyer: instead of keeping or replacing each pixel, it works out how
// much of each pixel is backdrop (its alpha, from the colour difference to the
// backdrop at that place) and what colour the subject has there once the
// backdrop's share and its spill are taken out. Hair, fur, veils and glass keep
// their soft edges without a green or blue fringe. The window's hard key
// (keymask.h) is a different routine and is not touched by this one. QtGui
// only, safe on any thread.

#include <QImage>
#include <QRgb>

namespace keying {

// The photo as a straight (not premultiplied) ARGB32 cut-out keyed softly
// against the backdrop of colour `key`: alpha from the colour difference
// against the clean plate, colour recovered. Pixels of alpha 0 are 0x00000000.
// A key that is neither green- nor blue-dominant keys nothing: the photo comes
// back opaque (its own transparency kept). Null for a null photo.
QImage softCutOut(const QImage& photo, QRgb key);
// The same, written into the photo's own memory when it is handed over
// unshared as 32-bit RGB or ARGB: a 24-megapixel photo then needs no second
// 96 MB image.
QImage softCutOut(QImage&& photo, QRgb key);

// a F + (1-a) B for a soft cut-out on a background of the same size, as 32-bit
// RGB (the form the batch tool saves composites in). Where the background is
// smaller than the cut-out, the part it does not cover is composited on black.
QImage softComposite(const QImage& cutOut, const QImage& fittedBackground);
// The same, written into the cut-out's own memory when it is handed over
// unshared.
QImage softComposite(QImage&& cutOut, const QImage& fittedBackground);

// softComposite(softCutOut(photo, key), fittedBackground), the same bytes, in
// one pass over the photo's memory (its own, when handed over unshared): the
// batch tool's composites.
QImage softCompositeOf(QImage photo, QRgb key, const QImage& fittedBackground);

} // namespace keying
