// SPDX-License-Identifier: MIT
#include "keying/imagedetails.h"

#include <QColorSpace>

namespace keying {

void carryDetails(const QImage& from, QImage& into)
{
    if (into.isNull())
        return;
    into.setDotsPerMeterX(from.dotsPerMeterX());
    into.setDotsPerMeterY(from.dotsPerMeterY());
    into.setOffset(from.offset());
    into.setDevicePixelRatio(from.devicePixelRatio());
    if (into.colorSpace() != from.colorSpace())
        into.setColorSpace(from.colorSpace());
    for (const QString& key : from.textKeys())
        into.setText(key, from.text(key));
}

} // namespace keying
