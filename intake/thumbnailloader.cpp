// SPDX-License-Identifier: MIT
#include "intake/thumbnailloader.h"

#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <QWaitCondition>

#include <utility>

// What the loader and its jobs on the pool share. A job that runs after the
// loader has gone finds it cancelled and does nothing.
struct ThumbnailLoader::Shared
{
    QMutex mutex;
    QWaitCondition idle;
    bool cancelled = false;
    int running = 0;
};

ThumbnailLoader::ThumbnailLoader(QObject* parent)
    : QObject(parent)
    , m_formats(PixmapFormats::ofThisScreen())
    , m_shared(std::make_shared<Shared>())
{
}

ThumbnailLoader::~ThumbnailLoader()
{
    QMutexLocker lock(&m_shared->mutex);
    m_shared->cancelled = true;
    while (m_shared->running > 0)
        m_shared->idle.wait(&m_shared->mutex);
}

QThreadPool& ThumbnailLoader::pool()
{
    // Apart from the keying's pool, so that a click keys at full speed while
    // thumbnails load. Every loader waits for its own decodes, so at the end
    // of the process only finished or cancelled jobs are left to it.
    static QThreadPool thumbnails;
    static const bool sized = [] {
        thumbnails.setMaxThreadCount(qMax(1, QThread::idealThreadCount()));
        return true;
    }();
    Q_UNUSED(sized);
    return thumbnails;
}

quint64 ThumbnailLoader::request(const QString& path, const QSize& size)
{
    const quint64 ticket = m_nextTicket++;
    if (m_queued.isEmpty())
        QTimer::singleShot(0, this, &ThumbnailLoader::startQueued);
    m_queued.append({ticket, path, size});
    ++m_pending;
    return ticket;
}

void ThumbnailLoader::startQueued()
{
    const QList<Job> jobs = std::exchange(m_queued, {});
    for (const Job& job : jobs) {
        pool().start([shared = m_shared, receiver = this, job, formats = m_formats] {
            {
                QMutexLocker lock(&shared->mutex);
                if (shared->cancelled)
                    return;
                ++shared->running;
            }
            const QImage thumbnail = thumbnailOfFile(job.path, job.size, formats);
            QMutexLocker lock(&shared->mutex);
            // While `running` counts this job the loader cannot finish its
            // destructor, so `receiver` is alive here; a delivery still
            // queued when it goes is dropped with it.
            if (!shared->cancelled)
                QMetaObject::invokeMethod(
                    receiver, [receiver, ticket = job.ticket, thumbnail] { receiver->deliver(ticket, thumbnail); },
                    Qt::QueuedConnection);
            if (--shared->running == 0)
                shared->idle.wakeAll();
        });
    }
}

void ThumbnailLoader::deliver(quint64 ticket, const QImage& thumbnail)
{
    --m_pending;
    emit thumbnailReady(ticket, thumbnail);
}
