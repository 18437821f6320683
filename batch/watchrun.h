// SPDX-License-Identifier: MIT
#pragma once

// A watch's decisions: which photo the watch sees is keyed, and what comes of
// each. A photo is keyed unless the journal says this very file was keyed
// (same identity on the disk), or, when its identity changed but its size did
// not, unless its bytes are the ones keyed (a copy that kept its times, a
// touch): never by comparing file times with the composite's. One job at a
// time per photo; a photo changed while it was keyed is looked at again.
// Output-side failures are tried again until they succeed; a photo refused
// for a reason of its own (cut short, not an image) waits until it changes.

#include "batch/batchrun.h"
#include "batch/hotfolderwatch.h"
#include "batch/journal.h"
#include "batch/outputretry.h"
#include "batch/report.h"

#include <QHash>
#include <QObject>
#include <QSet>

namespace batch {

class WatchRun : public QObject
{
    Q_OBJECT

public:
    WatchRun(HotFolderWatch& watch, BatchRun& run, Journal& journal, Reporter& reporter, const QString& outputFolder,
             QObject* parent = nullptr);

    void start();
    // No photo is taken or tried again any more.
    void stop();

private:
    enum class Look {
        AtStart,  // there when the watch started
        Arrived,  // made or touched: perhaps still being written
        Complete, // closed after writing, moved in, settled, or due for another try
        Recheck,  // changed while it was keyed: its content is compared again
    };

    void look(const QString& path, Look how);
    bool isReady(const QString& path, const PhotoIdentity& id, Look how);
    void submit(const QString& path, const QByteArray& keyedHash);
    void finished(const PhotoResult& result);
    void record(const PhotoResult& result);
    void forgetPhoto(const QString& path);

    HotFolderWatch& m_watch;
    BatchRun& m_run;
    Journal& m_journal;
    Reporter& m_reporter;
    OutputRetry m_retry;
    QSet<QString> m_inFlight;
    QSet<QString> m_changedWhileKeyed;
    QHash<QString, PhotoIdentity> m_refused; // the version of a photo refused, until it changes
    bool m_starting = false;
    bool m_stopped = false;
};

} // namespace batch
