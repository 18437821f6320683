// SPDX-License-Identifier: MIT
#include "batch/watchjob.h"

namespace batch {

PhotoResult keyWatchedPhoto(const KeySettings& settings, Layers& layers, const QString& photoPath,
                            const QStringList& outputPaths, const QByteArray& keyedHash)
{
    const PhotoFile file = readPhotoFile(photoPath);
    QByteArray hash;
    if (file.error.isEmpty() && !keyedHash.isEmpty()) {
        hash = contentHash(file.bytes);
        if (hash == keyedHash) {
            PhotoResult same;
            same.photo = photoPath;
            same.output = outputPaths.value(0);
            same.outputs = outputPaths;
            same.skipped = true;
            same.identity = file.identity;
            same.contentHash = hash;
            return same;
        }
    }
    PhotoResult r = keyPhoto(settings, layers, file, photoPath, outputPaths);
    // Worked out once every composite is written: a guest does not wait for it.
    if (r.error.isEmpty())
        r.contentHash = hash.isEmpty() ? contentHash(file.bytes) : hash;
    return r;
}

} // namespace batch
