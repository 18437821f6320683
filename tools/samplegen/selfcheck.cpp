// SPDX-License-Identifier: MIT
#include "selfcheck.h"

#include "studiophoto.h"

#include "keying/keymask.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace samplegen {

namespace {

// Places where a user clicks the backdrop: upper left, middle of the left
// edge, upper right, and the two dark upper corners. A corner gives a darker
// key, closer to the dark clothing, so a little more of the outline may go.
struct ClickPoint
{
    double fx, fy;
    double maxSubjectKeyed;
};
constexpr ClickPoint kClicks[] = {
    {0.20, 0.25, 0.01}, {0.10, 0.50, 0.01}, {0.85, 0.30, 0.01}, {0.05, 0.06, 0.04}, {0.95, 0.10, 0.04}};

// A colour none of the photos contains, so a replaced pixel is recognised.
constexpr QRgb kMarker = 0xFFFF00FFu;

constexpr double kMinBackdropKeyed = 0.85;

struct Tally
{
    long total = 0;
    long keyed = 0;
    double fraction() const { return total ? double(keyed) / double(total) : 0.0; }
};

// JPEG's colour blocks smear the backdrop's hue a pixel or two into the
// person's outline; such pixels are told apart from keying holes inside.
bool nearBackdrop(const QImage& truth, int x, int y)
{
    for (int dy = -2; dy <= 2; ++dy) {
        const int yy = y + dy;
        if (yy < 0 || yy >= truth.height())
            continue;
        const uchar* row = truth.constScanLine(yy);
        for (int dx = -2; dx <= 2; ++dx) {
            const int xx = x + dx;
            if (xx >= 0 && xx < truth.width() && (row[xx] == RegionBackdrop || row[xx] == RegionMixed))
                return true;
        }
    }
    return false;
}

} // namespace

bool checkKeying(const QString& name, const QImage& photo, const QImage& truth, const QImage& background,
                 const QString& viewDir)
{
    const QImage original = photo.convertToFormat(QImage::Format_RGB32);
    long markerAlready = 0;
    for (int y = 0; y < original.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(original.constScanLine(y));
        for (int x = 0; x < original.width(); ++x)
            markerAlready += line[x] == kMarker;
    }
    if (markerAlready != 0)
        std::printf("  %s: %ld pixels already have the marker colour; figures are approximate\n",
                    qPrintable(name), markerAlready);

    QImage marker(original.size(), QImage::Format_RGB32);
    marker.fill(kMarker);

    bool ok = true;
    bool first = true;
    for (const ClickPoint& c : kClicks) {
        const int kx = static_cast<int>(c.fx * original.width());
        const int ky = static_cast<int>(c.fy * original.height());
        const QRgb key = original.pixel(kx, ky);
        QImage keyed = original;
        keying::maskOut(keyed, marker, key);

        Tally backdrop, skin, hair, clothing;
        long nearEdge = 0;  // wrongly replaced person pixels within 2 pixels of the backdrop
        for (int y = 0; y < keyed.height(); ++y) {
            const auto* line = reinterpret_cast<const QRgb*>(keyed.constScanLine(y));
            const uchar* region = truth.constScanLine(y);
            for (int x = 0; x < keyed.width(); ++x) {
                Tally* t = nullptr;
                switch (region[x]) {
                case RegionBackdrop: t = &backdrop; break;
                case RegionSkin: t = &skin; break;
                case RegionHair: t = &hair; break;
                case RegionClothing: t = &clothing; break;
                default: break;
                }
                if (!t)
                    continue;
                ++t->total;
                if (line[x] == kMarker) {
                    ++t->keyed;
                    if (t != &backdrop)
                        nearEdge += nearBackdrop(truth, x, y);
                }
            }
        }
        Tally subject;
        subject.total = skin.total + hair.total + clothing.total;
        subject.keyed = skin.keyed + hair.keyed + clothing.keyed;
        const bool pass = backdrop.fraction() >= kMinBackdropKeyed && subject.fraction() < c.maxSubjectKeyed
            && hair.fraction() < c.maxSubjectKeyed;
        ok = ok && pass;
        std::printf("  %s click (%d%%, %d%%) at (%d, %d) key (%d, %d, %d): backdrop replaced %.2f%%; "
                    "subject replaced %.3f%% (skin %.3f%%, hair %.3f%%, clothing %.3f%%; %.0f%% of them at the edge) %s\n",
                    qPrintable(name), int(c.fx * 100 + 0.5), int(c.fy * 100 + 0.5), kx, ky, qRed(key),
                    qGreen(key), qBlue(key), 100.0 * backdrop.fraction(), 100.0 * subject.fraction(),
                    100.0 * skin.fraction(), 100.0 * hair.fraction(), 100.0 * clothing.fraction(),
                    subject.keyed ? 100.0 * double(nearEdge) / double(subject.keyed) : 0.0,
                    pass ? "ok" : "MISSED TARGET");

        if (first && !viewDir.isEmpty()) {
            // Pictures to look at: the composite over a real background, and
            // the marker version that shows what was left behind.
            const QString base = QFileInfo(name).completeBaseName();
            keyed.scaledToWidth(900, Qt::SmoothTransformation)
                .save(QDir(viewDir).filePath(QStringLiteral("keyed-marker-%1.png").arg(base)));
            if (!background.isNull()) {
                QImage composite = original;
                keying::maskOut(composite, background, key);
                composite.scaledToWidth(900, Qt::SmoothTransformation)
                    .save(QDir(viewDir).filePath(QStringLiteral("keyed-%1.png").arg(base)));
            }
        }
        first = false;
    }
    return ok;
}

} // namespace samplegen
