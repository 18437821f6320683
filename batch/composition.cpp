// SPDX-License-Identifier: MIT
#include "batch/composition.h"

#include "keying/pipeline.h"

#include <utility>

namespace batch {

KeyedPhoto::KeyedPhoto(QImage photo, QRgb key, int backgrounds)
    : m_photo(std::move(photo)), m_key(key), m_inPlace(backgrounds <= 1)
{
    if (!m_inPlace)
        m_mask = keying::backdropMask(m_photo, m_key);
}

QImage KeyedPhoto::composedOnto(const QImage& fittedBackground, QImage& buffer)
{
    if (m_inPlace) // the photo is handed over and keyed in place
        return keying::savedForm(keying::compositeWithKey(std::move(m_photo), fittedBackground, m_key));
    return keying::savedForm(keying::compositeWithMask(m_photo, m_mask, fittedBackground, buffer));
}

} // namespace batch
