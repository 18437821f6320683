// SPDX-License-Identifier: MIT
#pragma once

// Tells which photos of the watched folders are worth a look, and when.
// Where the kernel sends change events (inotify, on local file systems), a
// photo is seen the moment it is closed after writing or moved in, and
// nothing runs while nothing happens. Where it may not (network and FUSE
// file systems, other systems, or when asked), the folder is read every so
// often and a photo is seen once it has stayed unchanged for the settle
// time; each read costs one directory read, and photos already there are
// looked at a few per read, in turn, to catch one rewritten in place.
// A camera tool that writes under a temporary name (a hidden name or one
// without a photo suffix) and renames is seen under the final name only.

#include "batch/folderevents.h"
#include "batch/folderscan.h"
#include "batch/settletracker.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <functional>

namespace batch {

class HotFolderWatch : public QObject
{
    Q_OBJECT

public:
    // `takes` tells whether a photo path belongs to this run (its share).
    // `poll` polls every folder, events or not.
    HotFolderWatch(const QStringList& folders, int settleMs, bool poll, std::function<bool(const QString&)> takes,
                   QObject* parent = nullptr);

    void start();
    void stop();
    // Keeps an eye on a photo that is not whole yet, for writers that keep
    // it open: it is seen again, complete, once it has stayed unchanged for
    // the settle time.
    void follow(const QString& path);
    void forget(const QString& path);

signals:
    // `complete`: closed after writing, moved in, or unchanged for the settle
    // time. Otherwise it was made or touched (perhaps still being written),
    // or was there when the watch started.
    void photoSeen(const QString& path, bool complete);
    // A photo deleted or moved away (seen where events arrive).
    void photoLeft(const QString& path);
    // A line for the operator: how a folder is watched, a folder gone or
    // back, a photo that cannot be keyed under its name.
    void notice(const QString& text);

private:
    struct Folder
    {
        QString path;
        bool polled = false;
        bool present = true;
        QHash<QByteArray, quint64> names; // polled folders: name -> inode
        QList<QByteArray> turn;           // polled folders: the order photos are looked at in
        int nextInTurn = 0;
    };

    void watchFolder(Folder& folder, bool announce);
    bool scan(const Folder& folder, QList<FolderEntry>* entries);
    void seeAll(Folder& folder);
    void seeName(const Folder& folder, const QByteArray& name, bool complete);
    void followName(const Folder& folder, const QByteArray& name, qint64 lingerMs);
    // The photo's path when it is one this run takes; empty otherwise.
    QString photoPath(const Folder& folder, const QByteArray& name);
    void poll(Folder& folder);
    void tick();
    void folderGone(const QString& path);
    void updateTimer();
    Folder* folderAt(const QString& path);

    QList<Folder> m_folders;
    int m_settleMs;
    bool m_forcePoll;
    std::function<bool(const QString&)> m_takes;
    FolderEvents m_events;
    SettleTracker m_tracker;
    QTimer m_tick;
    QSet<QByteArray> m_unaddressable; // folder + '/' + name, told once
    bool m_stopped = false;
};

} // namespace batch
