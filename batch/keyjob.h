// SPDX-License-Identifier: MIT
#pragma once

// Keying one photo of a run, start to finish, through the window's own photo
// pipeline. Safe on any thread: it touches no widget and no pixmap.

#include "batch/backgroundfits.h"
#include "batch/photofile.h"

#include <QByteArray>
#include <QPoint>
#include <QRgb>
#include <QString>

#include <optional>

namespace batch {

struct KeySettings
{
    std::optional<QPoint> keyPoint; // the photo pixel the key colour is taken from
    std::optional<QRgb> keyColour;  // or a fixed key colour
    QByteArray format;              // empty: the output name's suffix, as the window saves
    int quality = -1;               // JPEG quality; -1 the writer's default
    bool transparent = false;       // a cut-out instead of a composite
    bool soft = false;              // the soft keyer instead of the window's hard key
    bool measureShare = false;      // work out the replaced share (an extra pass)
};

struct PhotoResult
{
    QString photo;
    QString output;
    std::optional<QRgb> key;
    double replacedShare = -1; // below 0 when not measured
    qint64 ms = 0;
    QString error;             // empty when the output was written (or skipped)
    bool skipped = false;      // keyed before: a watch's journal says so
    bool outputSide = false;   // the error is the output's (the disk, the folder), not the photo's
    PhotoIdentity identity;    // of the photo file, as read
    QByteArray contentHash;    // of the bytes keyed, when a watch records them
};

// Keys `photoPath` with `settings` against `fits` and writes `outputPath`
// whole or not at all.
PhotoResult keyPhoto(const KeySettings& settings, BackgroundFits& fits, const QString& photoPath,
                     const QString& outputPath);
// The same for a photo file already read.
PhotoResult keyPhoto(const KeySettings& settings, BackgroundFits& fits, const PhotoFile& file,
                     const QString& photoPath, const QString& outputPath);

} // namespace batch
