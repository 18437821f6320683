// SPDX-License-Identifier: MIT
#pragma once

// What a booth does to a composite after keying: the print size (scaled to
// cover it and cut to it in the middle, so a 3:2 shot fills a 6x4 print
// without bars) and a frame or logo drawn on top. QtGui only, safe on any
// thread.

#include <QImage>
#include <QRect>
#include <QSize>

namespace keying {

// The part of an image of size `from` that fills `to` once scaled to cover
// it: the largest centred rectangle of `to`'s shape. Empty for empty sizes.
QRect coverCropRect(const QSize& from, const QSize& to);

// `image` scaled smoothly, aspect ratio kept, until it covers `to`, and cut
// to exactly `to` in its middle. The image itself when it already has that
// size; null for a null image or an empty size.
QImage coverAndCrop(const QImage& image, const QSize& to);

// Draws `overlay` over `composite`, stretched to the composite's size as a
// background is fitted: where the overlay is transparent the composite is
// left exactly as it was, where it is opaque the overlay's pixel is written,
// and in between the two are blended. A composite of a format other than
// 32-bit RGB or ARGB is turned into one first.
void drawOverlay(QImage& composite, const QImage& overlay);

} // namespace keying
