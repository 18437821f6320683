// SPDX-License-Identifier: MIT
#include "batch/composition.h"

#include "keying/pipeline.h"
#include "keying/softkey.h"

#include <utility>

namespace batch {

KeyedPhoto::KeyedPhoto(QImage photo, QRgb key, int backgrounds, bool soft)
    : m_photo(std::move(photo)), m_key(key), m_inPlace(backgrounds <= 1), m_soft(soft)
{
    if (m_inPlace)
        return;
    if (m_soft)
        m_photo = keying::softCutOut(std::move(m_photo), m_key); // in the photo's own memory
    else
        m_mask = keying::backdropMask(m_photo, m_key);
}

QImage KeyedPhoto::composedOnto(const QImage& fittedBackground, QImage& buffer)
{
    if (m_soft) {
        // The soft composite is 32-bit RGB, the form composites are saved in.
        if (m_inPlace)
            return keying::softCompositeOf(std::move(m_photo), m_key, fittedBackground);
        return keying::softComposite(m_photo, fittedBackground);
    }
    if (m_inPlace) // the photo is handed over and keyed in place
        return keying::savedForm(keying::compositeWithKey(std::move(m_photo), fittedBackground, m_key));
    return keying::savedForm(keying::compositeWithMask(m_photo, m_mask, fittedBackground, buffer));
}

} // namespace batch
