// SPDX-License-Identifier: MIT
#include "keying/cutout.h"

#include "keying/keymask.h"

namespace keying {

namespace {

// The photo's pixels as the key mask reads them: 32-bit ARGB words (its
// per-pixel reads of other formats give the same words).
QImage asArgbWords(const QImage& photo)
{
    return photo.format() == QImage::Format_ARGB32 ? photo : photo.convertToFormat(QImage::Format_ARGB32);
}

} // namespace

QImage cutOut(const QImage& photo, QRgb key)
{
    if (photo.isNull())
        return QImage();
    QImage words = asArgbWords(photo);
    // Keying against a wholly transparent background stores its word, alpha
    // included, exactly where a composite would show the background.
    QImage clear(words.size(), QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    maskOut(words, clear, key);
    return words;
}

QImage compositeFromCutOut(QImage photo, const QImage& cut, const QImage& bkg, QRgb key)
{
    const auto plain32 = [](QImage::Format f) { return f == QImage::Format_RGB32 || f == QImage::Format_ARGB32; };
    const int w = photo.width();
    if (!plain32(photo.format()) || !plain32(bkg.format()) || bkg.width() < w || bkg.height() < photo.height()
        || cut.size() != photo.size() || cut.format() != QImage::Format_ARGB32) {
        // The key mask reads other formats pixel by pixel, with rounding of
        // their own: keyed again here, as the key mask keys them.
        maskOut(photo, bkg, key);
        return photo;
    }
    // The key mask's row path. The cut-out holds 0 exactly where the key
    // took a pixel, or where the photo's pixel has no colour at all, which no
    // key takes; there the background's word is stored, opaque when either
    // image has no alpha channel.
    const QRgb fill = (photo.format() == QImage::Format_RGB32 || bkg.format() == QImage::Format_RGB32) ? 0xFF000000u : 0u;
    for (int y = 0; y < photo.height(); ++y) {
        const auto* c = reinterpret_cast<const QRgb*>(cut.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(bkg.constScanLine(y));
        auto* p = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < w; ++x) {
            if (c[x] == 0 && (p[x] & 0x00FFFFFFu) != 0)
                p[x] = b[x] | fill;
        }
    }
    return photo;
}

double backdropShare(const QImage& photo, QRgb key)
{
    if (photo.isNull() || photo.width() <= 0 || photo.height() <= 0)
        return 0.0;
    const KeyColour k = keyColourOf(key);
    if (!k.greenKey && !k.blueKey)
        return 0.0; // such a key replaces nothing
    const QImage words = asArgbWords(photo);
    qint64 backdrop = 0;
    for (int y = 0; y < words.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(words.constScanLine(y));
        for (int x = 0; x < words.width(); ++x)
            backdrop += isBackdrop(k, row[x]) ? 1 : 0;
    }
    return double(backdrop) / (double(words.width()) * words.height());
}

} // namespace keying
