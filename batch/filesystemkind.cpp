// SPDX-License-Identifier: MIT
#include "batch/filesystemkind.h"

#include <QFile>

#ifdef Q_OS_LINUX
#include <sys/vfs.h>
#endif

namespace batch {

namespace {

struct Kind
{
    unsigned long magic;
    const char* name;
};

// The file systems' magic numbers, as statfs reports them.
constexpr Kind kEventless[] = {
    {0x6969, "a network file system (NFS)"},
    {0x517B, "a network file system (SMB)"},
    {0xFF534D42, "a network file system (CIFS)"},
    {0xFE534D42, "a network file system (SMB2)"},
    {0x01021997, "a network file system (9p)"},
    {0x5346414F, "a network file system (AFS)"},
    {0x6B414653, "a network file system (AFS)"},
    {0x00C36400, "a network file system (Ceph)"},
    {0x73757245, "a network file system (Coda)"},
    {0x564C, "a network file system (NCP)"},
    {0x0BD00BD0, "a network file system (Lustre)"},
    {0x47504653, "a network file system (GPFS)"},
    {0x01161970, "a cluster file system (GFS2)"},
    {0x7461636F, "a cluster file system (OCFS2)"},
    {0x65735546, "a FUSE file system"},
    {0x65735543, "a FUSE control file system"},
};

} // namespace

QString eventlessFileSystem(const QString& folder)
{
#ifdef Q_OS_LINUX
    struct statfs info = {};
    if (::statfs(QFile::encodeName(folder).constData(), &info) != 0)
        return QString();
    const auto magic = static_cast<unsigned long>(static_cast<unsigned int>(info.f_type));
    for (const Kind& kind : kEventless) {
        if (kind.magic == magic)
            return QString::fromLatin1(kind.name);
    }
    return QString();
#else
    Q_UNUSED(folder);
    return QStringLiteral("a system without change events");
#endif
}

} // namespace batch
