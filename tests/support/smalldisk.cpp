// SPDX-License-Identifier: MIT
#include "tests/support/smalldisk.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <unistd.h>

namespace testsupport {

SmallDisk::SmallDisk(int kilobytes)
{
    if (!m_dir.isValid()) {
        m_why = QStringLiteral("no temporary folder to mount on");
        return;
    }
    if (::geteuid() != 0) {
        m_why = QStringLiteral("mounting a small file system needs root");
        return;
    }
    const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k";
    if (::mount("tmpfs", QFile::encodeName(m_dir.path()).constData(), "tmpfs", 0, options.constData()) != 0) {
        m_why = QStringLiteral("mount refused: ") + QString::fromLocal8Bit(std::strerror(errno));
        return;
    }
    m_mounted = true;
}

SmallDisk::~SmallDisk()
{
    if (m_mounted)
        ::umount(QFile::encodeName(m_dir.path()).constData());
}

} // namespace testsupport
