// SPDX-License-Identifier: MIT
#include "batch/composition.h"

#include "keying/cutout.h"
#include "keying/pipeline.h"

#include <utility>

namespace batch {

KeyedPhoto::KeyedPhoto(QImage photo, QRgb key, int backgrounds)
    : m_photo(std::move(photo)), m_key(key)
{
    if (backgrounds > 1)
        m_cutOut = keying::cutOut(m_photo, m_key);
}

QImage KeyedPhoto::composedOnto(const QImage& fittedBackground)
{
    if (m_cutOut.isNull()) // one background: the photo is handed over and keyed in place
        return keying::savedForm(keying::compositeWithKey(std::move(m_photo), fittedBackground, m_key));
    return keying::savedForm(keying::compositeFromCutOut(m_photo, m_cutOut, fittedBackground, m_key));
}

} // namespace batch
