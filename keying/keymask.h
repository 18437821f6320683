// SPDX-License-Identifier: MIT
#pragma once

// The key mask: decides, pixel by pixel, whether a foreground pixel belongs to
// the green or blue backdrop clicked by the user, and replaces those pixels by
// the background's pixel at the same place.

#include <QImage>
#include <QRgb>

#include <cmath>

namespace keying {

// What the decision needs of the key colour, worked out once per keying pass.
struct KeyColour
{
    float r, g, b;    // channel values; a channel of 0 counts as 1
    bool greenKey;    // green strictly above red and blue
    bool blueKey;     // blue strictly above green and red
};

// A channel of 0 counts as 1, so that the ratios below never divide by zero.
inline float channelValue(unsigned v)
{
    return v == 0 ? 1.0f : static_cast<float>(v);
}

inline KeyColour keyColourOf(QRgb key)
{
    KeyColour k;
    k.r = channelValue(qRed(key));
    k.g = channelValue(qGreen(key));
    k.b = channelValue(qBlue(key));
    k.greenKey = k.g > k.r && k.g > k.b;
    k.blueKey = k.b > k.g && k.b > k.r;
    return k;
}

// True when the pixel is backdrop for this key and is to be replaced.
// The float/double mix is deliberate: ratios are rounded to single precision
// before they meet the double thresholds, so 116/100 falls just short of 1.16.
inline bool isBackdrop(const KeyColour& k, QRgb pixel)
{
    const float pR = channelValue(qRed(pixel));
    const float pG = channelValue(qGreen(pixel));
    const float pB = channelValue(qBlue(pixel));

    // A key that is neither green- nor blue-dominant keeps the neutral pair,
    // which fails the dominance test below: such a click keys nothing.
    float r1 = 1.1f;
    float r2 = 1.1f;
    if (k.greenKey) {
        r1 = pG / pB;
        r2 = pG / pR;
    }
    if (k.blueKey) {
        r1 = pB / pG;
        r2 = pB / pR;
    }

    if (!(std::fabs(k.r - pR) < 90.0f && std::fabs(k.g - pG) < 90.0f && std::fabs(k.b - pB) < 90.0f))
        return false;

    const double d1 = r1;
    const double d2 = r2;
    if (!((d1 >= 1.16 && d2 >= 1.29) || (d2 >= 1.16 && d1 >= 1.29)))
        return false;

    const float sum = pR + pG + pB;
    if (sum > 100.0f)
        return true;

    // Dark pixels must stand out clearly in their dominant channel, so that
    // dark hair and shadows with a green or blue cast are kept.
    if (pG > pB && !(std::fabs(pG - pR) > 15.0f && std::fabs(pG - pB) > 15.0f))
        return false;
    if (pB > pG && !(std::fabs(pB - pR) > 15.0f && std::fabs(pG - pB) > 15.0f))
        return false;
    return true;
}

// Keys `img` in place: every backdrop pixel for `key` receives the whole
// 32-bit value (alpha included) of `bkg` at the same place. `bkg` must have
// img's width and height. Indexed images are turned into 32-bit images first so
// that background colours outside their palette can be stored; every other
// format is keyed as loaded, with the image's own store rules.
void maskOut(QImage& img, const QImage& bkg, QRgb key);

} // namespace keying
