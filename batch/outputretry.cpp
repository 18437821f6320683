// SPDX-License-Identifier: MIT
#include "batch/outputretry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace batch {

OutputRetry::OutputRetry(const QString& outputFolder, QObject* parent)
    : QObject(parent), m_outputFolder(outputFolder)
{
    m_clock.start();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &OutputRetry::due);
}

qint64 OutputRetry::waitBefore(int attempt)
{
    return std::min<qint64>(60000, 1000LL << std::min(attempt - 1, 6));
}

qint64 OutputRetry::failed(const QString& photo)
{
    Pending& p = m_photos[photo];
    ++p.attempts;
    const qint64 wait = waitBefore(p.attempts);
    p.dueMs = m_clock.elapsed() + wait;
    schedule();
    return wait;
}

bool OutputRetry::isWaiting(const QString& photo) const
{
    const auto it = m_photos.constFind(photo);
    return it != m_photos.cend() && it->dueMs >= 0;
}

void OutputRetry::forget(const QString& photo)
{
    m_photos.remove(photo);
    schedule();
}

bool OutputRetry::remakeOutputFolder()
{
    if (QFileInfo(m_outputFolder).isDir() || !QDir().mkpath(m_outputFolder))
        return false;
    emit outputFolderMade(m_outputFolder);
    return true;
}

void OutputRetry::due()
{
    const qint64 now = m_clock.elapsed();
    QStringList ready;
    for (auto it = m_photos.begin(); it != m_photos.end(); ++it) {
        if (it->dueMs >= 0 && it->dueMs <= now) {
            it->dueMs = -1;
            ready << it.key();
        }
    }
    if (!ready.isEmpty())
        remakeOutputFolder();
    for (const QString& photo : std::as_const(ready))
        emit retryDue(photo);
    schedule();
}

// One timer, set for the earliest try due; none while nothing waits.
void OutputRetry::schedule()
{
    qint64 earliest = -1;
    for (const Pending& p : std::as_const(m_photos)) {
        if (p.dueMs >= 0 && (earliest < 0 || p.dueMs < earliest))
            earliest = p.dueMs;
    }
    if (earliest < 0) {
        m_timer.stop();
        return;
    }
    m_timer.start(int(std::max<qint64>(0, earliest - m_clock.elapsed())));
}

} // namespace batch
