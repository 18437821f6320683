// SPDX-License-Identifier: MIT
#pragma once

// Where a photo's composite goes, and the guard that keeps a composite from
// ever landing on a photo.

#include <QByteArray>
#include <QString>

namespace batch {

// The window's save target (the output folder, "/", the photo's file name);
// when `format` names another format than the photo's suffix, the photo's
// name with `format` as its suffix. "jpeg" and "jpg", "tiff" and "tif" count
// as one format.
QString outputPathFor(const QString& outputFolder, const QString& photoPath, const QByteArray& format);

// True when writing `outputPath` would replace the photo itself: the same
// file, reached through the folder or a link.
bool wouldReplacePhoto(const QString& outputPath, const QString& photoPath);

// True when `a` and `b` name the same folder.
bool sameFolder(const QString& a, const QString& b);

} // namespace batch
