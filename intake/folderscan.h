// SPDX-License-Identifier: MIT
#pragma once

// The folder listings the lists are filled from: the "Bkg" library at start
// and the watched folder. Only files are read; nothing is written.

#include <QString>
#include <QStringList>

// The pictures of the "Bkg" folder under `appDir`, as full paths, in name
// order without regard to letter case. Empty when the folder is missing.
QStringList backgroundLibraryPaths(const QString& appDir);

// The photos of the watched folder as `folder` + separator + name, oldest
// first (so the newest ends up last). Sub-folders and hidden files are not
// listed, names are matched without regard to letter case.
QStringList watchedFolderPhotosOldestFirst(const QString& folder);

// The name of the most recently modified photo of the watched folder, or an
// empty string when it holds none.
QString newestWatchedFolderPhoto(const QString& folder);
