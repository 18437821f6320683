// SPDX-License-Identifier: MIT
#pragma once

// A photo file as the tool takes it: only a regular file (a FIFO, socket or
// device named like a photo would hold a reader for ever), checked without
// opening it and opened without waiting; read once, so that what is keyed,
// what is checked for being whole and what is recorded as done are the same
// bytes; and known by its identity on the disk.

#include <QByteArray>
#include <QString>

namespace batch {

// The file as the disk knows it. A photo replaced under its name (a copy,
// a second camera, a restore) has another inode, size or change time, even
// when its modification time was set back. The device number is kept but not
// compared: it changes each time a network share is mounted again, while the
// file on it stays the same.
struct PhotoIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = -1;
    qint64 modifiedNs = 0;
    qint64 changedNs = 0;

    bool isValid() const { return size >= 0; }
    bool operator==(const PhotoIdentity& o) const
    {
        return inode == o.inode && size == o.size && modifiedNs == o.modifiedNs && changedNs == o.changedNs;
    }
    bool operator!=(const PhotoIdentity& o) const { return !(*this == o); }
};

// Empty when `path` names a regular file (links followed), else why it is
// not taken as a photo. Looks without opening. `identity` gets the file's.
QString notRegularReason(const QString& path, PhotoIdentity* identity = nullptr);

struct PhotoFile
{
    QByteArray bytes;
    PhotoIdentity identity; // of the file the bytes were read from
    QString error;          // empty when read
    bool gone = false;      // no such file (deleted or moved after it was seen)
};

// Reads the whole photo file into memory.
PhotoFile readPhotoFile(const QString& path);

// A digest of a photo's bytes, to tell a photo whose identity changed but
// whose content did not (a copy that kept its times, a touch) from a new one.
QByteArray contentHash(const QByteArray& bytes);

} // namespace batch
