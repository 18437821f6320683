// SPDX-License-Identifier: MIT
#pragma once

// Writing a file whole or not at all: the bytes go into a temporary file in
// the target's folder, are flushed to the disk, and the temporary file is
// renamed onto the target. The temporary name is short whatever the target's
// name (a photo may have a 250-byte name, and the file system allows 255), and
// says which machine and process made it, so that a later run can tell a
// leftover of a killed writer from a file another writer is still filling.

#include <QByteArray>
#include <QString>

namespace keying {

// How the temporary file is made. Unnamed first: on Linux a local file
// system gives a file without a name (nothing is left if the writer is
// killed), given its short name only once it is whole; where that is not
// offered (network and FUSE file systems) a named one is used.
enum class TemporaryFile { UnnamedFirst, NamedOnly };

struct WriteFailure
{
    QString why;         // the system's words, as "No space left on device"
    int systemError = 0; // the errno behind it
};

// Replaces (or makes) the file at `path` with `bytes`. A symbolic link is
// written through, and a file that existed keeps its permissions. On
// failure the earlier file, or none, is left, and no temporary file.
bool writeFileWhole(const QString& path, const QByteArray& bytes, WriteFailure* failure = nullptr,
                    TemporaryFile kind = TemporaryFile::UnnamedFirst);

// A fresh name for a temporary file of this process:
// ".plendra-MACHINE-PID-RANDOM.tmp", at most 40 characters.
QString temporaryName();

// True for a name writeFileWhole gives its temporary files.
bool isTemporaryName(const QString& name);

// True when a temporary file of that name was left by a writer that can no
// longer finish it: a process of this machine that has ended. Files of other
// machines are judged by `ageSeconds` (how long ago the file last changed):
// a writer renames its file within seconds of writing it.
bool isAbandonedTemporary(const QString& name, qint64 ageSeconds);

} // namespace keying
