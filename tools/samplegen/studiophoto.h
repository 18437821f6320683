// SPDX-License-Identifier: MIT
#pragma once

// The two sample foregrounds: a person standing in front of a green or a blue
// studio backdrop, with the backdrop's uneven light, folds, floor sweep and
// shadows, a little colour spill on the person's edges and camera noise.

#include <QImage>

namespace samplegen {

// What each pixel of a generated photo shows, as far as the generator knows.
enum Region : unsigned char {
    RegionBackdrop = 0,  // backdrop cloth or floor only (shadows included)
    RegionSkin = 1,      // face, neck, hands
    RegionHair = 2,      // the solid part of the hair
    RegionClothing = 3,
    RegionMixed = 255    // edge pixels where the person and the backdrop blend
};

struct StudioPhoto
{
    QImage image;  // RGB32, what is written to disk
    QImage truth;  // Grayscale8, one Region code per pixel
};

StudioPhoto makeGreenScreenPhoto();
StudioPhoto makeBlueScreenPhoto();

} // namespace samplegen
