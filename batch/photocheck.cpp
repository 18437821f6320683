// SPDX-License-Identifier: MIT
#include "batch/photocheck.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace batch {

namespace {

// The last bytes of the file, at most `count`.
QByteArray tail(QFile& file, qint64 count)
{
    const qint64 size = file.size();
    if (!file.seek(qMax<qint64>(0, size - count)))
        return QByteArray();
    return file.read(count);
}

bool endsLikeJpeg(QFile& file)
{
    // Some cameras pad after the marker; a few zero bytes are allowed.
    QByteArray end = tail(file, 4096);
    while (!end.isEmpty() && (end.endsWith('\0') || end.endsWith('\n') || end.endsWith('\r')))
        end.chop(1);
    return end.endsWith("\xFF\xD9");
}

bool endsLikePng(QFile& file)
{
    // The IEND chunk: length 0, type, and its fixed checksum.
    return tail(file, 12) == QByteArray("\x00\x00\x00\x00IEND\xAE\x42\x60\x82", 12);
}

} // namespace

QString cutShortReason(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString(); // judged when it is read
    const QByteArray head = file.read(8);
    if (head.startsWith("\xFF\xD8") && !endsLikeJpeg(file))
        return QStringLiteral("the JPEG is cut short (no end-of-image marker)");
    if (head == QByteArray("\x89PNG\r\n\x1A\n", 8) && !endsLikePng(file))
        return QStringLiteral("the PNG is cut short (no end chunk)");
    return QString();
}

QString unreadableReason(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be opened: ") + file.errorString();
    if (file.size() == 0)
        return QStringLiteral("the file is empty");
    file.close();
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.isValid() && double(size.width()) * size.height() * 4 > double(QImageReader::allocationLimit()) * 1024 * 1024)
        return QStringLiteral("too large to decode (%1 x %2 pixels)").arg(size.width()).arg(size.height());
    if (!reader.canRead())
        return QStringLiteral("not an image Plendra can read");
    return QStringLiteral("cannot be decoded: ") + reader.errorString();
}

} // namespace batch
