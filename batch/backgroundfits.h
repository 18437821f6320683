// SPDX-License-Identifier: MIT
#pragma once

// The background fitted to each photo size of a run. A shoot has one or two
// sizes (landscape and portrait frames), so each is fitted once and shared by
// every photo of that size, on any thread.

#include <QImage>
#include <QList>
#include <QMutex>
#include <QSize>

namespace batch {

class BackgroundFits
{
public:
    explicit BackgroundFits(QImage background);

    // The background as the window fits it to a photo of `size`, read once
    // from its file: stretched to exactly that size. Null without a background.
    QImage fittedTo(const QSize& size);

private:
    struct Fit
    {
        QSize size;
        QImage image;
    };
    QMutex m_lock;
    const QImage m_background;
    QList<Fit> m_fits; // the most recently used last
};

} // namespace batch
