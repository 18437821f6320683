// SPDX-License-Identifier: MIT
#pragma once

// Listings of a folder tree, to see what a save wrote and what it left alone.

#include <QMap>
#include <QString>
#include <QStringList>

namespace testsupport {

// Every entry below `root` (hidden ones too), by path relative to it: "dir"
// for folders, size and modification time for files.
QMap<QString, QString> listTree(const QString& root);
// The relative paths whose listing differs between two listings.
QStringList changedEntries(const QMap<QString, QString>& before, const QMap<QString, QString>& after);

} // namespace testsupport
