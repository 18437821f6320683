// SPDX-License-Identifier: MIT
#include "batch/photolist.h"

#include "batch/folderscan.h"
#include "intake/imagetypes.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace batch {

bool isPhotoName(const QString& name)
{
    const QString suffix = QFileInfo(name).suffix().toLower();
    for (const QString& filter : kWatchedFolderNameFilters) {
        if (filter.mid(2) == suffix) // "*.jpg" -> "jpg"
            return true;
    }
    return false;
}

QStringList photosOfFolder(const QString& folder)
{
    QDir dir(folder);
    // FIFOs, sockets and devices named like photos are listed too, so that
    // each is named with the reason it is not read.
    dir.setFilter(QDir::Files | QDir::System);
    dir.setNameFilters(kWatchedFolderNameFilters); // case-insensitive by default
    QStringList names = dir.entryList();
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });
    QStringList paths;
    for (const QString& name : names)
        paths << dir.filePath(name);
    return paths;
}

QStringList unaddressablePhotos(const QString& folder)
{
    QStringList problems;
    QList<FolderEntry> entries;
    scanPhotoEntries(folder, &entries);
    for (const FolderEntry& e : std::as_const(entries)) {
        if (!qtCanAddress(e.name))
            problems << unaddressableProblem(folder, e.name);
    }
    return problems;
}

GatheredPhotos gatherPhotos(const QStringList& inputs)
{
    GatheredPhotos out;
    for (const QString& input : inputs) {
        const QFileInfo info(input);
        if (info.isDir()) {
            out.folders << input;
            out.photos << photosOfFolder(input);
        } else if (!info.exists()) {
            out.problems << input + QStringLiteral(": no such photo or folder");
        } else if (!isPhotoName(input)) {
            out.problems << input + QStringLiteral(": not a photo type (jpeg, jpg, tiff, tif, bmp, png, xpm)");
        } else {
            out.photos << input;
        }
    }
    return out;
}

QStringList shareOf(const QStringList& photos, int shard, int shards)
{
    QStringList share;
    for (int i = shard - 1; i < photos.size(); i += shards)
        share << photos[i];
    return share;
}

bool inShareByName(const QString& photo, int shard, int shards)
{
    // FNV-1a over the UTF-8 name: fixed, unlike Qt's seeded hashes.
    quint32 h = 2166136261u;
    for (const char c : QFileInfo(photo).fileName().toUtf8()) {
        h ^= static_cast<unsigned char>(c);
        h *= 16777619u;
    }
    return int(h % quint32(shards)) == shard - 1;
}

} // namespace batch
