// SPDX-License-Identifier: MIT
#pragma once

// The steps that turn a photo, a background and a key point into the file
// "Save Image" writes. The window calls them one by one as the user clicks;
// the batch tool calls them for every photo of a shoot, so both give the same
// composite, byte for byte. QtGui only: no widget, no process-wide state, safe
// on any thread.

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QRgb>
#include <QSize>
#include <QString>

namespace keying {

// The photo as it is keyed: read afresh from its file (format detected from
// the contents), then turned by `degrees` with the fast, unfiltered transform.
// A turn of 0 leaves the pixels exactly as stored. Null when it cannot be read.
QImage photoAsKeyed(const QString& path, int degrees);
// The same, read into `photo`, whose memory is reused where that gives the
// same pixels (readPhotoInto): the window reads photo after photo into its
// one foreground.
void readPhotoAsKeyed(const QString& path, int degrees, QImage& photo);
// The same for a photo file already read into memory.
void readPhotoAsKeyed(const QByteArray& file, int degrees, QImage& photo);

// The background stretched to exactly `photoSize`, aspect ratio ignored, fast
// (unfiltered) scaling. Scaling to the size it already has changes nothing;
// a null background stays null.
QImage fittedBackground(const QImage& background, const QSize& photoSize);

// The photo pixel that a click at `click` samples in a view of `viewSize`. The
// whole view (frame included) is taken to span the whole photo, whatever its
// shape; integer arithmetic, truncated toward zero.
QPoint sampledPixel(const QSize& photoSize, const QPoint& click, const QSize& viewSize);

// The key colour: the photo's 32-bit ARGB value at `pixel`.
QRgb keyColourAt(const QImage& photo, const QPoint& pixel);

// The composite: `photo` keyed against `fittedBackground` (of the photo's
// size) with the colour of the photo pixel `keyPixel`.
QImage composite(QImage photo, const QImage& fittedBackground, const QPoint& keyPixel);

// The same composite for a key colour chosen beforehand instead of sampled
// from the photo.
QImage compositeWithKey(QImage photo, const QImage& fittedBackground, QRgb key);

// The composite as the window holds it for saving: what a pixmap made from
// it gives back as an image on a 32-bit screen. Photos without transparency
// become 32-bit RGB; photos with some transparency premultiplied ARGB.
QImage savedForm(const QImage& composite);

// The image format a file name's suffix asks for ("jpg", "png", ...), lower
// case; empty when the name has no suffix.
QByteArray formatForName(const QString& path);

// Writes `image` to `path` in the format of the path's suffix (or `format`
// when given) at `quality` (-1: the writer's default). The file is written
// whole beside its target under a short temporary name and then renamed onto
// it (keying/atomicfile.h), so a failed save leaves the earlier file, or
// none, and never part of one. False on failure.
bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format = {}, int quality = -1);

// The same save, telling why it failed in `whyNot` (the writer's or the
// file's own words, as "No space left on device").
bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format, int quality, QString* whyNot);

// Why a save failed: the image writer's words, or, when `writing`, the
// file's (with the system's error number).
struct SaveFailure
{
    QString why;
    bool writing = false;
    int systemError = 0;
};

// The same save, telling why it failed in `failure`.
bool saveImageFile(const QImage& image, const QString& path, const QByteArray& format, int quality, SaveFailure* failure);

// The composite as the file "Save Image" writes: its saved form, in the
// format of the path's suffix, at the writer's default quality.
bool saveComposite(const QImage& composite, const QString& path);

} // namespace keying
