// SPDX-License-Identifier: MIT
#pragma once

// The backdrop's own colour, found in the photo: what a booth keys with when
// nobody clicks. A backdrop is one even green or blue colour that holds a good
// part of the frame's border on more than one side; the colour given is the
// middle of the pixels the hard key takes with it, so that falloff toward the
// corners and grain stay inside the key's reach. A photo without such a
// colour (an indoor shot, a grey wall, foliage) is refused with the reason,
// rather than keyed on whatever green it holds. QtGui only, safe on any
// thread.

#include <QImage>
#include <QRgb>
#include <QString>

namespace keying {

// Which backdrop a pixel could belong to: one whose green (or blue) stands out
// enough that the hard key could take it at all.
enum class BackdropFamily { None, Green, Blue };
BackdropFamily familyOf(QRgb pixel);

struct BackdropEstimate
{
    bool found = false;
    QRgb colour = 0;         // the key colour, opaque; meaningful when found
    double edgeShare = 0;    // share of the border ring the key takes
    double frameShare = 0;   // share of the whole frame the key takes
    int cornersHeld = 0;     // corners (of 4) that are mostly backdrop
    QString whyNot;          // when not found: the reason, in words
};

BackdropEstimate estimateBackdrop(const QImage& photo);

} // namespace keying
