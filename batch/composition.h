// SPDX-License-Identifier: MIT
#pragma once

// A photo keyed once and laid on each background of a run: the one place
// where what the key made of the photo meets a background. With one
// background the photo is keyed straight onto it, in place, as the window
// keys; with several, which of its pixels the key takes is worked out once,
// and each composite is the photo with that background stored there, byte
// for byte the composite keying it onto that background alone gives. Keyed
// softly, the photo becomes one soft cut-out (alpha and recovered colour),
// laid on each background; with one background in a single pass.

#include "keying/backdropmask.h"

#include <QImage>
#include <QRgb>

namespace batch {

class KeyedPhoto
{
public:
    // `backgrounds`: how many composites will be made of it; `soft`: the soft
    // keyer instead of the window's hard key.
    KeyedPhoto(QImage photo, QRgb key, int backgrounds, bool soft = false);

    // The composite on `fittedBackground` (of the photo's size), in the form
    // the window saves it, made in `buffer`'s memory when it fits. Made for
    // several backgrounds it may be called from several threads at once, each
    // with a buffer of its own; made for one, it is called once (it hands the
    // photo over).
    QImage composedOnto(const QImage& fittedBackground, QImage& buffer);

    // The photo, once every composite is made (null when it was keyed in
    // place): its memory takes the next photo.
    QImage takePhoto() { return std::move(m_photo); }

private:
    QImage m_photo;              // with several backgrounds and `soft`, the soft cut-out
    keying::BackdropMask m_mask; // empty when keyed in place or softly
    QRgb m_key;
    bool m_inPlace;
    bool m_soft;
};

} // namespace batch
