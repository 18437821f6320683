// SPDX-License-Identifier: MIT
#pragma once

// Where a photo's composite goes, and the guard that keeps a composite from
// ever landing on a photo.

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace batch {

// The window's save target (the output folder, "/", the photo's file name);
// when `format` names another format than the photo's suffix, the photo's
// name with `format` as its suffix. "jpeg" and "jpg", "tiff" and "tif" count
// as one format.
QString outputPathFor(const QString& outputFolder, const QString& photoPath, const QByteArray& format);

// Every composite of a photo: with one background (or none, for a cut-out)
// the one path outputPathFor gives; with several, one per background, named
// PHOTO_BACKGROUND.EXT (the photo's and the background's base names joined by
// an underscore, the suffix outputPathFor gives).
QStringList outputPathsFor(const QString& outputFolder, const QString& photoPath, const QByteArray& format,
                           const QStringList& backgroundNames);

// True when writing `outputPath` would replace the photo itself: the same
// file, reached through the folder or a link.
bool wouldReplacePhoto(const QString& outputPath, const QString& photoPath);

// True when `a` and `b` name the same folder.
bool sameFolder(const QString& a, const QString& b);

} // namespace batch
