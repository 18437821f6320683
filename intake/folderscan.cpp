// SPDX-License-Identifier: MIT
#include "intake/folderscan.h"

#include "intake/imagetypes.h"

#include <QDir>

namespace {

// The photo files of `folder`, newest first (or oldest first with Reversed).
QStringList watchedFolderListing(const QString& folder, QDir::SortFlags extra = {})
{
    QDir dir(folder);
    dir.setNameFilters(kWatchedFolderNameFilters);
    dir.setFilter(QDir::Files);
    dir.setSorting(QDir::Time | extra);
    return dir.entryList();
}

} // namespace

QStringList backgroundLibraryPaths(const QString& appDir)
{
    // The folder's default entry filter and order: names in any letter case,
    // sorted by name ignoring case.
    QDir backgrounds(appDir + QDir::separator() + QStringLiteral("Bkg"));
    backgrounds.setNameFilters(kBackgroundLibraryNameFilters);
    QStringList paths;
    for (const QString& name : backgrounds.entryList())
        paths << backgrounds.absolutePath() + QDir::separator() + name;
    return paths;
}

QStringList watchedFolderPhotosOldestFirst(const QString& folder)
{
    // The folder exactly as given: with an empty one, paths start at the root.
    QStringList paths;
    for (const QString& name : watchedFolderListing(folder, QDir::Reversed))
        paths << folder + QDir::separator() + name;
    return paths;
}

QString newestWatchedFolderPhoto(const QString& folder)
{
    const QStringList names = watchedFolderListing(folder);
    return names.isEmpty() ? QString() : names.first();
}
