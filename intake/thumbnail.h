// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QSize>
#include <QString>

// Thumbnails made at start-up are square; those of photos added later (by the
// add buttons, drops and the watched folder) are a little wider. The lists
// draw both into their 64 x 64 icon box.
inline const QSize kStartupThumbnailSize(64, 64);
inline const QSize kAddedThumbnailSize(74, 64);

// The image file as a thumbnail stretched to exactly `size`; an empty icon when
// the file cannot be read as an image.
QIcon thumbnailIcon(const QString& path, const QSize& size);
