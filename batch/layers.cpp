// SPDX-License-Identifier: MIT
#include "batch/layers.h"

namespace batch {

Layers::Layers(const QList<QImage>& backgrounds, const QStringList& names, const QImage& overlay)
    : m_names(names)
{
    for (const QImage& background : backgrounds)
        m_backgrounds.push_back(std::make_unique<BackgroundFits>(background));
    // Premultiplied once: drawing it then needs no conversion per photo.
    if (!overlay.isNull())
        m_overlay = std::make_unique<BackgroundFits>(overlay.convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

QImage Layers::fittedBackground(int index, const QSize& size)
{
    if (index < 0 || index >= backgroundCount())
        return QImage();
    return m_backgrounds[size_t(index)]->fittedTo(size);
}

QImage Layers::fittedOverlay(const QSize& size)
{
    return m_overlay ? m_overlay->fittedTo(size) : QImage();
}

} // namespace batch
