// SPDX-License-Identifier: MIT
#include "keying/finishing.h"

#include "keying/pipeline.h"

#include <algorithm>

namespace keying {

namespace {

// The size `from` takes when scaled, aspect ratio kept, just to cover `to`:
// one side exactly `to`'s, the other at least `to`'s.
QSize coverSize(const QSize& from, const QSize& to)
{
    const double scale = std::max(double(to.width()) / from.width(), double(to.height()) / from.height());
    return QSize(std::max(to.width(), int(from.width() * scale + 0.5)),
                 std::max(to.height(), int(from.height() * scale + 0.5)));
}

} // namespace

QRect coverCropRect(const QSize& from, const QSize& to)
{
    if (from.isEmpty() || to.isEmpty())
        return QRect();
    const QSize cover = coverSize(from, to);
    const double scale = double(cover.width()) / from.width();
    const int w = std::clamp(int(to.width() / scale + 0.5), 1, from.width());
    const int h = std::clamp(int(to.height() / scale + 0.5), 1, from.height());
    return QRect((from.width() - w) / 2, (from.height() - h) / 2, w, h);
}

QImage coverAndCrop(const QImage& image, const QSize& to)
{
    if (image.isNull() || to.isEmpty())
        return QImage();
    if (image.size() == to)
        return image;
    const QSize cover = coverSize(image.size(), to);
    const QImage scaled = image.scaled(cover, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (cover == to)
        return scaled;
    return scaled.copy((cover.width() - to.width()) / 2, (cover.height() - to.height()) / 2, to.width(), to.height());
}

namespace {

// One channel of a premultiplied overlay over one of the composite: the
// overlay's own value plus what its transparency lets through.
inline int overChannel(int overlay, int composite, int seeThrough)
{
    return overlay + (composite * seeThrough + 127) / 255;
}

// A premultiplied overlay pixel over a composite pixel of a 32-bit format;
// a wholly transparent overlay pixel returns the composite's exactly, an
// opaque one the overlay's.
inline QRgb over(QRgb overlay, QRgb composite, QImage::Format format)
{
    const int a = qAlpha(overlay);
    if (a == 0)
        return composite;
    if (a == 255)
        return overlay;
    const int through = 255 - a;
    if (format == QImage::Format_RGB32) {
        return qRgb(overChannel(qRed(overlay), qRed(composite), through),
                    overChannel(qGreen(overlay), qGreen(composite), through),
                    overChannel(qBlue(overlay), qBlue(composite), through));
    }
    const QRgb below = format == QImage::Format_ARGB32 ? qPremultiply(composite) : composite;
    const QRgb blended = qRgba(overChannel(qRed(overlay), qRed(below), through),
                               overChannel(qGreen(overlay), qGreen(below), through),
                               overChannel(qBlue(overlay), qBlue(below), through),
                               overChannel(a, qAlpha(below), through));
    return format == QImage::Format_ARGB32 ? qUnpremultiply(blended) : blended;
}

} // namespace

void drawOverlay(QImage& composite, const QImage& overlay)
{
    if (composite.isNull() || overlay.isNull())
        return;
    QImage fitted = fittedBackground(overlay, composite.size());
    if (fitted.format() != QImage::Format_ARGB32_Premultiplied)
        fitted = fitted.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage::Format format = composite.format();
    if (format != QImage::Format_RGB32 && format != QImage::Format_ARGB32
        && format != QImage::Format_ARGB32_Premultiplied) {
        composite = composite.convertToFormat(composite.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                          : QImage::Format_RGB32);
    }
    const QImage::Format f = composite.format();
    for (int y = 0; y < composite.height(); ++y) {
        const auto* o = reinterpret_cast<const QRgb*>(fitted.constScanLine(y));
        auto* c = reinterpret_cast<QRgb*>(composite.scanLine(y));
        for (int x = 0; x < composite.width(); ++x)
            c[x] = over(o[x], c[x], f);
    }
}

} // namespace keying
