// SPDX-License-Identifier: MIT
#include "batch/photocheck.h"

#include "batch/photofile.h"
#include "batch/wholeness.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace batch {

namespace {

// The bytes of an open file, read where asked.
class FileBytes : public ByteSource
{
public:
    FileBytes(int fd, qint64 size) : m_fd(fd), m_size(size) {}
    qint64 size() const override { return m_size; }
    QByteArray at(qint64 offset, qint64 count) const override
    {
        QByteArray bytes(int(qMax<qint64>(0, qMin(count, m_size - offset))), '\0');
        const ssize_t n = bytes.isEmpty() ? 0 : ::pread(m_fd, bytes.data(), size_t(bytes.size()), off_t(offset));
        bytes.truncate(n > 0 ? int(n) : 0);
        return bytes;
    }

private:
    int m_fd;
    qint64 m_size;
};

class MemoryBytes : public ByteSource
{
public:
    explicit MemoryBytes(const QByteArray& bytes) : m_bytes(bytes) {}
    qint64 size() const override { return m_bytes.size(); }
    QByteArray at(qint64 offset, qint64 count) const override
    {
        if (offset < 0 || offset >= m_bytes.size())
            return QByteArray();
        return m_bytes.mid(int(offset), int(qMin<qint64>(count, m_bytes.size() - offset)));
    }

private:
    const QByteArray& m_bytes;
};

// Why a reader of a non-empty file gives no image.
QString readerReason(QImageReader& reader)
{
    const QSize size = reader.size();
    if (size.isValid() && double(size.width()) * size.height() * 4 > double(QImageReader::allocationLimit()) * 1024 * 1024)
        return QStringLiteral("too large to decode (%1 x %2 pixels)").arg(size.width()).arg(size.height());
    if (!reader.canRead())
        return QStringLiteral("not an image Plendra can read");
    return QStringLiteral("cannot be decoded: ") + reader.errorString();
}

} // namespace

QString cutShortReason(const QString& path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return QString(); // judged when it is read
    struct stat info = {};
    QString reason;
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode))
        reason = cutShortIn(FileBytes(fd, info.st_size));
    ::close(fd);
    return reason;
}

QString cutShortReason(const QByteArray& photo)
{
    return cutShortIn(MemoryBytes(photo));
}

QString unreadableReason(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file");
    const QString notRegular = notRegularReason(path);
    if (!notRegular.isEmpty())
        return notRegular;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be opened: ") + file.errorString();
    if (file.size() == 0)
        return QStringLiteral("the file is empty");
    file.close();
    QImageReader reader(path);
    return readerReason(reader);
}

QString unreadableReason(const QByteArray& photo)
{
    if (photo.isEmpty())
        return QStringLiteral("the file is empty");
    QByteArray bytes = photo;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return readerReason(reader);
}

} // namespace batch
