// SPDX-License-Identifier: MIT
// The peak is read from the kernel's high-water mark of resident memory
// (VmHWM), reset just before the click by writing 5 to /proc/self/clear_refs,
// and compared with the resident memory before the window and its photos
// existed: the difference is all the photo memory alive at the worst moment of
// the click (foreground, background, composite, decoder and temporaries).
#include "bench/peakmemory.h"

#include "state/globals.h"
#include "state/imagelimits.h"
#include "bench/benchphotos.h"
#include "mainwindow/dialog.h"

#include <QApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>

namespace {

// A "Vm..." line of /proc/self/status in kilobytes, or -1.
long statusKb(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toLong();
    }
    return -1;
}

bool resetPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    return clear.open(QIODevice::WriteOnly) && clear.write("5") == 1;
}

void click(Dialog& window)
{
    QMetaObject::invokeMethod(&window, "GVClicked", Qt::DirectConnection, Q_ARG(int, 20), Q_ARG(int, 20));
}

} // namespace

int runPeakMemoryChild(const QString& executable, int megapixels)
{
    QTemporaryDir folder;
    const QSize size = benchphotos::sizeForMegapixels(megapixels);
    if (!folder.isValid() || !benchphotos::makeSampleFolder(folder.path(), size)) {
        std::fprintf(stderr, "could not write the %d MP photos\n", megapixels);
        return 1;
    }
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(executable, {QString::fromLatin1(kPeakMemoryChildFlag), folder.path(), QString::number(megapixels)});
    if (!child.waitForStarted(30000) || !child.waitForFinished(600000))
        return 1;
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : 1;
}

int peakMemoryChild(int argc, char** argv)
{
    QApplication app(argc, argv);
    allowLargePhotos();
    QLoggingCategory::setFilterRules(QStringLiteral("qt.core.qmetaobject.connectslotsbyname=false"));
    MyGlobal::appDir = QString::fromLocal8Bit(argv[2]);
    const int megapixels = argc > 3 ? std::atoi(argv[3]) : 45;
    const QSize size = benchphotos::sizeForMegapixels(megapixels);
    const double imageMb = double(size.width()) * size.height() * 4 / (1024.0 * 1024.0);

    const long beforeWindow = statusKb("VmRSS");
    Dialog window; // loads the photo, its thumbnails and the background
    const long withWindow = statusKb("VmRSS");

    const bool resettable = resetPeak();
    click(window); // the first click: the preview still holds the unkeyed photo
    const long firstPeak = statusKb("VmHWM");
    const long afterFirst = statusKb("VmRSS");
    resetPeak();
    click(window); // a later click: the preview holds the previous composite
    const long laterPeak = statusKb("VmHWM");

    std::printf("\nPeak memory of a click on a %d MP photo (%dx%d, one decoded copy = %.0f MB)\n", megapixels,
                size.width(), size.height(), imageMb);
    if (!resettable || beforeWindow < 0 || firstPeak < 0) {
        struct rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        std::printf("  (no /proc peak reset here; process maximum %.0f MB)\n", usage.ru_maxrss / 1024.0);
        return 0;
    }
    auto mb = [](long kb) { return kb / 1024.0; };
    std::printf("  resident before the window: %.0f MB; with window, photo and background: %.0f MB (%.2f copies)\n",
                mb(beforeWindow), mb(withWindow), mb(withWindow - beforeWindow) / imageMb);
    std::printf("  first click:  peak %.0f MB = %.2f copies above the start (%.2f above the resident %.0f MB before it)\n",
                mb(firstPeak), mb(firstPeak - beforeWindow) / imageMb, mb(firstPeak - withWindow) / imageMb, mb(withWindow));
    std::printf("  later click:  peak %.0f MB = %.2f copies above the start (%.2f above the resident %.0f MB before it)\n",
                mb(laterPeak), mb(laterPeak - beforeWindow) / imageMb, mb(laterPeak - afterFirst) / imageMb, mb(afterFirst));
    std::printf("  method: VmHWM from /proc/self/status, reset through /proc/self/clear_refs before each click;\n"
                "          copies = (peak - resident before the window) / one decoded 32-bit image\n");
    return 0;
}
