// SPDX-License-Identifier: MIT
#include "batch/wholeness.h"

#include <QList>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace batch {

namespace {

bool endsLikeJpeg(const ByteSource& photo)
{
    // Some cameras pad after the marker; a few zero bytes are allowed.
    QByteArray end = photo.at(qMax<qint64>(0, photo.size() - 4096), 4096);
    while (!end.isEmpty() && (end.endsWith('\0') || end.endsWith('\n') || end.endsWith('\r')))
        end.chop(1);
    return end.endsWith("\xFF\xD9");
}

bool endsLikePng(const ByteSource& photo)
{
    // The IEND chunk: length 0, type, and its fixed checksum.
    return photo.at(qMax<qint64>(0, photo.size() - 12), 12) == QByteArray("\x00\x00\x00\x00IEND\xAE\x42\x60\x82", 12);
}

quint32 u32le(const QByteArray& b, int at) { return qFromLittleEndian<quint32>(b.constData() + at); }
quint16 u16le(const QByteArray& b, int at) { return qFromLittleEndian<quint16>(b.constData() + at); }

// An uncompressed BMP holds its pixel rows from the header's offset on,
// each padded to 4 bytes: a file shorter than that is cut short. RLE and
// embedded JPEG or PNG pixels are judged by decoding.
bool bmpHasAllRows(const QByteArray& head, qint64 size)
{
    if (head.size() < 26)
        return false; // not even its header
    const quint32 pixelsAt = u32le(head, 10);
    const quint32 infoSize = u32le(head, 14);
    qint64 width = 0, height = 0, bits = 0, compression = 0;
    if (infoSize == 12) {
        width = u16le(head, 18);
        height = u16le(head, 20);
        bits = u16le(head, 24);
    } else if (infoSize >= 40 && head.size() >= 34) {
        width = qint32(u32le(head, 18));
        height = std::llabs(qint32(u32le(head, 22)));
        bits = u16le(head, 28);
        compression = u32le(head, 30);
    } else {
        return true;
    }
    if (compression != 0 && compression != 3 && compression != 6)
        return true;
    if (width <= 0 || bits <= 0 || bits > 64)
        return true; // damaged, not short: the decoder says so
    const qint64 rowBytes = (width * bits + 31) / 32 * 4;
    return double(pixelsAt) + double(rowBytes) * double(height) <= double(size);
}

// Reads TIFF numbers in the file's own byte order.
struct TiffReader
{
    const ByteSource& photo;
    bool little;
    quint32 u32(const QByteArray& b, int at) const
    {
        return little ? qFromLittleEndian<quint32>(b.constData() + at) : qFromBigEndian<quint32>(b.constData() + at);
    }
    quint16 u16(const QByteArray& b, int at) const
    {
        return little ? qFromLittleEndian<quint16>(b.constData() + at) : qFromBigEndian<quint16>(b.constData() + at);
    }
    // The values of a SHORT or LONG array entry; empty when they lie past the end.
    QList<quint32> values(const QByteArray& entry, bool* beyondEnd) const
    {
        const quint16 type = u16(entry, 2);
        const quint32 count = u32(entry, 4);
        const int width = type == 3 ? 2 : type == 4 ? 4 : 0;
        if (width == 0 || count == 0 || count > (1u << 20))
            return {};
        const qint64 bytes = qint64(count) * width;
        QByteArray data = bytes <= 4 ? entry.mid(8, 4) : photo.at(u32(entry, 8), bytes);
        if (data.size() < bytes) {
            *beyondEnd = true;
            return {};
        }
        QList<quint32> out;
        for (quint32 i = 0; i < count; ++i)
            out << (width == 2 ? u16(data, int(i) * 2) : u32(data, int(i) * 4));
        return out;
    }
};

int tiffTypeSize(quint16 type)
{
    switch (type) {
    case 3: case 8:
        return 2; // SHORT, SSHORT
    case 4: case 9: case 11: case 13:
        return 4; // LONG, SLONG, FLOAT, IFD
    case 5: case 10: case 12:
        return 8; // RATIONAL, SRATIONAL, DOUBLE
    default:
        return 1; // BYTE, ASCII, SBYTE, UNDEFINED, and kinds unknown
    }
}

// Every image directory of a TIFF, the values its entries point to, and the
// strips or tiles each names lie within the file; at most 64 directories are
// followed.
bool tiffHasAllData(const ByteSource& photo, bool little)
{
    const TiffReader tiff{photo, little};
    quint32 directory = tiff.u32(photo.at(4, 4), 0);
    for (int n = 0; n < 64 && directory != 0; ++n) {
        const QByteArray countBytes = photo.at(directory, 2);
        if (countBytes.size() < 2)
            return false;
        const int entries = tiff.u16(countBytes, 0);
        const QByteArray table = photo.at(qint64(directory) + 2, qint64(entries) * 12 + 4);
        if (table.size() < entries * 12 + 4)
            return false;
        QList<quint32> offsets, counts;
        bool beyondEnd = false;
        for (int i = 0; i < entries; ++i) {
            const QByteArray entry = table.mid(i * 12, 12);
            const quint16 tag = tiff.u16(entry, 0);
            // A value too large for the entry lies elsewhere in the file.
            const qint64 bytes = qint64(tiff.u32(entry, 4)) * tiffTypeSize(tiff.u16(entry, 2));
            if (bytes > 4 && qint64(tiff.u32(entry, 8)) + bytes > photo.size())
                return false;
            if (tag == 273 || tag == 324)
                offsets = tiff.values(entry, &beyondEnd);
            else if (tag == 279 || tag == 325)
                counts = tiff.values(entry, &beyondEnd);
        }
        if (beyondEnd)
            return false;
        for (int i = 0; i < std::min(offsets.size(), counts.size()); ++i) {
            if (qint64(offsets[i]) + counts[i] > photo.size())
                return false;
        }
        const quint32 next = tiff.u32(table, entries * 12);
        if (next == directory)
            break;
        directory = next;
    }
    return true;
}

} // namespace

QString cutShortIn(const ByteSource& photo)
{
    const QByteArray head = photo.at(0, 64);
    if (head.startsWith("\xFF\xD8") && !endsLikeJpeg(photo))
        return QStringLiteral("the JPEG is cut short (no end-of-image marker)");
    if (head.startsWith(QByteArray("\x89PNG\r\n\x1A\n", 8)) && !endsLikePng(photo))
        return QStringLiteral("the PNG is cut short (no end chunk)");
    if (head.startsWith("BM") && !bmpHasAllRows(head, photo.size()))
        return QStringLiteral("the BMP is cut short (its pixel rows end early)");
    const bool littleTiff = head.startsWith(QByteArray("II*\0", 4));
    if ((littleTiff || head.startsWith(QByteArray("MM\0*", 4))) && !tiffHasAllData(photo, littleTiff))
        return QStringLiteral("the TIFF is cut short (its image data ends early)");
    return QString();
}

} // namespace batch
