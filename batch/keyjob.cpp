// SPDX-License-Identifier: MIT
#include "batch/keyjob.h"

#include "batch/composition.h"
#include "batch/photocheck.h"
#include "keying/backdropcolour.h"
#include "keying/cutout.h"
#include "keying/finishing.h"
#include "keying/pipeline.h"
#include "keying/softkey.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSemaphore>
#include <QStorageInfo>
#include <QThreadPool>

#include <memory>
#include <utility>
#include <vector>

namespace batch {

namespace {

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

// The print size and the overlay, on a composite or a cut-out.
QImage finished(QImage image, const KeySettings& settings, Layers& layers)
{
    if (settings.printSize.isValid())
        image = keying::coverAndCrop(image, settings.printSize);
    if (layers.hasOverlay())
        keying::drawOverlay(image, layers.fittedOverlay(image.size()));
    return image;
}

// What writing one output came to.
struct Written
{
    QString error;
    bool outputSide = false;
    QImage image; // kept: its memory takes the next photo
};

Written write(QImage image, const KeySettings& settings, const QString& outputPath)
{
    Written w;
    const QByteArray format = settings.format.isEmpty() ? keying::formatForName(outputPath) : settings.format;
    const int quality = (format == "jpg" || format == "jpeg") ? settings.quality : -1;
    keying::SaveFailure failure;
    if (!keying::saveImageFile(image, outputPath, format, quality, &failure)) {
        w.error = writeError(outputPath, failure.why, image);
        w.outputSide = failure.writing;
    }
    w.image = std::move(image);
    return w;
}

// The key colour for this photo, or why there is none.
std::optional<QRgb> keyFor(const KeySettings& settings, const QImage& photo, QString* why)
{
    if (settings.autoKey) {
        const keying::BackdropEstimate found = keying::estimateBackdrop(photo);
        if (!found.found) {
            *why = found.whyNot;
            return std::nullopt;
        }
        return found.colour;
    }
    if (settings.keyPoint) {
        if (!photo.rect().contains(*settings.keyPoint)) {
            *why = QStringLiteral("the key point %1,%2 lies outside the %3 x %4 photo")
                       .arg(settings.keyPoint->x()).arg(settings.keyPoint->y())
                       .arg(photo.width()).arg(photo.height());
            return std::nullopt;
        }
        return keying::keyColourAt(photo, *settings.keyPoint);
    }
    return settings.keyColour;
}

// Composes, finishes and writes the photo onto every background. The first
// composite is made on this thread; the others on Qt's pool when a thread is
// free there at once (else here too), so that the encodes of one photo run
// side by side.
std::vector<Written> composeAll(KeyedPhoto& keyed, const KeySettings& settings, Layers& layers, const QSize& photoSize,
                          const QStringList& outputPaths)
{
    const int count = int(outputPaths.size());
    std::vector<Written> results(size_t(count), Written{});
    auto one = [&](int i) {
        // Each thread makes composite after composite in the memory of the
        // one it wrote last, which it keeps until it ends: fresh memory costs
        // more than copying the photo into memory already in use.
        thread_local QImage compositeBuffer;
        QImage composite = keyed.composedOnto(layers.fittedBackground(i, photoSize), compositeBuffer);
        results[size_t(i)] = write(finished(std::move(composite), settings, layers), settings, outputPaths[i]);
        // Let go of the buffer, so that this thread's next composite reuses
        // it; with one background the written image is the photo's memory,
        // kept for the next photo.
        if (count > 1)
            results[size_t(i)].image = QImage();
    };
    const auto done = std::make_shared<QSemaphore>();
    int helpers = 0;
    QList<int> here{0};
    for (int i = 1; i < count; ++i) {
        if (QThreadPool::globalInstance()->tryStart([&one, i, done] {
                one(i);
                done->release();
            })) {
            ++helpers;
        } else {
            here << i;
        }
    }
    for (const int i : std::as_const(here))
        one(i);
    done->acquire(helpers);
    return results;
}

} // namespace

PhotoResult keyPhoto(const KeySettings& settings, Layers& layers, const QString& photoPath,
                     const QStringList& outputPaths)
{
    return keyPhoto(settings, layers, readPhotoFile(photoPath), photoPath, outputPaths);
}

PhotoResult keyPhoto(const KeySettings& settings, Layers& layers, const PhotoFile& file,
                     const QString& photoPath, const QStringList& outputPaths)
{
    QElapsedTimer clock;
    clock.start();
    PhotoResult r;
    r.photo = photoPath;
    r.outputs = outputPaths;
    r.output = outputPaths.value(0);
    auto finish = [&](const QString& error) {
        r.error = error;
        r.ms = clock.elapsed();
        return r;
    };

    r.identity = file.identity;
    if (outputPaths.isEmpty())
        return finish(QStringLiteral("no output named"));
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
    QString noKey;
    const std::optional<QRgb> key = keyFor(settings, photo, &noKey);
    if (!key) {
        decodeBuffer = std::move(photo);
        return finish(noKey);
    }
    r.key = *key;
    if (settings.measureShare)
        r.replacedShare = keying::backdropShare(photo, *key);

    std::vector<Written> written;
    if (settings.transparent) {
        // The soft cut-out is made in the photo's own memory.
        QImage cut = settings.soft ? keying::softCutOut(std::move(photo), *key) : keying::cutOut(photo, *key);
        written.push_back(write(finished(std::move(cut), settings, layers), settings, r.output));
    } else {
        const QSize photoSize = photo.size();
        // The photo is handed over, not copied: with one background keying
        // changes it in place.
        KeyedPhoto keyed(std::move(photo), *key, int(outputPaths.size()), settings.soft);
        written = composeAll(keyed, settings, layers, photoSize, outputPaths);
        if (written.back().image.isNull())
            written.back().image = keyed.takePhoto();
    }
    for (Written& w : written) {
        if (!w.error.isEmpty() && r.error.isEmpty()) {
            r.error = w.error;
            r.outputSide = w.outputSide;
        }
    }
    decodeBuffer = std::move(written.back().image);
    return finish(r.error);
}

} // namespace batch
