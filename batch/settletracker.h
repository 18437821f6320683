// SPDX-License-Identifier: MIT
#pragma once

// Photos looked at again and again until they have stayed unchanged for the
// settle time: those that arrive where no event says when they are closed
// (a folder that is polled, a writer that keeps its file open), and those
// found not whole yet. Only the photos followed are looked at, however many
// the folder holds.

#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QStringList>

namespace batch {

class SettleTracker
{
public:
    explicit SettleTracker(int settleMs) : m_settleMs(settleMs) {}

    // Follows `path` from now on; after it has settled, for `lingerMs` more,
    // so that a writer that reopens it is seen too.
    void follow(const QString& path, qint64 lingerMs = 0);
    void forget(const QString& path);
    bool isEmpty() const { return m_paths.isEmpty(); }

    // Looks at each photo followed once; returns those that have just stayed
    // unchanged for the settle time (once for each version of a photo).
    // Photos gone are forgotten.
    QStringList settled();

private:
    struct Followed
    {
        qint64 size = -1;
        qint64 modifiedNs = 0;
        qint64 changedNs = 0;
        QElapsedTimer unchangedFor;
        qint64 lingerMs = 0;
        bool told = false;
    };

    int m_settleMs;
    QHash<QString, Followed> m_paths;
};

} // namespace batch
