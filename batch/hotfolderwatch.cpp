// SPDX-License-Identifier: MIT
#include "batch/hotfolderwatch.h"

#include "batch/photocheck.h"
#include "batch/photolist.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace batch {

HotFolderWatch::HotFolderWatch(const QStringList& folders, int settleMs, std::function<bool(const QString&)> takes,
                               QObject* parent)
    : QObject(parent), m_folders(folders), m_settleMs(settleMs), m_takes(std::move(takes))
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &HotFolderWatch::look);
    connect(&m_poll, &QTimer::timeout, this, &HotFolderWatch::look);
    // Often enough that a photo is taken soon after it settles, seldom
    // enough that a listing costs nothing.
    m_poll.setInterval(std::clamp(settleMs / 4, 50, 500));
}

void HotFolderWatch::start()
{
    m_watcher.addPaths(m_folders);
    m_poll.start();
    look();
}

void HotFolderWatch::stop()
{
    m_poll.stop();
    m_watcher.disconnect(this);
}

void HotFolderWatch::look()
{
    QSet<QString> present;
    for (const QString& folder : std::as_const(m_folders)) {
        for (const QString& path : photosOfFolder(folder)) {
            if (!m_takes(path))
                continue;
            present.insert(path);
            lookAt(path);
        }
    }
    // A photo that went away is forgotten; should it come back, it is new.
    for (auto it = m_seen.begin(); it != m_seen.end();) {
        if (present.contains(it.key()))
            ++it;
        else
            it = m_seen.erase(it);
    }
}

void HotFolderWatch::lookAt(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return;
    Sighting& s = m_seen[path];
    if (s.size != info.size() || s.modified != info.lastModified()) {
        // New, or still being written: wait for it to stay still.
        s.size = info.size();
        s.modified = info.lastModified();
        s.unchangedFor.start();
        s.handled = false;
        return;
    }
    if (s.handled || s.unchangedFor.elapsed() < m_settleMs)
        return;
    s.handled = true;
    if (s.size == 0) {
        emit photoWaiting(path, QStringLiteral("the file is empty"));
        return;
    }
    const QString cutShort = cutShortReason(path);
    if (!cutShort.isEmpty()) {
        emit photoWaiting(path, cutShort);
        return;
    }
    emit photoReady(path);
}

} // namespace batch
