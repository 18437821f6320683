// SPDX-License-Identifier: MIT
#include "keying/photoread.h"

#include <QBuffer>
#include <QImageReader>

#include <limits>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

namespace keying {

namespace {

#ifdef Q_OS_LINUX
struct Mapping
{
    void* start;
    size_t length;
};

void unmap(void* info)
{
    auto* mapping = static_cast<Mapping*>(info);
    munmap(mapping->start, mapping->length);
    delete mapping;
}
#endif

// Memory for a picture of `size` in `format` that the system hands over in
// large pages where it can: page by page, the pixels of a 24-megapixel photo
// take the system longer to supply than the JPEG takes to decode. Null where
// that is not to be had (or the picture is over the reader's size limit,
// which the reader then reports as always).
QImage pictureInLargePages(const QSize& size, QImage::Format format)
{
#ifdef Q_OS_LINUX
    const int depth = QImage::toPixelFormat(format).bitsPerPixel();
    if (size.isEmpty() || depth <= 0 || format == QImage::Format_Invalid)
        return QImage();
    // Rows start on 32-bit boundaries, as in every picture Qt allocates.
    const qint64 bytesPerLine = (qint64(size.width()) * depth + 31) / 32 * 4;
    const qint64 bytes = bytesPerLine * size.height();
    const qint64 limit = qint64(QImageReader::allocationLimit()) * 1024 * 1024;
    constexpr qint64 kWorthIt = 4 * 1024 * 1024; // smaller pictures come fast enough
    if (bytes < kWorthIt || (limit > 0 && bytes > limit) || bytesPerLine > std::numeric_limits<int>::max())
        return QImage();
    void* start = mmap(nullptr, size_t(bytes), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED)
        return QImage();
    madvise(start, size_t(bytes), MADV_HUGEPAGE); // only a wish: small pages otherwise
    QImage picture(static_cast<uchar*>(start), size.width(), size.height(), qsizetype(bytesPerLine), format, unmap,
                   new Mapping{start, size_t(bytes)});
    return picture;
#else
    Q_UNUSED(size);
    Q_UNUSED(format);
    return QImage();
#endif
}

bool readInto(QImageReader& reader, QImage& photo)
{
    const QByteArray kind = reader.format();
    // Both decoders write every pixel of the picture or report failure: a
    // JPEG cut short still gets all its rows (grey ones past the end), a PNG
    // cut short does not read at all, so nothing of the earlier picture can
    // show. Other decoders may leave rows of a damaged file as they found
    // them. Memory that another image shares would be copied before it is
    // written: fresh memory costs less.
    const bool fillsEveryPixel = kind == "jpeg" || kind == "png";
    if (!fillsEveryPixel || !photo.isDetached())
        photo = QImage();
    if (fillsEveryPixel) {
        const QSize size = reader.size();
        const QImage::Format format = reader.imageFormat();
        if (photo.size() != size || photo.format() != format)
            photo = pictureInLargePages(size, format);
    }
    if (!reader.read(&photo)) {
        photo = QImage();
        return false;
    }
    return true;
}

} // namespace

bool readPhotoInto(const QString& path, QImage& photo)
{
    QImageReader reader(path);
    return readInto(reader, photo);
}

bool readPhotoInto(const QByteArray& file, QImage& photo)
{
    QBuffer buffer;
    buffer.setData(file);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return readInto(reader, photo);
}

QImage readPhoto(const QString& path)
{
    QImage photo;
    readPhotoInto(path, photo);
    return photo;
}

} // namespace keying
