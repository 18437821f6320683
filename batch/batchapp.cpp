// SPDX-License-Identifier: MIT
#include "batch/batchapp.h"

#include "batch/batchrun.h"
#include "batch/folderscan.h"
#include "batch/hotfolderwatch.h"
#include "batch/journal.h"
#include "batch/leftovers.h"
#include "batch/outputnaming.h"
#include "batch/photocheck.h"
#include "batch/photofile.h"
#include "batch/photolist.h"
#include "batch/report.h"
#include "batch/stopsignals.h"
#include "batch/watchrun.h"
#include "keying/photoread.h"
#include "output/outputfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <optional>

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
    s.autoKey = o.autoKey;
    s.printSize = o.printSize;
    s.format = o.format;
    s.quality = o.quality;
    s.transparent = o.transparent;
    s.soft = o.soft;
    s.measureShare = o.json;
    return s;
}

// What a run starts from once its arguments have been checked.
struct Prepared
{
    QList<QImage> backgrounds;
    QStringList backgroundNames;
    QImage overlay;
    QString output;
    GatheredPhotos gathered;
};

// Reads the background, makes the output folder and lists the photos; a
// usage failure's exit status when any of it cannot be done.
int prepare(const BatchOptions& o, Prepared& p)
{
    // A FIFO given as a background or overlay would hold the run for ever.
    const auto readPicture = [](const QString& path) {
        return notRegularReason(path).isEmpty() ? keying::readPhoto(path) : QImage();
    };
    if (!o.transparent) {
        for (const QString& background : o.backgrounds) {
            const QImage picture = readPicture(background);
            if (picture.isNull())
                return usageFailure(QStringLiteral("cannot read the background %1: %2").arg(background, unreadableReason(background)));
            p.backgrounds << picture;
            p.backgroundNames << QFileInfo(background).completeBaseName();
        }
    }
    if (!o.overlay.isEmpty()) {
        p.overlay = readPicture(o.overlay);
        if (p.overlay.isNull())
            return usageFailure(QStringLiteral("cannot read the overlay %1: %2").arg(o.overlay, unreadableReason(o.overlay)));
    }
    p.output = readyOutputFolder(o.outputFolder);
    if (p.output.isEmpty())
        return usageFailure(QStringLiteral("cannot create the output folder %1").arg(o.outputFolder));
    p.gathered = gatherPhotos(o.inputs);
    if (o.watch && p.gathered.folders.isEmpty())
        return usageFailure(QStringLiteral("--watch needs a FOLDER to watch"));
    for (const QString& folder : std::as_const(p.gathered.folders)) {
        if (o.watch && sameFolder(folder, p.output))
            return usageFailure(QStringLiteral("the output folder %1 is watched: its composites would be keyed again").arg(p.output));
        if (!o.watch) // a watch names them as it sees them
            p.gathered.problems << unaddressablePhotos(folder);
    }
    return 0;
}

// Queues the photos named: all of this machine's share of a fixed run; with
// a watch only the photos named one by one, since the folders' photos, old
// and new, go through the watch, which waits until each is complete.
void submitNamedPhotos(const BatchOptions& o, const GatheredPhotos& gathered, BatchRun& run, Reporter& reporter)
{
    QStringList photos;
    if (!o.watch) {
        photos = shareOf(gathered.photos, o.shard, o.shards);
    } else {
        for (const QString& photo : gathered.photos) {
            if (o.inputs.contains(photo) && inShareByName(photo, o.shard, o.shards))
                photos << photo;
        }
    }
    reporter.addToTotal(int(photos.size()));
    for (const QString& photo : std::as_const(photos))
        run.submit(photo);
}

// A first SIGINT or SIGTERM finishes the photos in flight; a second one ends
// the run at once.
void stopOnSignals(StopSignals& stops, bool& stopping, const std::function<void()>& stop)
{
    QObject::connect(&stops, &StopSignals::stopRequested, [&stopping, stop] {
        if (stopping) {
            std::fflush(stdout);
            std::fputs("plendra-batch: stopped at once: the photos in flight are not keyed\n", stderr);
            std::_Exit(1);
        }
        stopping = true;
        stop();
    });
}

} // namespace

int runBatch(const BatchOptions& o)
{
    Prepared p;
    if (const int failure = prepare(o, p))
        return failure;
    if (const int removed = removeAbandonedTemporaries(p.output))
        std::fprintf(stderr, "plendra-batch: removed %d temporary files a stopped run left in %s\n", removed, qUtf8Printable(p.output));

    Reporter reporter(reportStyleFor(o.json, o.watch), stdout, stderr);
    for (const QString& problem : std::as_const(p.gathered.problems))
        reporter.problem(problem);

    Layers layers(p.backgrounds, p.backgroundNames, p.overlay);
    BatchRun run(keySettingsFor(o), layers, p.output, o.jobs > 0 ? o.jobs : QThread::idealThreadCount(), o.watch);
    std::optional<Journal> journal;
    std::optional<HotFolderWatch> watch;
    std::optional<WatchRun> watchRun;
    if (o.watch) {
        const auto mine = [&o](const QString& photo) { return inShareByName(photo, o.shard, o.shards); };
        journal.emplace(p.output, Journal::fileNameFor(o.shard, o.shards), mine);
        QString why;
        if (!journal->open(&why))
            return usageFailure(why);
        watch.emplace(p.gathered.folders, o.settleMs, o.poll, mine);
        watchRun.emplace(*watch, run, *journal, reporter, p.output);
    } else {
        QObject::connect(&run, &BatchRun::photoFinished, [&reporter](const PhotoResult& r) { reporter.photoDone(r); });
    }
    StopSignals stops;
    bool stopping = false;
    QObject::connect(&run, &BatchRun::idle, [&] {
        if (!o.watch || stopping)
            QCoreApplication::quit();
    });
    stopOnSignals(stops, stopping, [&] {
        if (watch) {
            watch->stop();
            watchRun->stop();
        }
        run.stop();
        run.reportWhenIdle();
    });

    submitNamedPhotos(o, p.gathered, run, reporter);
    if (watchRun)
        watchRun->start();
    else
        run.reportWhenIdle();
    QCoreApplication::exec();
    reporter.finish();

    if (run.notKeyed() > 0)
        std::fprintf(stderr, "plendra-batch: stopped: %d photos not keyed\n", run.notKeyed());
    if (o.watch && stopping)
        return 0; // a watch ends by a signal; its failures were named as they came
    return (reporter.failed() > 0 || run.notKeyed() > 0) ? 1 : 0;
}

} // namespace batch
