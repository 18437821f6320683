// SPDX-License-Identifier: MIT
#include "keying/backdropmask.h"

#include "keying/imagedetails.h"
#include "keying/keymask.h"
#include "keying/rowpool.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace keying {

namespace {

bool plain32(QImage::Format f)
{
    return f == QImage::Format_RGB32 || f == QImage::Format_ARGB32;
}

// The key's rows over Qt's pool, as the soft keyer's passes go: every core
// for a large photo, this thread alone for a small one.
void forRowsOnPool(int height, qsizetype pixels, const std::function<void(int, int)>& rows)
{
    runRowsOnPool(height, rowThreadsFor(pixels, height, 0), rows);
}

} // namespace

BackdropMask backdropMask(const QImage& photo, QRgb key)
{
    BackdropMask m;
    m.key = key;
    if (photo.isNull() || !plain32(photo.format()))
        return m;
    m.valid = true;
    m.width = photo.width();
    m.height = photo.height();
    m.bytesPerRow = (m.width + 7) / 8;
    m.bits.assign(size_t(m.bytesPerRow) * size_t(m.height), 0);
    const KeyColour k = keyColourOf(key);
    // Neither green nor blue dominates the key: it takes no pixel.
    if (!k.greenKey && !k.blueKey)
        return m;
    unsigned char* bits = m.bits.data();
    const qsizetype stride = m.bytesPerRow;
    const int width = m.width;
    // The key mask itself decides, with its vector row loops, on short bands
    // of rows copied into memory each thread keeps: keyed against a wholly
    // transparent background, a pixel it takes becomes 0, and a pixel that
    // was 0 before has no colour, which no key takes.
    forRowsOnPool(m.height, qsizetype(m.width) * m.height, [&](int first, int end) {
        thread_local QImage band;
        thread_local QImage clear;
        constexpr int kBandRows = 16;
        if (band.width() != width) {
            band = QImage(width, kBandRows, QImage::Format_ARGB32);
            clear = QImage(width, kBandRows, QImage::Format_ARGB32);
            clear.fill(0u);
        }
        for (int y0 = first; y0 < end; y0 += kBandRows) {
            // A last short band keys the rows of the one before again too;
            // only its own rows are read back.
            const int rows = std::min(kBandRows, end - y0);
            for (int r = 0; r < rows; ++r)
                std::memcpy(band.scanLine(r), photo.constScanLine(y0 + r), size_t(width) * sizeof(QRgb));
            maskOut(band, clear, key);
            for (int r = 0; r < rows; ++r) {
                const auto* keyed = reinterpret_cast<const QRgb*>(band.constScanLine(r));
                const auto* own = reinterpret_cast<const QRgb*>(photo.constScanLine(y0 + r));
                unsigned char* out = bits + (y0 + r) * stride;
                for (int x = 0; x < width; ++x) {
                    if (keyed[x] == 0 && (own[x] & 0x00FFFFFFu) != 0)
                        out[x >> 3] |= static_cast<unsigned char>(1u << (x & 7));
                }
            }
        }
    });
    return m;
}

QImage compositeWithMask(const QImage& photo, const BackdropMask& mask, const QImage& bkg, QImage& into)
{
    const int w = photo.width(), h = photo.height();
    if (!mask.valid || photo.size() != QSize(mask.width, mask.height) || !plain32(photo.format())
        || !plain32(bkg.format()) || bkg.width() < w || bkg.height() < h) {
        // Keyed again here, as the key mask keys such a photo.
        into = photo;
        maskOut(into, bkg, mask.key);
        return into;
    }
    // The composite carries the photo's own resolution, offset, colour space
    // and text, as keying the photo in place keeps them: the encoders write
    // them. Text cannot be taken off an image, so memory holding another
    // photo's text is not reused.
    if (into.size() != photo.size() || into.format() != photo.format() || !into.isDetached()
        || into.textKeys() != photo.textKeys()) {
        into = QImage(photo.size(), photo.format());
    }
    if (into.isNull())
        return into;
    carryDetails(photo, into);
    // The key mask's row path stores the background's word, opaque when
    // either image has no alpha channel.
    const QRgb fill = (photo.format() == QImage::Format_RGB32 || bkg.format() == QImage::Format_RGB32) ? 0xFF000000u : 0u;
    const unsigned char* bits = mask.bits.data();
    const qsizetype stride = mask.bytesPerRow;
    // Row pointers from this thread: the pool's threads touch raw rows only.
    uchar* out = into.bits();
    const qsizetype outStride = into.bytesPerLine();
    forRowsOnPool(h, qsizetype(w) * h, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const auto* p = reinterpret_cast<const QRgb*>(photo.constScanLine(y));
            const auto* b = reinterpret_cast<const QRgb*>(bkg.constScanLine(y));
            auto* c = reinterpret_cast<QRgb*>(out + y * outStride);
            const unsigned char* m = bits + y * stride;
            std::memcpy(c, p, size_t(w) * sizeof(QRgb));
            for (int x = 0; x < w; x += 8) {
                const unsigned byte = m[x >> 3];
                if (byte == 0)
                    continue; // eight pixels of the subject
                const int n = std::min(8, w - x);
                for (int i = 0; i < n; ++i) {
                    if (byte & (1u << i))
                        c[x + i] = b[x + i] | fill;
                }
            }
        }
    });
    return into;
}

} // namespace keying
