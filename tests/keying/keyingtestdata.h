// SPDX-License-Identifier: MIT
#pragma once

// Pixel material for the keying tests: random photos biased towards the key,
// and the boundary values of the key rule.

#include <QImage>
#include <QList>
#include <QPair>
#include <QTest>
#include <QRandomGenerator>
#include <QRgb>

#include <QString>

#include <algorithm>
#include <cstring>

namespace keyingdata {

using NamedFormat = QPair<QImage::Format, const char*>;

// The pixel formats a loaded photo can have.
inline const QList<NamedFormat> kPhotoFormats = {
    {QImage::Format_RGB32, "RGB32"},
    {QImage::Format_ARGB32, "ARGB32"},
    {QImage::Format_ARGB32_Premultiplied, "ARGB32_Premultiplied"},
    {QImage::Format_Grayscale8, "Grayscale8"},
    {QImage::Format_Grayscale16, "Grayscale16"},
    {QImage::Format_RGBA64, "RGBA64"},
    {QImage::Format_RGB888, "RGB888"},
    {QImage::Format_Indexed8, "Indexed8"},
    {QImage::Format_RGB16, "RGB16"},
};

// A data row "<photo> over <background>" for every pair of these formats, in
// the columns photoFormat and backgroundFormat.
inline void addFormatPairRows(const QList<NamedFormat>& formats)
{
    QTest::addColumn<QImage::Format>("photoFormat");
    QTest::addColumn<QImage::Format>("backgroundFormat");
    for (const NamedFormat& photo : formats)
        for (const NamedFormat& background : formats)
            QTest::addRow("%s over %s", photo.second, background.second) << photo.first << background.first;
}

// A key colour under the name of its data row.
struct NamedKey
{
    const char* name;
    QRgb key;
};

// Keys with neither green nor blue above both other channels: nothing is
// backdrop for them.
inline const QList<NamedKey> kKeysWithoutBackdrop = {
    {"grey", qRgb(128, 128, 128)},
    {"red", qRgb(192, 48, 32)},
    {"yellow, red equals green", qRgb(200, 200, 40)},
    {"green equals blue above red", qRgb(20, 150, 150)},
};

// One data row per key, in the column "key".
inline void addKeyRows(const QList<NamedKey>& keys)
{
    for (const NamedKey& k : keys)
        QTest::newRow(k.name) << k.key;
}

inline int clamp255(int v) { return std::clamp(v, 0, 255); }

// Channel values where the rule changes its mind for this key channel: 0 and
// 1 (which count alike), 90 levels away and just inside, and the values that
// make ratios of 1.16 and 1.29 against 100 and sums around 100.
inline QList<int> boundaryChannels(int keyChannel)
{
    const int k = keyChannel == 0 ? 1 : keyChannel;
    QList<int> v = {0, 1, 2, 15, 16, 31, 32, 33, 49, 50, 100, 101, 115, 116, 117, 128, 129, 130, 254, 255,
                    k - 90, k - 89, k - 1, k, k + 1, k + 89, k + 90};
    for (int& c : v)
        c = clamp255(c);
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
    return v;
}

// Every combination of the boundary channels of `key`, then every dark pixel
// whose channel sum is 100 or 101 (channels up to 80), alpha varied.
inline QList<QRgb> boundaryPixels(QRgb key)
{
    QList<QRgb> out;
    const QList<int> rs = boundaryChannels(qRed(key));
    const QList<int> gs = boundaryChannels(qGreen(key));
    const QList<int> bs = boundaryChannels(qBlue(key));
    int alpha = 0;
    for (int r : rs)
        for (int g : gs)
            for (int b : bs)
                out << qRgba(r, g, b, (alpha += 37) & 0xFF);
    for (int sum = 100; sum <= 101; ++sum)
        for (int r = 0; r <= 80; ++r)
            for (int g = 0; g <= 80; ++g) {
                const int b = sum - r - g;
                if (b >= 0 && b <= 80)
                    out << qRgba(r, g, b, (alpha += 37) & 0xFF);
            }
    return out;
}

// A picture in ARGB32 made of a third uniform random pixels, a third near the
// key and a third of its boundary values (repeated), in a random order.
inline QImage mixedPicture(int width, int height, QRgb key, quint32 seed)
{
    QRandomGenerator rng(seed);
    const QList<QRgb> edges = boundaryPixels(key);
    QImage img(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < width; ++x) {
            switch (rng.bounded(3)) {
            case 0:
                row[x] = rng.generate();
                break;
            case 1:
                row[x] = qRgba(clamp255(qRed(key) + rng.bounded(-110, 111)), clamp255(qGreen(key) + rng.bounded(-110, 111)),
                               clamp255(qBlue(key) + rng.bounded(-110, 111)), int(rng.bounded(256)));
                break;
            default:
                row[x] = edges[int(rng.bounded(qsizetype(edges.size())))];
                break;
            }
        }
    }
    return img;
}

// Pixels laid out row by row in an image `width` wide (the last row padded
// with the first pixels again).
inline QImage pictureOf(const QList<QRgb>& pixels, int width)
{
    const int height = int((pixels.size() + width - 1) / width);
    QImage img(width, height, QImage::Format_ARGB32);
    for (int i = 0; i < width * height; ++i)
        reinterpret_cast<QRgb*>(img.scanLine(i / width))[i % width] = pixels[i % pixels.size()];
    return img;
}

// Byte-for-byte equality of the pixels (row padding ignored) and of the format.
inline bool samePixels(const QImage& a, const QImage& b, QString* where = nullptr)
{
    if (a.format() != b.format() || a.size() != b.size()) {
        if (where)
            *where = QStringLiteral("format or size differs (%1 vs %2)").arg(a.format()).arg(b.format());
        return false;
    }
    const qsizetype rowBytes = (qsizetype(a.width()) * a.depth() + 7) / 8;
    for (int y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.constScanLine(y), b.constScanLine(y), size_t(rowBytes)) != 0) {
            if (where) {
                int x = 0;
                while (x < a.width() && a.pixel(x, y) == b.pixel(x, y))
                    ++x;
                *where = QStringLiteral("row %1, near x %2: %3 vs %4")
                             .arg(y)
                             .arg(x)
                             .arg(a.pixel(qMin(x, a.width() - 1), y), 8, 16, QLatin1Char('0'))
                             .arg(b.pixel(qMin(x, a.width() - 1), y), 8, 16, QLatin1Char('0'));
            }
            return false;
        }
    }
    return true;
}

} // namespace keyingdata
