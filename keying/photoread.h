// SPDX-License-Identifier: MIT
#pragma once

// Reading photos with as little waiting for memory as can be. A fresh
// 24-megapixel picture is about 90 MB that the system hands over page by page,
// zeroed, which on some machines takes longer than decoding the JPEG. So a
// JPEG or PNG of the same size and format as the picture before it is decoded
// into that picture's pixels, and a large one into fresh memory is decoded
// into memory asked for in large pages. The result is exactly what reading
// the file with QImage gives.

#include <QImage>
#include <QString>

namespace keying {

// Makes `photo` the picture in the file at `path` (format detected from the
// contents), as QImage::load would; null when the file cannot be read. Its
// earlier pixels are reused where that gives the same result: only decoders
// that write every pixel or fail (JPEG, PNG), and only memory nobody else
// shares. Returns whether the file was read. Safe on any thread.
bool readPhotoInto(const QString& path, QImage& photo);

// The same for a photo file already read into memory (format detected from
// the contents), so that the bytes decoded are the bytes read once.
bool readPhotoInto(const QByteArray& file, QImage& photo);

// The picture in the file, as QImage(path) gives it, in fresh memory of the
// kind readPhotoInto makes. Safe on any thread.
QImage readPhoto(const QString& path);

} // namespace keying
