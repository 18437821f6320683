// SPDX-License-Identifier: MIT
#pragma once

// What a watch has keyed, kept by the tool itself in a small file in the
// output folder: one line per photo keyed, naming the photo, its identity on
// the disk and a digest of its bytes. Lines are appended and flushed to the
// disk one by one; a line cut short by a crash is recognised by its checksum
// and ignored; the file is rewritten whole (and renamed into place) when it
// holds many superseded lines. Watchers of different shares of the same
// folders each keep their own file and read the others' at start.

#include "batch/photofile.h"

#include <QHash>
#include <QString>

#include <functional>
#include <optional>

namespace batch {

struct JournalEntry
{
    PhotoIdentity identity;
    QByteArray contentHash;
    QString output;
    qint64 recordedMs = 0; // when it was keyed (milliseconds since the epoch)
};

class Journal
{
public:
    // `fileName` is this watcher's own journal in `outputFolder`; `owns`
    // tells which photos are its to keep when the file is rewritten.
    Journal(const QString& outputFolder, const QString& fileName, std::function<bool(const QString&)> owns);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Reads every journal of the output folder and opens this one for
    // appending. False, with the reason, when it cannot be opened.
    bool open(QString* why);

    std::optional<JournalEntry> entry(const QString& photo) const;
    int size() const { return int(m_entries.size()); }

    // Records a photo keyed. False, with the reason, when the disk refused
    // the line: the entry is kept and the whole journal written again with
    // the next record.
    bool record(const QString& photo, const JournalEntry& entry, QString* why);

    // The journal's file name for share `shard` of `shards`.
    static QString fileNameFor(int shard, int shards);

private:
    void readFile(const QString& path, bool own);
    bool append(const QByteArray& line, QString* why);
    bool rewrite(QString* why);
    bool fileWasRemoved() const;

    QString m_folder;
    QString m_path;
    std::function<bool(const QString&)> m_owns;
    QHash<QString, JournalEntry> m_entries;
    int m_fd = -1;
    qint64 m_lines = 0;  // lines in this watcher's file, superseded ones included
    bool m_rewriteDue = false;
};

} // namespace batch
