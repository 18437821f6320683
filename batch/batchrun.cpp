// SPDX-License-Identifier: MIT
#include "batch/batchrun.h"

#include "batch/outputnaming.h"
#include "batch/watchjob.h"

#include <QFileInfo>

namespace batch {

BatchRun::BatchRun(const KeySettings& settings, Layers& layers, const QString& outputFolder, int jobs,
                   bool watching, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_outputFolder(outputFolder)
    , m_watching(watching)
    , m_layers(layers)
{
    m_pool.setMaxThreadCount(jobs);
}

BatchRun::~BatchRun()
{
    m_stopping = true;
    m_pool.waitForDone();
}

void BatchRun::submit(const QString& photo, const QByteArray& keyedHash)
{
    // A cut-out is one output, whatever the backgrounds.
    const QStringList outputs = outputPathsFor(m_outputFolder, photo, m_settings.format,
                                               m_settings.transparent ? QStringList() : m_layers.backgroundNames());
    PhotoResult refused;
    refused.photo = photo;
    refused.output = outputs.first();
    refused.outputs = outputs;
    for (const QString& output : outputs) {
        const QString owner = m_claimed.value(output);
        if (wouldReplacePhoto(output, photo)) {
            refused.error = QStringLiteral("refused: %1 is the photo itself; choose another output folder (-o) or format (-f)")
                                .arg(output);
        } else if (!owner.isEmpty() && QFileInfo(owner) != QFileInfo(photo)) {
            refused.error = QStringLiteral("refused: %1 is already written from %2").arg(output, owner);
        }
        if (!refused.error.isEmpty()) {
            emit photoFinished(refused);
            return;
        }
    }
    for (const QString& output : outputs)
        m_claimed.insert(output, photo);
    ++m_pending;
    m_pool.start([this, photo, outputs, keyedHash] {
        if (m_stopping.load()) {
            PhotoResult none;
            none.photo = photo;
            QMetaObject::invokeMethod(this, [this, none] { finished(none, true); }, Qt::QueuedConnection);
            return;
        }
        const PhotoResult r = m_watching ? keyWatchedPhoto(m_settings, m_layers, photo, outputs, keyedHash)
                                         : keyPhoto(m_settings, m_layers, photo, outputs);
        QMetaObject::invokeMethod(this, [this, r] { finished(r, false); }, Qt::QueuedConnection);
    });
}

void BatchRun::stop()
{
    m_stopping = true;
}

void BatchRun::reportWhenIdle()
{
    m_idleWanted = true;
    if (m_pending == 0)
        QMetaObject::invokeMethod(this, &BatchRun::idle, Qt::QueuedConnection);
}

void BatchRun::finished(const PhotoResult& result, bool cancelled)
{
    --m_pending;
    if (cancelled)
        ++m_cancelled;
    else
        emit photoFinished(result);
    if (m_pending == 0 && m_idleWanted)
        emit idle();
}

} // namespace batch
