// SPDX-License-Identifier: MIT
#include "intake/thumbnailloader.h"

#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QThreadPool>
#include <QTimer>
#include <QWaitCondition>

#include <utility>

// What the loader and its workers on the pool share. A worker that runs after
// the loader has gone finds it cancelled and does nothing.
struct ThumbnailLoader::Shared
{
    QMutex mutex;
    QWaitCondition idle;
    bool cancelled = false;
    QList<Job> waiting; // asked for, not yet taken by a worker
    int workers = 0;    // started on the pool and not yet finished
    int decoding = 0;   // workers between taking a job and delivering it
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
    m_shared->waiting.clear();
    while (m_shared->decoding > 0)
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
    QMutexLocker lock(&m_shared->mutex);
    m_shared->waiting.append(std::exchange(m_queued, {}));
    // One worker per core at most; each takes photo after photo until none
    // waits, decoding them all into the same memory.
    const int wanted = qMin(int(m_shared->waiting.size()), pool().maxThreadCount()) - m_shared->workers;
    for (int i = 0; i < wanted; ++i) {
        ++m_shared->workers;
        pool().start([shared = m_shared, receiver = this, formats = m_formats] {
            runWorker(*shared, receiver, formats);
        });
    }
}

void ThumbnailLoader::runWorker(Shared& shared, ThumbnailLoader* receiver, const PixmapFormats& formats)
{
    QImage decodeBuffer;
    QMutexLocker lock(&shared.mutex);
    while (!shared.cancelled && !shared.waiting.isEmpty()) {
        const Job job = shared.waiting.takeFirst();
        ++shared.decoding;
        lock.unlock();
        const QImage thumbnail = thumbnailOfFile(job.path, job.size, formats, decodeBuffer);
        lock.relock();
        // While `decoding` counts this job the loader cannot finish its
        // destructor, so `receiver` is alive here; a delivery still queued
        // when it goes is dropped with it.
        if (!shared.cancelled)
            QMetaObject::invokeMethod(
                receiver, [receiver, ticket = job.ticket, thumbnail] { receiver->deliver(ticket, thumbnail); },
                Qt::QueuedConnection);
        if (--shared.decoding == 0)
            shared.idle.wakeAll();
    }
    --shared.workers;
}

void ThumbnailLoader::deliver(quint64 ticket, const QImage& thumbnail)
{
    --m_pending;
    emit thumbnailReady(ticket, thumbnail);
}
