// SPDX-License-Identifier: MIT
#pragma once

// From a true matte to the photo a camera would give: the subject in front of
// a green or blue backdrop, I = a*F + (1-a)*S, clean, or with backdrop spill
// on the subject's edges, an uneven backdrop, sensor noise and JPEG.

#include "tools/groundtruth/canvas.h"

#include <QImage>
#include <QString>

#include <cstdint>
#include <vector>

namespace groundtruth {

enum class Screen { Green, Blue };

enum class Shooting {
    Clean, // an even backdrop, the exact mix rounded to 8 bits
    Spill, // backdrop colour mixed into F near the edges, noise, JPEG quality 90
    Uneven, // a 30 % brightness ramp across the backdrop, noise, JPEG quality 90
};

struct Condition
{
    Screen screen = Screen::Green;
    Shooting shooting = Shooting::Clean;
};

std::vector<Condition> allConditions();
QString conditionName(const Condition& c); // "green, clean"
QString conditionTag(const Condition& c); // "green-clean", for file names

// The backdrop's colour for a subject: dark to bright greens or blues, chosen
// by the seed.
Rgb backdropShade(Screen screen, std::uint64_t seed);

// The photo as a keyer reads it (RGB32), shot of the subject under the
// condition; the seed chooses the shade, the ramp's direction and the noise.
QImage shoot(const TrueMatte& subject, const Condition& condition, std::uint64_t seed);

} // namespace groundtruth
