// SPDX-License-Identifier: MIT
#include "intake/thumbnail.h"

#include <QPixmap>

QIcon thumbnailIcon(const QString& path, const QSize& size)
{
    QIcon icon;
    const QPixmap picture(path);
    if (!picture.isNull())
        icon.addPixmap(picture.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation), QIcon::Normal, QIcon::Off);
    return icon;
}
