// SPDX-License-Identifier: MIT
#pragma once

// The straightforward per-pixel versions of the keying routines: one pixel read,
// the rule written out as plainly as it reads, one pixel write. The engine's
// fast routines must give exactly the same bytes. Shared by the keying tests
// and the benchmark; deliberately independent of keying/keymask.h.

#include <QImage>
#include <QRgb>

#include <cmath>

namespace oracle {

// A channel as the rule reads it: 0 counts as 1.
inline float ruleChannel(int value)
{
    return value == 0 ? 1.0f : float(value);
}

// Is `pixel` backdrop for the key colour `key`?
inline bool keyRule(QRgb key, QRgb pixel)
{
    const float kR = ruleChannel(qRed(key));
    const float kG = ruleChannel(qGreen(key));
    const float kB = ruleChannel(qBlue(key));

    const float pR = ruleChannel(qRed(pixel));
    const float pG = ruleChannel(qGreen(pixel));
    const float pB = ruleChannel(qBlue(pixel));

    float r1 = 1.1f;
    float r2 = 1.1f;
    if (kG > kR && kG > kB) {
        r1 = pG / pB;
        r2 = pG / pR;
    }
    if (kB > kG && kB > kR) {
        r1 = pB / pG;
        r2 = pB / pR;
    }

    if (!(std::fabs(kR - pR) < 90.0f && std::fabs(kG - pG) < 90.0f && std::fabs(kB - pB) < 90.0f))
        return false;

    const double lower = 1.16;
    const double upper = 1.29;
    if (!((double(r1) >= lower && double(r2) >= upper) || (double(r2) >= lower && double(r1) >= upper)))
        return false;

    const float s = pR + pG + pB;
    if (s > 100.0f)
        return true;

    if (pG > pB) {
        if (!(std::fabs(pG - pR) > 15.0f && std::fabs(pG - pB) > 15.0f))
            return false;
    }
    if (pB > pG) {
        if (!(std::fabs(pB - pR) > 15.0f && std::fabs(pG - pB) > 15.0f))
            return false;
    }
    return true;
}

// The key mask, one pixel at a time with the image class's own reads and writes.
inline void maskOut(QImage& img, const QImage& bkg, QRgb key)
{
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            if (keyRule(key, img.pixel(x, y)))
                img.setPixel(x, y, bkg.pixel(x, y));
        }
    }
}

// Within 15 levels of each other in every channel?
inline bool closeColours(QRgb a, QRgb b)
{
    return std::abs(qRed(a) - qRed(b)) < 15 && std::abs(qGreen(a) - qGreen(b)) < 15
        && std::abs(qBlue(a) - qBlue(b)) < 15;
}

// The tolerance keyer, one pixel at a time.
inline void maskOut2(QImage& img, const QImage& bkg, QRgb key)
{
    for (int y = 0; y < img.height(); ++y) {
        for (int x = 0; x < img.width(); ++x) {
            if (closeColours(key, img.pixel(x, y)))
                img.setPixel(x, y, bkg.pixel(x, y));
        }
    }
}

} // namespace oracle
