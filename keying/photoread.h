// SPDX-License-Identifier: MIT
#pragma once

// Reading a photo into memory that already holds one. A fresh 24-megapixel
// picture is about 90 MB the system hands over page by page, zeroed, which on
// some machines takes most of a decode's time; a JPEG or PNG of the same size
// and format as the picture before it is decoded into that picture's pixels
// instead. The result is exactly what reading the file afresh gives.

#include <QImage>
#include <QString>

namespace keying {

// Makes `photo` the picture in the file at `path` (format detected from the
// contents), as QImage::load would; null when the file cannot be read. Its
// earlier pixels are reused where that gives the same result: only decoders
// that write every pixel or fail (JPEG, PNG), and only memory nobody else
// shares. Returns whether the file was read. Safe on any thread.
bool readPhotoInto(const QString& path, QImage& photo);

} // namespace keying
