// SPDX-License-Identifier: MIT
#include "keying/alternatives.h"

#include <QFontMetrics>
#include <QStringList>

#include <algorithm>

namespace keying {

namespace {

bool isPlain32Bit(QImage::Format f)
{
    return f == QImage::Format_RGB32 || f == QImage::Format_ARGB32;
}

} // namespace

void maskOut2(QImage& img, const QImage& bkg, QRgb key)
{
    const int width = img.width();
    const int height = img.height();
    if (width <= 0 || height <= 0)
        return;

    if (isPlain32Bit(img.format()) && isPlain32Bit(bkg.format()) && bkg.width() >= width && bkg.height() >= height) {
        // What the image class stores for a per-pixel write of the
        // background's per-pixel read: opaque when either image has no alpha.
        const QRgb fill = (img.format() == QImage::Format_RGB32 || bkg.format() == QImage::Format_RGB32) ? 0xFF000000u : 0u;
        // Detach only when something is written, as per-pixel writes would.
        uchar* bits = nullptr;
        const qsizetype stride = img.bytesPerLine();
        for (int y = 0; y < height; ++y) {
            const QRgb* row = reinterpret_cast<const QRgb*>(img.constScanLine(y));
            const QRgb* bkgRow = reinterpret_cast<const QRgb*>(bkg.constScanLine(y));
            for (int x = 0; x < width; ++x) {
                if (isChange(key, row[x]))
                    continue;
                if (!bits) {
                    bits = img.bits();
                    row = reinterpret_cast<const QRgb*>(bits + y * stride);
                }
                reinterpret_cast<QRgb*>(bits + y * stride)[x] = bkgRow[x] | fill;
            }
        }
        return;
    }

    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!isChange(key, img.pixel(x, y)))
                img.setPixel(x, y, bkg.pixel(x, y));
        }
    }
}

void approxPixel(const QImage& img, int x, int y, long& dark, long& light)
{
    const QRgb p = img.pixel(x, y);
    const int r = qRed(p);
    const int g = qGreen(p);
    const int b = qBlue(p);
    if (r > 180 && b > 180 && g > 180)
        ++light;
    else if (r + g + b <= 400)
        ++dark;
    else
        ++light;
}

bool approximateColor(const QImage& img, int pos)
{
    long dark = 0;
    long light = 0;
    const int w = img.width();
    const int h = img.height();
    const int third = w / 3;
    const int twoThirds = (2 * w) / 3;

    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    switch (pos) {
    case 33: x0 = 0; x1 = third; y0 = 0; y1 = 40; break;
    case 36: x0 = third; x1 = twoThirds; y0 = 0; y1 = 40; break;
    case 34: x0 = twoThirds; x1 = w; y0 = 0; y1 = 40; break;
    case 129: x0 = 0; x1 = third; y0 = h / 2 - 20; y1 = h / 2 + 20; break;
    case 132: x0 = third; x1 = twoThirds; y0 = h / 2 - 20; y1 = h / 2 + 20; break;
    case 130: x0 = twoThirds; x1 = w; y0 = h / 2 - 20; y1 = h / 2 + 20; break;
    case 65: x0 = 0; x1 = third; y0 = h - 40; y1 = h; break;
    case 68: x0 = third; x1 = twoThirds; y0 = h - 40; y1 = h; break;
    case 66: x0 = twoThirds; x1 = w; y0 = h - 40; y1 = h; break;
    default: return false; // no region: nothing sampled, no majority
    }

    // Columns outer, rows inner. The bands are 40 rows whatever the photo's
    // height; rows outside a short photo count as the out-of-range value.
    for (int x = x0; x < x1; ++x) {
        for (int y = y0; y < y1; ++y)
            approxPixel(img, x, y, dark, light);
    }
    return dark > light;
}

QFont calcFont(const QImage& img, const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QString longest;
    for (const QString& part : parts) {
        if (part.length() > longest.length())
            longest = part;
    }

    int size = img.width() / 16;
    if (longest.length() > 20)
        size = (2 * size) / 3;
    if (size < 6)
        size = 6;

    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(size);
    // Shrink in steps of 3 pixels until the line overhangs the photo by at
    // most 20 pixels; 1 pixel is the floor, so a line that never fits still
    // gets a font.
    for (;;) {
        const int overflow = QFontMetrics(font).boundingRect(longest).width() - img.width();
        if (overflow <= 20 || size <= 1)
            break;
        size = std::max(1, size - 3);
        font.setPixelSize(size);
    }
    return font;
}

} // namespace keying
