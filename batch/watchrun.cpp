// SPDX-License-Identifier: MIT
#include "batch/watchrun.h"

#include "batch/photocheck.h"
#include "batch/photofile.h"

namespace batch {

WatchRun::WatchRun(HotFolderWatch& watch, BatchRun& run, Journal& journal, Reporter& reporter,
                   const QString& outputFolder, QObject* parent)
    : QObject(parent), m_watch(watch), m_run(run), m_journal(journal), m_reporter(reporter), m_retry(outputFolder)
{
    connect(&m_watch, &HotFolderWatch::photoSeen, this, [this](const QString& path, bool complete) {
        look(path, m_starting ? Look::AtStart : complete ? Look::Complete : Look::Arrived);
    });
    connect(&m_watch, &HotFolderWatch::photoLeft, this, &WatchRun::forgetPhoto);
    connect(&m_watch, &HotFolderWatch::notice, this, [this](const QString& text) { m_reporter.notice(text, QStringLiteral("watch")); });
    connect(&m_run, &BatchRun::photoFinished, this, &WatchRun::finished);
    connect(&m_retry, &OutputRetry::retryDue, this, [this](const QString& path) { look(path, Look::Complete); });
    connect(&m_retry, &OutputRetry::outputFolderMade, this, [this](const QString& folder) {
        m_reporter.notice(QStringLiteral("the output folder %1 was gone: made it again").arg(folder),
                          QStringLiteral("outputFolderMade"));
    });
}

void WatchRun::start()
{
    // The photos already there are seen while the watch starts.
    m_starting = true;
    m_watch.start();
    m_starting = false;
}

void WatchRun::stop()
{
    m_stopped = true;
}

void WatchRun::look(const QString& path, Look how)
{
    if (m_stopped)
        return;
    if (m_inFlight.contains(path)) {
        m_changedWhileKeyed.insert(path);
        return;
    }
    if (m_retry.isWaiting(path))
        return; // its next try is due later
    PhotoIdentity id;
    const QString notRegular = notRegularReason(path, &id);
    if (!id.isValid()) {
        forgetPhoto(path); // gone
        return;
    }
    if (!notRegular.isEmpty()) {
        if (m_refused.value(path) != id) {
            m_refused.insert(path, id);
            PhotoResult refused;
            refused.photo = path;
            refused.error = notRegular;
            m_reporter.addToTotal(1);
            m_reporter.photoDone(refused);
        }
        return;
    }
    if (!isReady(path, id, how))
        return;
    const std::optional<JournalEntry> entry = m_journal.entry(path);
    submit(path, entry ? entry->contentHash : QByteArray());
}

// Whether the photo is to be keyed now: not keyed as it is, not refused as
// it is, and whole.
bool WatchRun::isReady(const QString& path, const PhotoIdentity& id, Look how)
{
    const std::optional<JournalEntry> entry = m_journal.entry(path);
    if (how != Look::Recheck && entry && entry->identity == id) {
        m_watch.forget(path);
        if (how == Look::AtStart) {
            PhotoResult done;
            done.photo = path;
            done.output = entry->output;
            done.skipped = true;
            m_reporter.addToTotal(1);
            m_reporter.photoDone(done);
        }
        return false;
    }
    if (how != Look::Recheck && m_refused.value(path) == id)
        return false; // looked at again when it changes
    const QString notWhole = id.size == 0 ? QStringLiteral("the file is empty") : cutShortReason(path);
    if (notWhole.isEmpty())
        return true;
    // Seen again once it has stayed unchanged for the settle time; told only
    // once it was closed, or has settled, and still is not whole.
    m_watch.follow(path);
    if (how == Look::Complete || how == Look::Recheck) {
        m_refused.insert(path, id);
        m_reporter.waiting(path, notWhole);
    }
    return false;
}

void WatchRun::submit(const QString& path, const QByteArray& keyedHash)
{
    m_refused.remove(path);
    m_watch.forget(path);
    m_inFlight.insert(path);
    m_reporter.addToTotal(1);
    m_run.submit(path, keyedHash);
}

void WatchRun::finished(const PhotoResult& r)
{
    m_inFlight.remove(r.photo);
    if (r.skipped) {
        record(r); // the same content under a new identity: nothing to key
    } else if (r.error.isEmpty()) {
        const int failedTries = m_retry.attempts(r.photo);
        m_retry.forget(r.photo);
        record(r);
        if (failedTries > 0)
            m_reporter.recovered(r, failedTries + 1);
        else
            m_reporter.photoDone(r);
    } else if (r.outputSide && !m_stopped) {
        m_retry.remakeOutputFolder();
        const qint64 wait = m_retry.failed(r.photo);
        m_reporter.retrying(r, m_retry.attempts(r.photo), wait);
    } else {
        m_retry.forget(r.photo);
        if (r.identity.isValid())
            m_refused.insert(r.photo, r.identity);
        m_reporter.photoDone(r);
    }
    if (m_changedWhileKeyed.remove(r.photo))
        look(r.photo, Look::Recheck);
}

void WatchRun::record(const PhotoResult& r)
{
    const std::optional<JournalEntry> known = m_journal.entry(r.photo);
    if (known && known->identity == r.identity && known->contentHash == r.contentHash && known->output == r.output)
        return;
    JournalEntry e;
    e.identity = r.identity;
    e.contentHash = r.contentHash;
    e.output = r.output;
    QString why;
    if (!m_journal.record(r.photo, e, &why))
        m_reporter.notice(why + QStringLiteral(" (kept in memory; written again with the next photo)"),
                          QStringLiteral("journal"));
}

void WatchRun::forgetPhoto(const QString& path)
{
    m_refused.remove(path);
    m_retry.forget(path);
    m_watch.forget(path);
}

} // namespace batch
