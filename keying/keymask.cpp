// SPDX-License-Identifier: MIT
#include "keying/keymask.h"

namespace keying {

namespace {

// A palette cannot hold the background's colours.
void makeStorable(QImage& img)
{
    if (img.format() == QImage::Format_Indexed8 || img.format() == QImage::Format_Mono
        || img.format() == QImage::Format_MonoLSB) {
        img = img.convertToFormat(img.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    }
}

} // namespace

void maskOut(QImage& img, const QImage& bkg, QRgb key)
{
    makeStorable(img);
    const KeyColour k = keyColourOf(key);
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            if (isBackdrop(k, img.pixel(x, y)))
                img.setPixel(x, y, bkg.pixel(x, y));
        }
    }
}

} // namespace keying
