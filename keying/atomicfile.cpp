// SPDX-License-Identifier: MIT
#include "keying/atomicfile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace keying {

namespace {

// An hour: far longer than any writer takes between making its temporary
// file and renaming it, so an older one of another machine is a leftover.
constexpr qint64 kForeignLeftoverSeconds = 3600;

// This machine, as 8 hex digits of its host name (FNV-1a): stable, short.
QString machineTag()
{
    static const QString tag = [] {
        char host[256] = {};
        ::gethostname(host, sizeof host - 1);
        quint32 h = 2166136261u;
        for (const char* c = host; *c; ++c) {
            h ^= static_cast<unsigned char>(*c);
            h *= 16777619u;
        }
        return QStringLiteral("%1").arg(h, 8, 16, QLatin1Char('0'));
    }();
    return tag;
}

} // namespace

// ".plendra-MACHINE-PID-RANDOM.tmp": at most 40 characters.
QString temporaryName()
{
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    QString random;
    for (int i = 0; i < 6; ++i)
        random += QLatin1Char(letters[QRandomGenerator::global()->bounded(36)]);
    return QStringLiteral(".plendra-%1-%2-%3.tmp").arg(machineTag()).arg(::getpid()).arg(random);
}

namespace {

const QRegularExpression& temporaryPattern()
{
    static const QRegularExpression pattern(QStringLiteral("^\\.plendra-([0-9a-f]{8})-([0-9]{1,10})-[a-z0-9]{6}\\.tmp$"));
    return pattern;
}

bool fail(WriteFailure* failure, int error)
{
    if (failure) {
        failure->systemError = error;
        failure->why = qt_error_string(error);
    }
    return false;
}

bool writeAll(int fd, const QByteArray& bytes)
{
    const char* at = bytes.constData();
    qint64 left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, at, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (n == 0)
                errno = EIO;
            return false;
        }
        at += n;
        left -= n;
    }
    return true;
}

// The file a save replaces: the target of a symbolic link, as the earlier
// save wrote through links.
QString fileToReplace(const QString& path)
{
    const QFileInfo info(path);
    if (!info.isSymLink())
        return info.absoluteFilePath();
    return QFileInfo(info.symLinkTarget()).absoluteFilePath();
}

// Opens a temporary file in `folder`: unnamed when asked for and offered,
// else named (its path in `named`). -1 with errno set on failure.
int openTemporary(const QByteArray& folder, TemporaryFile kind, QByteArray* named)
{
#ifdef O_TMPFILE
    if (kind == TemporaryFile::UnnamedFirst) {
        const int fd = ::open(folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
        if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL))
            return fd;
    }
#else
    Q_UNUSED(kind);
#endif
    for (int attempt = 0; attempt < 100; ++attempt) {
        *named = folder + '/' + QFile::encodeName(temporaryName());
        const int fd = ::open(named->constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

// Gives the unnamed file `fd` a short temporary name in `folder`.
bool nameUnnamed(int fd, const QByteArray& folder, QByteArray* named)
{
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        *named = folder + '/' + QFile::encodeName(temporaryName());
        if (::linkat(AT_FDCWD, self.constData(), AT_FDCWD, named->constData(), AT_SYMLINK_FOLLOW) == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    named->clear();
    return false;
}

} // namespace

bool writeFileWhole(const QString& path, const QByteArray& bytes, WriteFailure* failure, TemporaryFile kind)
{
    const QString target = fileToReplace(path);
    const QByteArray targetName = QFile::encodeName(target);
    const QByteArray folder = QFile::encodeName(QFileInfo(target).absolutePath());
    struct stat earlier = {};
    const bool replacing = ::stat(targetName.constData(), &earlier) == 0;

    QByteArray named;
    const int fd = openTemporary(folder, kind, &named);
    if (fd < 0)
        return fail(failure, errno);
    const bool unnamed = named.isEmpty();
    // A replaced file keeps its permissions; a new one gets the usual ones.
    if (replacing)
        ::fchmod(fd, earlier.st_mode & 07777);
    // Written and on the disk before it takes the target's place, so that
    // the target is the whole new file or the earlier one, even after a
    // power cut. A system that cannot sync a file says so with EINVAL.
    bool ok = writeAll(fd, bytes) && (::fdatasync(fd) == 0 || errno == EINVAL);
    if (ok && unnamed)
        ok = nameUnnamed(fd, folder, &named);
    int error = ok ? 0 : errno;
    // A network file system reports some write failures only when the file
    // is closed.
    if (::close(fd) != 0 && ok) {
        ok = false;
        error = errno;
    }
    if (ok && ::rename(named.constData(), targetName.constData()) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok) {
        if (!named.isEmpty())
            ::unlink(named.constData());
        return fail(failure, error);
    }
    return true;
}

bool isTemporaryName(const QString& name)
{
    return temporaryPattern().match(name).hasMatch();
}

bool isAbandonedTemporary(const QString& name, qint64 ageSeconds)
{
    const QRegularExpressionMatch m = temporaryPattern().match(name);
    if (!m.hasMatch())
        return false;
    if (m.captured(1) != machineTag())
        return ageSeconds > kForeignLeftoverSeconds;
    bool ok = false;
    const qint64 pid = m.captured(2).toLongLong(&ok);
    if (!ok || pid <= 0 || pid > 0x7fffffff)
        return true;
    if (pid == ::getpid())
        return false;
    return ::kill(pid_t(pid), 0) != 0 && errno == ESRCH;
}

} // namespace keying
