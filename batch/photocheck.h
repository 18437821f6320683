// SPDX-License-Identifier: MIT
#pragma once

// Tells whether a photo file is whole before it is keyed, and why one that
// could not be read was refused. Qt decodes a JPEG cut short without an
// error (the missing rows come out grey), so decoding alone cannot tell.

#include <QString>

namespace batch {

// Empty when the file ends as a whole photo of its kind ends (a JPEG with
// its end-of-image marker, a PNG with its end chunk; other kinds are judged
// by decoding), else the reason it looks cut short.
QString cutShortReason(const QString& path);

// Why the picture at `path` gave no image: missing, unreadable, empty, too
// large to decode, or not an image.
QString unreadableReason(const QString& path);

} // namespace batch
