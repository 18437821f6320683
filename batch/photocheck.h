// SPDX-License-Identifier: MIT
#pragma once

// Tells whether a photo file is whole before it is keyed, and why one that
// could not be read was refused. Qt decodes a JPEG cut short without an
// error (the missing rows come out grey), and a BMP or TIFF cut short with
// its missing rows black, so decoding alone cannot tell.

#include <QByteArray>
#include <QString>

namespace batch {

// Empty when the file ends as a whole photo of its kind ends (a JPEG with
// its end-of-image marker, a PNG with its end chunk, a BMP with all its pixel
// rows, a TIFF with all its image data; other kinds are judged by decoding),
// else the reason it looks cut short. Reads only the few bytes it needs, and
// never waits on a file that is not a regular one (it is judged when read).
QString cutShortReason(const QString& path);
// The same for a photo already read into memory.
QString cutShortReason(const QByteArray& photo);

// Why the picture at `path` gave no image: missing, not a regular file,
// unreadable, empty, too large to decode, or not an image.
QString unreadableReason(const QString& path);
// Why the photo read into memory gave no image: empty, too large to decode,
// or not an image.
QString unreadableReason(const QByteArray& photo);

} // namespace batch
