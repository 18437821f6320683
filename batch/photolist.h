// SPDX-License-Identifier: MIT
#pragma once

// Which photos a run takes: the files named and the photos of the folders
// named, and the share of them one machine takes.

#include <QString>
#include <QStringList>

namespace batch {

// True for a file name with one of the photo suffixes the window's "Add"
// dialog offers, in any letter case.
bool isPhotoName(const QString& name);

// The photos directly inside `folder` (sub-folders are not entered, hidden
// files not listed; FIFOs and the like named as photos are, to be refused
// by name), as full paths in a stable order: by name ignoring letter
// case, ties broken by exact name.
QStringList photosOfFolder(const QString& folder);

// A line for each photo of `folder` whose name Qt cannot open (not UTF-8).
QStringList unaddressablePhotos(const QString& folder);

struct GatheredPhotos
{
    QStringList photos;   // files named and folder photos, in the order given
    QStringList folders;  // the folders named
    QStringList problems; // "path: reason" for names that are neither
};

GatheredPhotos gatherPhotos(const QStringList& inputs);

// Share `shard` (1-based) of `shards` of a fixed list: every shards-th photo
// from the shard-th on, so shares differ by one photo at most.
QStringList shareOf(const QStringList& photos, int shard, int shards);

// For photos arriving in a watched folder, whose place in a listing is not
// known beforehand: the share is picked by a hash of the file name, the same
// on every machine and at every start.
bool inShareByName(const QString& photo, int shard, int shards);

} // namespace batch
