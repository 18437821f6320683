// SPDX-License-Identifier: MIT
#pragma once

// A folder on a file system of a few hundred kilobytes, to see what a save
// does when the disk fills up. Only root may mount one (CI runs as root);
// elsewhere mounted() is false and why() says so, for the test's skip message.

#include <QString>
#include <QTemporaryDir>

namespace testsupport {

class SmallDisk
{
public:
    explicit SmallDisk(int kilobytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return m_mounted; }
    QString why() const { return m_why; }
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
    QString m_why;
};

} // namespace testsupport
