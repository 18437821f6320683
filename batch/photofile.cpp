// SPDX-License-Identifier: MIT
#include "batch/photofile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QImageReader>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace batch {

namespace {

PhotoIdentity identityFrom(const struct stat& s)
{
    PhotoIdentity id;
    id.device = quint64(s.st_dev);
    id.inode = quint64(s.st_ino);
    id.size = qint64(s.st_size);
    id.modifiedNs = qint64(s.st_mtim.tv_sec) * 1000000000 + s.st_mtim.tv_nsec;
    id.changedNs = qint64(s.st_ctim.tv_sec) * 1000000000 + s.st_ctim.tv_nsec;
    return id;
}

QString kindName(mode_t mode)
{
    if (S_ISFIFO(mode))
        return QStringLiteral("a FIFO");
    if (S_ISSOCK(mode))
        return QStringLiteral("a socket");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("a device");
    if (S_ISDIR(mode))
        return QStringLiteral("a folder");
    return QStringLiteral("not a plain file");
}

QString systemReason(int error)
{
    return error == ENOENT ? QStringLiteral("no such file") : QStringLiteral("cannot be opened: ") + qt_error_string(error);
}

} // namespace

QString notRegularReason(const QString& path, PhotoIdentity* identity)
{
    struct stat s = {};
    if (::stat(QFile::encodeName(path).constData(), &s) != 0)
        return systemReason(errno);
    if (identity)
        *identity = identityFrom(s);
    if (!S_ISREG(s.st_mode))
        return QStringLiteral("not a regular file (%1): only photo files are read").arg(kindName(s.st_mode));
    return QString();
}

PhotoFile readPhotoFile(const QString& path)
{
    PhotoFile photo;
    // Without waiting: should a FIFO have taken the photo's place since it
    // was looked at, the open returns at once and fstat tells.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        photo.gone = errno == ENOENT;
        photo.error = photo.gone ? QStringLiteral("the photo is gone (deleted or moved after it was listed)")
                                 : systemReason(errno);
        return photo;
    }
    struct stat s = {};
    if (::fstat(fd, &s) != 0 || !S_ISREG(s.st_mode)) {
        photo.error = QStringLiteral("not a regular file (%1): only photo files are read").arg(kindName(s.st_mode));
        ::close(fd);
        return photo;
    }
    photo.identity = identityFrom(s);
    // No photo the reader may decode is larger as a file than its pixels.
    const qint64 limit = qint64(QImageReader::allocationLimit()) * 1024 * 1024;
    if (limit > 0 && s.st_size > limit) {
        photo.error = QStringLiteral("too large to read (%1 MB)").arg(s.st_size / (1024 * 1024));
        ::close(fd);
        return photo;
    }
    photo.bytes.resize(qsizetype(s.st_size));
    qint64 done = 0;
    while (done < photo.bytes.size()) {
        const ssize_t n = ::read(fd, photo.bytes.data() + done, size_t(photo.bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            photo.error = QStringLiteral("cannot be read: ") + qt_error_string(errno);
            break;
        }
        if (n == 0)
            break; // shorter than it was a moment ago: what is there is judged
        done += n;
    }
    photo.bytes.truncate(qsizetype(done));
    ::close(fd);
    return photo;
}

QByteArray contentHash(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
}

} // namespace batch
