// SPDX-License-Identifier: MIT
#include "bench/benchphotos.h"

#include <QColor>
#include <QDir>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace benchphotos {

namespace {

// A small, fast, fixed generator: the same photo on every run and machine.
struct XorShift
{
    quint32 state;
    quint32 next()
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }
};

int clamp255(int v) { return std::clamp(v, 0, 255); }

} // namespace

QSize sizeForMegapixels(int megapixels)
{
    const double pixels = megapixels * 1e6;
    const int height = int(std::lround(std::sqrt(pixels / 1.5)));
    const int width = int(std::lround(pixels / height));
    return QSize(width, height);
}

QImage studioShot(QSize size, quint32 seed)
{
    const int w = size.width();
    const int h = size.height();
    QImage img(size, QImage::Format_RGB32);
    XorShift rng{seed * 2654435761u + 1u};
    for (int y = 0; y < h; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        // A gentle fall-off of the backdrop's light towards the bottom.
        const int shade = 12 * y / h;
        for (int x = 0; x < w; ++x) {
            const quint32 r = rng.next();
            const int n = int(r % 9u) - 4;
            row[x] = qRgb(clamp255(40 + n - shade), clamp255(180 + n - shade), clamp255(60 + int((r >> 8) % 5u) - 2 - shade));
        }
    }
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(70, 45, 40));
    p.drawRect(w * 3 / 8, h / 2, w / 4, h / 2);                  // body
    p.setBrush(QColor(215, 170, 140));
    p.drawEllipse(QPoint(w / 2, h * 3 / 8), w / 10, h / 8);      // head
    p.setBrush(QColor(25, 20, 18));
    p.drawRect(w / 2 - w / 10, h / 4 - h / 40, w / 5, h / 14);  // hair
    return img;
}

QImage backgroundPhoto(QSize size, quint32 seed)
{
    const int w = size.width();
    const int h = size.height();
    QImage img(size, QImage::Format_RGB32);
    XorShift rng{seed * 40503u + 7u};
    for (int y = 0; y < h; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int n = int(rng.next() % 7u) - 3;
            row[x] = qRgb(clamp255(200 - 60 * y / h + n), clamp255(120 + 80 * x / w + n), clamp255(90 + ((x / 64 + y / 64) % 2) * 40 + n));
        }
    }
    return img;
}

bool makeSampleFolder(const QString& folder, QSize size)
{
    bool ok = QDir().mkpath(folder + QStringLiteral("/Bkg"));
    ok = studioShot(size, 1).save(folder + QStringLiteral("/1green.JPG"), "JPG", 92) && ok;
    ok = studioShot(QSize(96, 64), 2).save(folder + QStringLiteral("/blue1.JPG"), "JPG", 92) && ok;
    ok = backgroundPhoto(size, 3).save(folder + QStringLiteral("/Bkg/a.jpg"), "JPG", 92) && ok;
    return ok;
}

} // namespace benchphotos
