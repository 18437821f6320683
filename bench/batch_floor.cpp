// SPDX-License-Identifier: MIT
// The floor of a batch run: each photo of a folder decoded and encoded again as
// JPEG at the writer's default quality, on a pool of N threads, nothing else.
// Each thread decodes into the memory of its photo before, as the tool does.
// Usage: plendra_batch_floor JOBS OUTPUT_DIR PHOTO...
#include "keying/photoread.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QThreadPool>

#include <atomic>
#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 4) {
        std::fprintf(stderr, "Usage: plendra_batch_floor JOBS OUTPUT_DIR PHOTO...\n");
        return 2;
    }
    QImageReader::setAllocationLimit(2048); // as the tool and the window
    QThreadPool pool;
    pool.setMaxThreadCount(QString::fromLocal8Bit(argv[1]).toInt());
    const QString out = QString::fromLocal8Bit(argv[2]);
    std::atomic<int> failed{0};
    for (int i = 3; i < argc; ++i) {
        const QString photo = QString::fromLocal8Bit(argv[i]);
        pool.start([&failed, photo, out] {
            thread_local QImage decoded;
            if (!keying::readPhotoInto(photo, decoded)
                || !decoded.save(out + QLatin1Char('/') + QFileInfo(photo).fileName(), "jpg"))
                ++failed;
        });
    }
    pool.waitForDone();
    return failed > 0 ? 1 : 0;
}
