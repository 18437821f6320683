// SPDX-License-Identifier: MIT
#include "batch/watchjob.h"

namespace batch {

PhotoResult keyWatchedPhoto(const KeySettings& settings, BackgroundFits& fits, const QString& photoPath,
                            const QString& outputPath, const QByteArray& keyedHash)
{
    const PhotoFile file = readPhotoFile(photoPath);
    QByteArray hash;
    if (file.error.isEmpty() && !keyedHash.isEmpty()) {
        hash = contentHash(file.bytes);
        if (hash == keyedHash) {
            PhotoResult same;
            same.photo = photoPath;
            same.output = outputPath;
            same.skipped = true;
            same.identity = file.identity;
            same.contentHash = hash;
            return same;
        }
    }
    PhotoResult r = keyPhoto(settings, fits, file, photoPath, outputPath);
    // Worked out once the composite is written: a guest does not wait for it.
    if (r.error.isEmpty())
        r.contentHash = hash.isEmpty() ? contentHash(file.bytes) : hash;
    return r;
}

} // namespace batch
