// SPDX-License-Identifier: MIT
#pragma once

// Listings of a folder tree, to see what a save wrote and what it left alone.

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

namespace testsupport {

// The keys whose values differ between two maps (a key in one map only
// counts), sorted.
template <typename Value>
QStringList differingKeys(const QMap<QString, Value>& before, const QMap<QString, Value>& after)
{
    QSet<QString> keys;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        keys.insert(it.key());
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        keys.insert(it.key());
    QStringList differing;
    for (const QString& key : std::as_const(keys)) {
        if (before.value(key) != after.value(key))
            differing << key;
    }
    differing.sort();
    return differing;
}

// Every entry below `root` (hidden ones too), by path relative to it: "dir"
// for folders, size and modification time for files.
QMap<QString, QString> listTree(const QString& root);
// The relative paths whose listing differs between two listings.
QStringList changedEntries(const QMap<QString, QString>& before, const QMap<QString, QString>& after);

} // namespace testsupport
