// SPDX-License-Identifier: MIT
#pragma once

// The photos of a run keyed on a pool of their own, at most `jobs` at once,
// so that memory stays flat on a folder of any length. Results come back to
// the thread that owns the run, in the order photos finish.

#include "batch/keyjob.h"
#include "batch/layers.h"

#include <QHash>
#include <QObject>
#include <QThreadPool>

#include <atomic>

namespace batch {

class BatchRun : public QObject
{
    Q_OBJECT

public:
    // `watching`: photos come from a watch, which records what it keyed.
    // `layers`: the run's backgrounds (and overlay), shared by its photos.
    BatchRun(const KeySettings& settings, Layers& layers, const QString& outputFolder, int jobs, bool watching,
             QObject* parent = nullptr);
    ~BatchRun() override;

    // Queues a photo; it is refused at once when one of its outputs would
    // replace a photo or another photo of the run already writes that name. A watch
    // gives the content digest recorded for the photo, if any
    // (keyWatchedPhoto).
    void submit(const QString& photo, const QByteArray& keyedHash = {});
    // No queued photo starts any more; the ones being keyed are finished.
    void stop();
    // Emits idle() (later, from the event loop) once no photo is queued or
    // being keyed; at once when none is.
    void reportWhenIdle();

    int notKeyed() const { return m_cancelled; }

signals:
    void idle();
    // Each photo's outcome, refusals included, on the run's thread.
    void photoFinished(const batch::PhotoResult& result);

private:
    void finished(const PhotoResult& result, bool cancelled);

    const KeySettings m_settings;
    const QString m_outputFolder;
    const bool m_watching;
    Layers& m_layers;
    QHash<QString, QString> m_claimed; // output path -> the photo writing it
    int m_pending = 0;
    int m_cancelled = 0;
    bool m_idleWanted = false;
    std::atomic<bool> m_stopping{false};
    QThreadPool m_pool; // last: its threads end before the members they use
};

} // namespace batch
