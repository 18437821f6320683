// SPDX-License-Identifier: MIT
#pragma once

// Keying helpers beside the key mask that the window's own flow does not call:
// a plain tolerance keyer, a dark-or-light estimate of a region of a photo and
// a font size for a text laid over a photo.

#include <QFont>
#include <QImage>
#include <QRgb>
#include <QString>

namespace keying {

// True when the two colours differ by 15 levels or more in red, green or blue.
inline bool isChange(QRgb a, QRgb b)
{
    const float channelsA[3] = {float(qRed(a)), float(qGreen(a)), float(qBlue(a))};
    const float channelsB[3] = {float(qRed(b)), float(qGreen(b)), float(qBlue(b))};
    for (int c = 0; c < 3; ++c) {
        const float d = channelsA[c] > channelsB[c] ? channelsA[c] - channelsB[c] : channelsB[c] - channelsA[c];
        if (!(15.0f > d))
            return true;
    }
    return false;
}

// Replaces every pixel of img within 15 levels of `key` in all three channels
// with bkg's pixel at the same place. The caller checks that the sizes match.
void maskOut2(QImage& img, const QImage& bkg, QRgb key);

// Counts the pixel at (x, y) as light (all channels above 180, or a channel
// sum above 400) or dark. Outside the image it counts the image class's
// out-of-range value like any pixel.
void approxPixel(const QImage& img, int x, int y, long& dark, long& light);

// True when the region of img chosen by the placement flags `pos` (a 3 x 3
// grid: top/middle/bottom 40-row bands by left/centre/right thirds) has more
// dark pixels than light ones. Any other `pos` samples nothing (false).
bool approximateColor(const QImage& img, int pos);

// An "Arial" font with a pixel size for which the longest line of `text` is at
// most 20 pixels wider than img. Needs a QGuiApplication (it measures text).
QFont calcFont(const QImage& img, const QString& text);

} // namespace keying
