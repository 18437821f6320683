// SPDX-License-Identifier: MIT
#pragma once

// Makes thumbnails off the GUI thread, several at once: photos are read whole
// and scaled on a pool of its own with one decode per core at most, so memory
// stays bounded however many photos wait. Each worker decodes photo after
// photo into the same memory and lets it go when no photo is left. Results
// come back on the thread that owns the loader, through a queued signal, in
// the order work finishes.

#include "intake/thumbnail.h"

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

#include <memory>

class QThreadPool;

class ThumbnailLoader : public QObject
{
    Q_OBJECT

public:
    // Created on the GUI thread (it asks the screen which pixmap formats to
    // prepare the thumbnails in).
    explicit ThumbnailLoader(QObject* parent = nullptr);
    // Drops the work that has not started and waits for the decodes in
    // flight, so nothing outlives the loader.
    ~ThumbnailLoader() override;

    // Queues the thumbnail of `path` at `size`; the work starts once the
    // event loop runs again, so a window can draw first. Returns the ticket
    // that thumbnailReady names.
    quint64 request(const QString& path, const QSize& size);

    // Thumbnails asked for and not yet delivered.
    int pending() const { return m_pending; }

    const PixmapFormats& pixmapFormats() const { return m_formats; }

    // The pool every loader shares: as many threads as the machine has cores.
    static QThreadPool& pool();

signals:
    // `thumbnail` is null when the file could not be read as an image.
    void thumbnailReady(quint64 ticket, const QImage& thumbnail);

private:
    struct Job
    {
        quint64 ticket;
        QString path;
        QSize size;
    };
    struct Shared;

    void startQueued();
    static void runWorker(Shared& shared, ThumbnailLoader* receiver, const PixmapFormats& formats);
    void deliver(quint64 ticket, const QImage& thumbnail);

    PixmapFormats m_formats;
    std::shared_ptr<Shared> m_shared;
    QList<Job> m_queued;
    quint64 m_nextTicket = 1;
    int m_pending = 0;
};
