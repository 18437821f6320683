// SPDX-License-Identifier: MIT
#pragma once

// What a run lays on and over each photo: its backgrounds, each fitted once
// per photo size, with the base names that name the composites when there
// are several, and the overlay (a frame or logo) fitted once per output size.
// Shared by every photo of the run, on any thread.

#include "batch/backgroundfits.h"

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace batch {

class Layers
{
public:
    // `names` are the backgrounds' base names, one per background.
    Layers(const QList<QImage>& backgrounds, const QStringList& names, const QImage& overlay);

    int backgroundCount() const { return int(m_backgrounds.size()); }
    const QStringList& backgroundNames() const { return m_names; }
    // Background `index` as the window fits it to a photo of `size`.
    QImage fittedBackground(int index, const QSize& size);

    bool hasOverlay() const { return m_overlay != nullptr; }
    // The overlay stretched to `size`, premultiplied, ready to be drawn.
    QImage fittedOverlay(const QSize& size);

private:
    std::vector<std::unique_ptr<BackgroundFits>> m_backgrounds;
    QStringList m_names;
    std::unique_ptr<BackgroundFits> m_overlay;
};

} // namespace batch
