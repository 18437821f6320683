// SPDX-License-Identifier: MIT
#include "batch/folderevents.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <unistd.h>

#ifdef Q_OS_LINUX
#include <sys/inotify.h>
#endif

namespace batch {

FolderEvents::FolderEvents(QObject* parent)
    : QObject(parent)
{
#ifdef Q_OS_LINUX
    m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0)
        return;
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &FolderEvents::readEvents);
#endif
}

FolderEvents::~FolderEvents()
{
    delete m_notifier;
    if (m_fd >= 0)
        ::close(m_fd);
}

bool FolderEvents::add(const QString& folder, QString* why)
{
#ifdef Q_OS_LINUX
    if (m_fd < 0) {
        *why = QStringLiteral("the system offers no change events");
        return false;
    }
    // No IN_MODIFY: a photo being written would wake the watch at every
    // block; the close after writing is what counts.
    const uint32_t mask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_ATTRIB | IN_DELETE | IN_MOVED_FROM
        | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    const int wd = ::inotify_add_watch(m_fd, QFile::encodeName(folder).constData(), mask);
    if (wd < 0) {
        *why = qt_error_string(errno);
        return false;
    }
    m_folders.insert(wd, folder);
    return true;
#else
    Q_UNUSED(folder);
    *why = QStringLiteral("the system offers no change events");
    return false;
#endif
}

void FolderEvents::readEvents()
{
#ifdef Q_OS_LINUX
    alignas(struct inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
        if (length <= 0)
            return; // EAGAIN: all read
        for (ssize_t at = 0; at + ssize_t(sizeof(inotify_event)) <= length;) {
            const auto* e = reinterpret_cast<const inotify_event*>(buffer + at);
            at += ssize_t(sizeof(inotify_event)) + e->len;
            if (e->mask & IN_Q_OVERFLOW) {
                emit overflowed();
                continue;
            }
            const QString folder = m_folders.value(e->wd);
            if (folder.isEmpty())
                continue;
            if (e->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) {
                if (e->mask & IN_MOVE_SELF)
                    ::inotify_rm_watch(m_fd, e->wd);
                m_folders.remove(e->wd);
                emit folderGone(folder);
                continue;
            }
            const QByteArray name = e->len > 0 ? QByteArray(e->name) : QByteArray();
            if (name.isEmpty() || (e->mask & IN_ISDIR))
                continue;
            if (e->mask & (IN_CLOSE_WRITE | IN_MOVED_TO))
                emit completed(folder, name);
            else if (e->mask & (IN_CREATE | IN_ATTRIB))
                emit touched(folder, name);
            else if (e->mask & (IN_DELETE | IN_MOVED_FROM))
                emit left(folder, name);
        }
    }
#endif
}

} // namespace batch
