// SPDX-License-Identifier: MIT
#include "keying/rowpool.h"

#include "keying/keymask_tuning.h"

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <memory>

namespace keying {

int rowThreadsFor(qsizetype pixels, int height, int wanted)
{
    int threads = wanted;
    if (threads <= 0)
        threads = pixels >= kParallelKeyingPixels ? QThreadPool::globalInstance()->maxThreadCount() : 1;
    return std::clamp(threads, 1, std::max(1, height));
}

void runRowsOnPool(int height, int threads, const std::function<void(int first, int end)>& rows)
{
    if (height <= 0)
        return;
    if (threads <= 1) {
        rows(0, height);
        return;
    }
    // Short runs from a shared counter rather than one band per thread: a
    // core busy with another photo simply takes fewer runs.
    const int run = std::clamp(height / (threads * 16), 1, 64);
    std::atomic<int> nextRow{0};
    auto work = [&] {
        for (;;) {
            const int first = nextRow.fetch_add(run, std::memory_order_relaxed);
            if (first >= height)
                return;
            rows(first, std::min(first + run, height));
        }
    };
    // Each helper holds the semaphore too, so that its last release never
    // touches a semaphore this call has already dropped.
    const auto finished = std::make_shared<QSemaphore>();
    int helpers = 0;
    QThreadPool* pool = QThreadPool::globalInstance();
    for (int i = 1; i < threads; ++i) {
        if (!pool->tryStart([&work, finished] {
                work();
                finished->release();
            }))
            break;
        ++helpers;
    }
    work();
    finished->acquire(helpers);
}

} // namespace keying
