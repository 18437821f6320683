// SPDX-License-Identifier: MIT
#pragma once

// A folder's entries as the file system names them: raw bytes and inode
// numbers from one directory read, nothing opened and nothing stat-ed, so
// that looking at a folder of 20,000 photos costs one directory read.

#include <QByteArray>
#include <QList>
#include <QString>

namespace batch {

struct FolderEntry
{
    QByteArray name; // as the file system has it
    quint64 inode = 0;
};

// The entries of `folder` whose names look like photos (a photo suffix, not
// hidden). False, with errno's value in `error`, when it cannot be read.
bool scanPhotoEntries(const QString& folder, QList<FolderEntry>* entries, int* error = nullptr);

// True for a name with a photo suffix that is not hidden.
bool looksLikePhotoName(const QByteArray& name);

// True when Qt can open a file of that name: Qt takes file names as UTF-8,
// and a name that is not valid UTF-8 does not come back the same.
bool qtCanAddress(const QByteArray& name);

// The name for a message: as UTF-8 where it is, other bytes as \xNN.
QString printableName(const QByteArray& name);

// The line that says why a photo of such a name is not keyed.
QString unaddressableProblem(const QString& folder, const QByteArray& name);

} // namespace batch
