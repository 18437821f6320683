// SPDX-License-Identifier: MIT
#pragma once

// Keying one photo of a run, start to finish, through the window's own photo
// pipeline: decoded and keyed once, laid on each background of the run,
// finished (print size, overlay) and written. Safe on any thread: it touches
// no widget and no pixmap.

#include "batch/layers.h"
#include "batch/photofile.h"

#include <QByteArray>
#include <QPoint>
#include <QRgb>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace batch {

struct KeySettings
{
    std::optional<QPoint> keyPoint; // the photo pixel the key colour is taken from
    std::optional<QRgb> keyColour;  // or a fixed key colour
    bool autoKey = false;           // or the backdrop's own colour, found in each photo
    QByteArray format;              // empty: the output name's suffix, as the window saves
    int quality = -1;               // JPEG quality; -1 the writer's default
    bool transparent = false;       // a cut-out instead of a composite
    QSize printSize;                // invalid: the photo's own size
    bool soft = false;              // the soft keyer instead of the window's hard key
    bool measureShare = false;      // work out the replaced share (an extra pass)
};

struct PhotoResult
{
    QString photo;
    QString output;            // the first (or only) output
    QStringList outputs;       // every output, one per background
    std::optional<QRgb> key;
    double replacedShare = -1; // below 0 when not measured
    qint64 ms = 0;
    QString error;             // empty when every output was written (or skipped)
    bool skipped = false;      // keyed before: a watch's journal says so
    bool outputSide = false;   // the error is the output's (the disk, the folder), not the photo's
    PhotoIdentity identity;    // of the photo file, as read
    QByteArray contentHash;    // of the bytes keyed, when a watch records them
};

// Keys `photoPath` with `settings` onto each background of `layers` and
// writes `outputPaths` (one per background; one for a cut-out), each whole
// or not at all. The photo counts as done only when all are written.
PhotoResult keyPhoto(const KeySettings& settings, Layers& layers, const QString& photoPath,
                     const QStringList& outputPaths);
// The same for a photo file already read.
PhotoResult keyPhoto(const KeySettings& settings, Layers& layers, const PhotoFile& file,
                     const QString& photoPath, const QStringList& outputPaths);

} // namespace batch
