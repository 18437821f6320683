// SPDX-License-Identifier: MIT
#include "batch/batchapp.h"

#include "batch/batchrun.h"
#include "batch/hotfolderwatch.h"
#include "batch/outputnaming.h"
#include "batch/photocheck.h"
#include "batch/photolist.h"
#include "batch/report.h"
#include "batch/stopsignals.h"
#include "output/outputfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QThread>

#include <cstdio>

namespace batch {

namespace {

int usageFailure(const QString& message)
{
    std::fprintf(stderr, "plendra-batch: %s\n%s\n", qUtf8Printable(message), qUtf8Printable(usageLine()));
    return 2;
}

// The folder composites go to, made when missing; empty when it cannot be.
QString readyOutputFolder(const QString& asked)
{
    const QString folder = asked.isEmpty() ? defaultOutputFolder(QDir::homePath()) : asked;
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir())
        return QString();
    return QDir(folder).absolutePath();
}

KeySettings keySettingsFor(const BatchOptions& o)
{
    KeySettings s;
    s.keyPoint = o.keyPoint;
    s.keyColour = o.keyColour;
    s.format = o.format;
    s.quality = o.quality;
    s.transparent = o.transparent;
    s.measureShare = o.json;
    s.skipWhenNewer = o.watch;
    return s;
}

} // namespace

int runBatch(const BatchOptions& o)
{
    QImage background;
    if (!o.transparent) {
        background = QImage(o.background);
        if (background.isNull())
            return usageFailure(QStringLiteral("cannot read the background %1: %2").arg(o.background, unreadableReason(o.background)));
    }
    const QString output = readyOutputFolder(o.outputFolder);
    if (output.isEmpty())
        return usageFailure(QStringLiteral("cannot create the output folder %1").arg(o.outputFolder));

    const GatheredPhotos gathered = gatherPhotos(o.inputs);
    if (o.watch && gathered.folders.isEmpty())
        return usageFailure(QStringLiteral("--watch needs a FOLDER to watch"));
    for (const QString& folder : gathered.folders) {
        if (o.watch && sameFolder(folder, output))
            return usageFailure(QStringLiteral("the output folder %1 is watched: its composites would be keyed again").arg(output));
    }

    Reporter reporter(reportStyleFor(o.json, o.watch), stdout, stderr);
    for (const QString& problem : gathered.problems)
        reporter.problem(problem);

    BatchRun run(keySettingsFor(o), background, output, o.jobs > 0 ? o.jobs : QThread::idealThreadCount(), reporter);
    StopSignals stops;
    bool stopping = false;
    QObject::connect(&run, &BatchRun::idle, [&] {
        if (!o.watch || stopping)
            QCoreApplication::quit();
    });

    HotFolderWatch watch(gathered.folders, o.settleMs,
                         [&](const QString& photo) { return inShareByName(photo, o.shard, o.shards); });
    QObject::connect(&watch, &HotFolderWatch::photoReady, &run, &BatchRun::submit);
    QObject::connect(&watch, &HotFolderWatch::photoWaiting, [](const QString& photo, const QString& why) {
        std::fprintf(stderr, "plendra-batch: %s: waiting: %s\n", qUtf8Printable(photo), qUtf8Printable(why));
    });
    QObject::connect(&stops, &StopSignals::stopRequested, [&] {
        stopping = true;
        watch.stop();
        run.stop();
        run.reportWhenIdle();
    });

    if (o.watch) {
        // Photos named one by one are keyed now; the folders' photos, old and
        // new, go through the watch, which waits until each is complete.
        for (const QString& photo : gathered.photos) {
            if (!QFileInfo(photo).isDir() && o.inputs.contains(photo) && inShareByName(photo, o.shard, o.shards))
                run.submit(photo);
        }
        watch.start();
    } else {
        for (const QString& photo : shareOf(gathered.photos, o.shard, o.shards))
            run.submit(photo);
        run.reportWhenIdle();
    }
    QCoreApplication::exec();
    reporter.finish();

    if (run.notKeyed() > 0)
        std::fprintf(stderr, "plendra-batch: stopped: %d photos not keyed\n", run.notKeyed());
    if (o.watch && stopping)
        return 0; // a watch ends by a signal; its failures were named as they came
    return (reporter.failed() > 0 || run.notKeyed() > 0) ? 1 : 0;
}

} // namespace batch
