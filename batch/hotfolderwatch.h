// SPDX-License-Identifier: MIT
#pragma once

// Hands over each photo that arrives in the watched folders once it is
// complete: its size and time unchanged over the settle time, and whole by
// its kind's end marker. A camera tool that writes under a temporary name (a
// hidden name or one without a photo suffix) and renames is seen under the
// final name only. Change notifications trigger a look at once; a steady poll
// covers file systems that send none.

#include <QDateTime>
#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>

namespace batch {

class HotFolderWatch : public QObject
{
    Q_OBJECT

public:
    // `takes` tells whether a photo path belongs to this run (its share).
    HotFolderWatch(const QStringList& folders, int settleMs, std::function<bool(const QString&)> takes,
                   QObject* parent = nullptr);

    void start();
    void stop();

signals:
    // A complete photo, once for each version of it (a photo written again
    // later is handed over again).
    void photoReady(const QString& path);
    // A photo that has settled but is not whole yet, once per version.
    void photoWaiting(const QString& path, const QString& reason);

private:
    struct Sighting
    {
        qint64 size = -1;
        QDateTime modified;
        QElapsedTimer unchangedFor;
        bool handled = false; // handed over, or reported waiting
    };

    void look();
    void lookAt(const QString& path);

    QStringList m_folders;
    int m_settleMs;
    std::function<bool(const QString&)> m_takes;
    QFileSystemWatcher m_watcher;
    QTimer m_poll;
    QHash<QString, Sighting> m_seen;
};

} // namespace batch
