// SPDX-License-Identifier: MIT
#pragma once

// A photo keyed once and laid on each background of a run: the one place
// where what the key made of the photo meets a background. With one
// background the photo is keyed straight onto it, in place, as the window
// keys; with several it is keyed once into a cut-out, and each composite is
// made from the photo and that cut-out, byte for byte the composite keying it
// onto that background alone gives.

#include <QImage>
#include <QRgb>

namespace batch {

class KeyedPhoto
{
public:
    // `backgrounds`: how many composites will be made of it.
    KeyedPhoto(QImage photo, QRgb key, int backgrounds);

    // The composite on `fittedBackground` (of the photo's size), in the form
    // the window saves it. Made for several backgrounds, it may be called
    // from several threads at once; made for one, it is called once (it hands
    // the photo over).
    QImage composedOnto(const QImage& fittedBackground);

private:
    QImage m_photo;
    QImage m_cutOut; // null when keyed in place
    QRgb m_key;
};

} // namespace batch
