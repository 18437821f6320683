// SPDX-License-Identifier: MIT
#include "keying/pipeline.h"

#include "keying/atomicfile.h"
#include "keying/keymask.h"
#include "keying/photoread.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QTransform>

namespace keying {

namespace {

// True when every pixel of a format with an alpha channel is fully opaque;
// a pixmap stores such a photo without its alpha.
bool allOpaque(const QImage& img)
{
    const QImage words = (img.format() == QImage::Format_ARGB32 || img.format() == QImage::Format_ARGB32_Premultiplied)
        ? img
        : img.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < words.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(words.constScanLine(y));
        for (int x = 0; x < words.width(); ++x) {
            if (qAlpha(row[x]) != 255)
                return false;
        }
    }
    return true;
}

} // namespace

QImage photoAsKeyed(const QString& path, int degrees)
{
    QImage photo;
    readPhotoAsKeyed(path, degrees, photo);
    return photo;
}

namespace {

void turnAsKeyed(int degrees, QImage& photo)
{
    QTransform turn;
    turn.rotate(degrees);
    photo = photo.transformed(turn, Qt::FastTransformation);
}

} // namespace

void readPhotoAsKeyed(const QString& path, int degrees, QImage& photo)
{
    readPhotoInto(path, photo);
    turnAsKeyed(degrees, photo);
}

void readPhotoAsKeyed(const QByteArray& file, int degrees, QImage& photo)
{
    readPhotoInto(file, photo);
    turnAsKeyed(degrees, photo);
}

QImage fittedBackground(const QImage& background, const QSize& photoSize)
{
    return background.scaled(photoSize, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

QPoint sampledPixel(const QSize& photoSize, const QPoint& click, const QSize& viewSize)
{
    return QPoint(photoSize.width() * click.x() / viewSize.width(), photoSize.height() * click.y() / viewSize.height());
}

QRgb keyColourAt(const QImage& photo, const QPoint& pixel)
{
    return photo.pixel(pixel);
}

QImage composite(QImage photo, const QImage& fittedBackground, const QPoint& keyPixel)
{
    maskOut(photo, fittedBackground, keyColourAt(photo, keyPixel));
    return photo;
}

QImage compositeWithKey(QImage photo, const QImage& fittedBackground, QRgb key)
{
    maskOut(photo, fittedBackground, key);
    return photo;
}

QImage savedForm(const QImage& composite)
{
    if (composite.isNull())
        return composite;
    if (composite.hasAlphaChannel() && !allOpaque(composite))
        return composite.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (composite.format() == QImage::Format_ARGB32 || composite.format() == QImage::Format_ARGB32_Premultiplied) {
        // Opaque words are the same in all three 32-bit formats.
        QImage same = composite;
        same.reinterpretAsFormat(QImage::Format_RGB32);
        return same;
    }
    return composite.convertToFormat(QImage::Format_RGB32);
}

QByteArray formatForName(const QString& path)
{
    return QFileInfo(path).suffix().toLower().toLatin1();
}

bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format, int quality)
{
    return saveImageFile(image, path, format, quality, static_cast<SaveFailure*>(nullptr));
}

bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format, int quality, QString* whyNot)
{
    SaveFailure failure;
    const bool saved = saveImageFile(image, path, format, quality, &failure);
    if (!saved && whyNot)
        *whyNot = failure.why;
    return saved;
}

bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format, int quality, SaveFailure* failure)
{
    // The image is encoded in memory first: an encoder never meets a failing
    // disk half-way (some leave their buffers behind when they do), and the
    // file is only opened once there is a whole image to put in it.
    QByteArray encoded;
    QBuffer buffer(&encoded);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format.isEmpty() ? formatForName(path) : format);
    writer.setQuality(quality);
    if (!writer.write(image)) {
        if (failure)
            *failure = SaveFailure{writer.errorString(), false, 0};
        return false;
    }
    // Only a complete file replaces the earlier one; a full disk or a lost
    // folder leaves it as it was, and no temporary file behind.
    WriteFailure written;
    if (!writeFileWhole(path, encoded, &written)) {
        if (failure)
            *failure = SaveFailure{written.why, true, written.systemError};
        return false;
    }
    return true;
}

bool saveComposite(const QImage& composite, const QString& path)
{
    return saveImageFile(savedForm(composite), path);
}

} // namespace keying
