// SPDX-License-Identifier: MIT
#include "batch/keyjob.h"

#include "batch/photocheck.h"
#include "keying/cutout.h"
#include "keying/pipeline.h"
#include "keying/softkey.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QStorageInfo>

#include <utility>

namespace batch {

namespace {

// The image to write: the composite in the form the window saves it, or the
// cut-out; with `soft`, the soft keyer's composite (32-bit RGB) or its
// straight cut-out.
QImage keyedImage(const KeySettings& settings, BackgroundFits& fits, QImage photo, QRgb key)
{
    if (settings.soft) {
        // Handed over, the photo becomes the cut-out or the composite in its
        // own memory, as the hard key keys in place.
        if (settings.transparent)
            return keying::softCutOut(std::move(photo), key);
        const QImage fitted = fits.fittedTo(photo.size());
        return keying::softCompositeOf(std::move(photo), key, fitted);
    }
    if (settings.transparent)
        return keying::cutOut(photo, key);
    const QImage fitted = fits.fittedTo(photo.size());
    // The photo is handed over, not copied: keying changes it in place.
    QImage keyed = settings.keyPoint ? keying::composite(std::move(photo), fitted, *settings.keyPoint)
                                     : keying::compositeWithKey(std::move(photo), fitted, key);
    return keying::savedForm(keyed);
}

// The writer names a failed device write only as a write error; a disk with
// less room left than the image's pixels is the usual cause, and is named.
QString writeError(const QString& outputPath, const QString& why, const QImage& image)
{
    const QStorageInfo disk(QFileInfo(outputPath).absolutePath());
    if (disk.isValid() && disk.bytesAvailable() < image.sizeInBytes()) {
        return QStringLiteral("cannot write %1: no space left on the output disk (%2 kB free)")
            .arg(outputPath).arg(disk.bytesAvailable() / 1024);
    }
    return QStringLiteral("cannot write %1: %2").arg(outputPath, why.isEmpty() ? QStringLiteral("unknown error") : why);
}

} // namespace

PhotoResult keyPhoto(const KeySettings& settings, BackgroundFits& fits, const QString& photoPath,
                     const QString& outputPath)
{
    return keyPhoto(settings, fits, readPhotoFile(photoPath), photoPath, outputPath);
}

PhotoResult keyPhoto(const KeySettings& settings, BackgroundFits& fits, const PhotoFile& file,
                     const QString& photoPath, const QString& outputPath)
{
    QElapsedTimer clock;
    clock.start();
    PhotoResult r;
    r.photo = photoPath;
    r.output = outputPath;
    auto finish = [&](const QString& error) {
        r.error = error;
        r.ms = clock.elapsed();
        return r;
    };

    r.identity = file.identity;
    if (!file.error.isEmpty())
        return finish(file.error);
    const QString cutShort = cutShortReason(file.bytes);
    if (!cutShort.isEmpty())
        return finish(cutShort);
    // Each worker thread decodes photo after photo into the memory of the
    // composite it wrote last, which its thread keeps until it ends.
    thread_local QImage decodeBuffer;
    QImage photo = std::exchange(decodeBuffer, QImage());
    keying::readPhotoAsKeyed(file.bytes, 0, photo);
    if (photo.isNull())
        return finish(unreadableReason(file.bytes));
    if (settings.keyPoint && !photo.rect().contains(*settings.keyPoint)) {
        return finish(QStringLiteral("the key point %1,%2 lies outside the %3 x %4 photo")
                          .arg(settings.keyPoint->x()).arg(settings.keyPoint->y())
                          .arg(photo.width()).arg(photo.height()));
    }
    const QRgb key = settings.keyPoint ? keying::keyColourAt(photo, *settings.keyPoint) : *settings.keyColour;
    r.key = key;
    if (settings.measureShare)
        r.replacedShare = keying::backdropShare(photo, key);

    QImage keyed = keyedImage(settings, fits, std::move(photo), key);
    const QByteArray format = settings.format.isEmpty() ? keying::formatForName(outputPath) : settings.format;
    const int quality = (format == "jpg" || format == "jpeg") ? settings.quality : -1;
    keying::SaveFailure failure;
    if (!keying::saveImageFile(keyed, outputPath, format, quality, &failure)) {
        r.error = writeError(outputPath, failure.why, keyed);
        r.outputSide = failure.writing;
    }
    decodeBuffer = std::move(keyed);
    return finish(r.error);
}

} // namespace batch
