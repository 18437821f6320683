// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QImage>
#include <QSize>
#include <QString>

// Thumbnails made at start-up are square; those of photos added later (by the
// add buttons, drops and the watched folder) are a little wider. The lists
// draw both into their 64 x 64 icon box.
inline const QSize kStartupThumbnailSize(64, 64);
inline const QSize kAddedThumbnailSize(74, 64);

// The image file as a thumbnail stretched to exactly `size`; an empty icon when
// the file cannot be read as an image. Reads the whole file on the calling
// (GUI) thread.
QIcon thumbnailIcon(const QString& path, const QSize& size);

// The formats a pixmap on this screen keeps its pixels in: one for opaque
// pictures, one for pictures with some transparency.
struct PixmapFormats
{
    QImage::Format opaque = QImage::Format_RGB32;
    QImage::Format transparent = QImage::Format_ARGB32_Premultiplied;

    // Asks the screen; GUI thread only.
    static PixmapFormats ofThisScreen();
};

// The photo in the form a pixmap made from it would hold it. Safe on any thread.
QImage inPixmapForm(QImage photo, const PixmapFormats& formats);

// The thumbnail of an already decoded photo, pixel for pixel what
// thumbnailIcon makes of its file: the photo in pixmap form, stretched to
// exactly `size` with fast (unfiltered) scaling. Null for a null photo. Safe on
// any thread.
QImage thumbnailOf(const QImage& photo, const QSize& size, const PixmapFormats& formats);

// Reads the whole file (no reduced-size decoding) and makes its thumbnail;
// null when the file cannot be read as an image. Safe on any thread.
QImage thumbnailOfFile(const QString& path, const QSize& size, const PixmapFormats& formats);

// The same, decoding into `decodeBuffer` (keying::readPhotoInto): a worker
// that makes thumbnail after thumbnail reuses one photo's memory. The buffer
// holds the last photo afterwards (null after a file that could not be read);
// whoever keeps it keeps that much memory.
QImage thumbnailOfFile(const QString& path, const QSize& size, const PixmapFormats& formats, QImage& decodeBuffer);

// The icon a list item shows for a thumbnail made by thumbnailOf: empty for a
// null one. GUI thread only (it makes a pixmap).
QIcon iconOfThumbnail(const QImage& thumbnail);
