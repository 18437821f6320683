// SPDX-License-Identifier: MIT
#include "intake/thumbnail.h"

#include "keying/photoread.h"

#include <QPixmap>

namespace {

// Whether any pixel is less than fully opaque, judged at the format's own
// depth (a 16-bit alpha of 65534 counts as transparent, as the pixmap sees it).
bool hasTransparentPixel(const QImage& image)
{
    const int w = image.width();
    const int h = image.height();
    switch (image.format()) {
    case QImage::Format_Indexed8:
        return image.hasAlphaChannel(); // decided by the colour table alone
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        for (int y = 0; y < h; ++y) {
            const QRgb* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            for (int x = 0; x < w; ++x)
                if (qAlpha(row[x]) != 255)
                    return true;
        }
        return false;
    case QImage::Format_RGBA64:
    case QImage::Format_RGBA64_Premultiplied:
        for (int y = 0; y < h; ++y) {
            const quint16* row = reinterpret_cast<const quint16*>(image.constScanLine(y));
            for (int x = 0; x < w; ++x)
                if (row[4 * x + 3] != 0xffff)
                    return true;
        }
        return false;
    default:
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                if (image.pixelColor(x, y).rgba64().alpha() != 0xffff)
                    return true;
        return false;
    }
}

} // namespace

QIcon thumbnailIcon(const QString& path, const QSize& size)
{
    QIcon icon;
    const QPixmap picture(path);
    if (!picture.isNull())
        icon.addPixmap(picture.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation), QIcon::Normal, QIcon::Off);
    return icon;
}

PixmapFormats PixmapFormats::ofThisScreen()
{
    QImage opaque(1, 1, QImage::Format_RGB888);
    opaque.fill(Qt::white);
    QImage transparent(1, 1, QImage::Format_ARGB32);
    transparent.fill(Qt::transparent);
    return {QPixmap::fromImage(opaque).toImage().format(), QPixmap::fromImage(transparent).toImage().format()};
}

QImage inPixmapForm(QImage photo, const PixmapFormats& formats)
{
    if (photo.isNull())
        return photo;
    QImage::Format target;
    if (photo.depth() == 1) // two-colour pictures: the colour table decides
        target = photo.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    else if (photo.hasAlphaChannel() && hasTransparentPixel(photo))
        target = formats.transparent;
    else
        target = formats.opaque;

    if (target == QImage::Format_RGB32
        && (photo.format() == QImage::Format_ARGB32 || photo.format() == QImage::Format_ARGB32_Premultiplied)) {
        // Opaque words read the same in all three 32-bit formats.
        photo.reinterpretAsFormat(QImage::Format_RGB32);
        return photo;
    }
    return std::move(photo).convertToFormat(target);
}

QImage thumbnailOf(const QImage& photo, const QSize& size, const PixmapFormats& formats)
{
    if (photo.isNull())
        return QImage();
    // Scaled after the conversion, as a pixmap scales the pixels it holds:
    // scaled first, paletted and two-colour pictures pick some of their
    // pixels a column away at 74 pixels wide, and a paletted one ends up in
    // another format.
    return inPixmapForm(photo, formats).scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

QImage thumbnailOfFile(const QString& path, const QSize& size, const PixmapFormats& formats)
{
    QImage decoded;
    return thumbnailOfFile(path, size, formats, decoded);
}

QImage thumbnailOfFile(const QString& path, const QSize& size, const PixmapFormats& formats, QImage& decodeBuffer)
{
    keying::readPhotoInto(path, decodeBuffer);
    return thumbnailOf(decodeBuffer, size, formats);
}

QIcon iconOfThumbnail(const QImage& thumbnail)
{
    QIcon icon;
    if (!thumbnail.isNull())
        icon.addPixmap(QPixmap::fromImage(thumbnail), QIcon::Normal, QIcon::Off);
    return icon;
}
