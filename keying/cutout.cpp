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
