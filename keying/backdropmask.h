// SPDX-License-Identifier: MIT
#pragma once

// A photo keyed once and laid on several backgrounds: which of its pixels the
// key takes, one bit a pixel, worked out once with the key mask's own
// decision; each composite is then the photo with the background stored
// where the bits are set, byte for byte the composite of keying the photo
// onto that background. QtGui only, safe on any thread.

#include <QImage>
#include <QRgb>

#include <vector>

namespace keying {

struct BackdropMask
{
    // False for a photo that is not 32-bit RGB or ARGB (the key mask reads
    // other formats pixel by pixel with rounding of their own): such a photo
    // is keyed again for each background.
    bool valid = false;
    QRgb key = 0;
    int width = 0;
    int height = 0;
    qsizetype bytesPerRow = 0;
    std::vector<unsigned char> bits; // row by row, bit x % 8 of byte x / 8
};

// The pixels keying `photo` with `key` replaces. Large photos are worked out
// on Qt's pool, with the threads free there at once.
BackdropMask backdropMask(const QImage& photo, QRgb key);

// The composite compositeWithKey(photo, fittedBackground, mask.key) makes,
// written into `into` (whose memory is reused when it is of the photo's size
// and format and not shared) and returned.
QImage compositeWithMask(const QImage& photo, const BackdropMask& mask, const QImage& fittedBackground, QImage& into);

} // namespace keying
