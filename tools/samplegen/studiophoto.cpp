// SPDX-License-Identifier: MIT
#include "studiophoto.h"

#include "canvas.h"
#include "figure.h"
#include "noise.h"

#include <algorithm>
#include <cmath>

namespace samplegen {

namespace {

constexpr int kWidth = 1800;
constexpr int kHeight = 1200;
constexpr double kTwoPi = 6.28318530717958647692;

enum class Screen { Green, Blue };

struct Backdrop
{
    double r, g, b;      // the cloth's colour where the light is nominal
    Screen screen;
    std::uint64_t seed;
};

// The backdrop as the camera sees it without the person: a hot spot in the
// middle, darker corners, vertical folds of the hanging cloth, a few creases
// where it was folded for storage, the sweep onto the floor, and the person's
// shadows on wall and floor.
QImage paintBackdrop(const Backdrop& bd, const Figure& fig, const Plane& personAlpha)
{
    const int w = kWidth;
    const int h = kHeight;

    // The key light stands to the front left, so the person's shadow falls on
    // the wall to the right and a little low.
    Plane shifted(w, h);
    const int sx = 46, sy = 18;
    for (int y = sy; y < h; ++y)
        for (int x = sx; x < w; ++x)
            shifted.at(x, y) = personAlpha.at(x - sx, y - sy);
    const Plane wallShadow = blurred(shifted, 20, 3);

    Rng rng(bd.seed);
    const double phase1 = rng.range(0, kTwoPi);
    const double phase2 = rng.range(0, kTwoPi);
    double creaseY[3];
    double creaseA[3];
    for (int i = 0; i < 3; ++i) {
        creaseY[i] = rng.range(0.08, 0.6) * h;
        creaseA[i] = rng.range(0.03, 0.06);
    }
    const double feetX = fig.cx;
    const double feetY = fig.solesY();

    QImage out(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        const double floorT = smoothstep(0.70 * h, 0.86 * h, y);
        // the cloth hangs more loosely towards its top
        const double foldWeight = (1.0 - floorT) * (0.6 + 0.4 * (1.0 - double(y) / h));
        const double sway = 18.0 * std::sin(y / 210.0 + 1.3) + 40.0 * (fbm1(y / 380.0, bd.seed + 3, 2) - 0.5);
        for (int x = 0; x < w; ++x) {
            const double dxh = (x - 0.52 * w) / (0.42 * w);
            const double dyh = (y - 0.40 * h) / (0.50 * h);
            const double hot = std::exp(-0.5 * (dxh * dxh + dyh * dyh));
            const double rx = (x - 0.5 * w) / (0.5 * w);
            const double ry = (y - 0.5 * h) / (0.5 * h);
            const double vignette = 1.0 - 0.24 * std::pow((rx * rx + ry * ry) / 2.0, 1.1);
            double light = (0.74 + 0.30 * hot) * vignette;

            const double xw = x + sway;
            const double fold = 0.055 * std::sin(kTwoPi * xw / 230.0 + phase1)
                + 0.035 * std::sin(kTwoPi * xw / 97.0 + phase2)
                + 0.10 * (fbm1(xw / 70.0, bd.seed + 5, 3) - 0.5);
            double crease = 0.0;
            for (int i = 0; i < 3; ++i) {
                const double d = (y - creaseY[i]) / 3.5;
                if (std::fabs(d) < 6.0)
                    crease += creaseA[i] * std::exp(-d * d) * (2.0 * valueNoise1(x / 140.0, bd.seed + 20 + i) - 1.0);
            }
            const double texture = 1.0 + 0.06 * (fbm(x / 30.0, y / 30.0, bd.seed + 7, 3) - 0.5);

            // floor: a little darker than the lit wall, with the person's shadows
            light *= 1.0 - 0.1 * floorT;
            double shadow = 1.0 - 0.2 * wallShadow.at(x, y) * (1.0 - floorT);
            const double fx = (x - feetX - 40.0) / 300.0;
            const double fy = (y - feetY + 4.0) / 46.0;
            const double ground = std::exp(-1.4 * (fx * fx + fy * fy));
            const double cx = (x - feetX) / 170.0;
            const double cy = (y - feetY + 8.0) / 16.0;
            const double contact = std::exp(-1.6 * (cx * cx + cy * cy));
            shadow *= (1.0 - 0.55 * ground * floorT) * (1.0 - 0.4 * contact * floorT);

            const double f = light * (1.0 + fold * foldWeight) * (1.0 + crease * (1.0 - floorT)) * texture * shadow;
            // where the light is strongest the cloth's colour starts to wash out
            const double wash = std::max(0.0, light - 1.0) * 40.0;
            line[x] = packRgb(bd.r * f + wash, bd.g * f + wash, bd.b * f + wash);
        }
    }
    return out;
}

StudioPhoto makePhoto(const Backdrop& bd, const Figure& fig)
{
    QImage layer(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QImage labels(kWidth, kHeight, QImage::Format_RGB32);
    labels.fill(qRgb(RegionBackdrop, RegionBackdrop, RegionBackdrop));
    paintFigure(fig, layer, labels);

    const Plane alpha = alphaPlane(layer);
    QImage photo = paintBackdrop(bd, fig, alpha);

    // Light bounced off the backdrop tints the person's edges a little.
    const Plane edge = blurred(alpha, 6, 3);
    StudioPhoto result;
    result.truth = QImage(kWidth, kHeight, QImage::Format_Grayscale8);
    for (int y = 0; y < kHeight; ++y) {
        auto* dst = reinterpret_cast<QRgb*>(photo.scanLine(y));
        const auto* src = reinterpret_cast<const QRgb*>(layer.constScanLine(y));
        const auto* lab = reinterpret_cast<const QRgb*>(labels.constScanLine(y));
        uchar* truth = result.truth.scanLine(y);
        for (int x = 0; x < kWidth; ++x) {
            const QRgb p = src[x];
            const int a = qAlpha(p);
            truth[x] = a == 255 ? static_cast<uchar>(qBlue(lab[x]))
                                 : static_cast<uchar>(a == 0 ? RegionBackdrop : RegionMixed);
            if (a == 0)
                continue;
            const double k = 1.0 - a / 255.0;
            double r = qRed(p) + qRed(dst[x]) * k;
            double g = qGreen(p) + qGreen(dst[x]) * k;
            double b = qBlue(p) + qBlue(dst[x]) * k;
            const double spill = (a / 255.0) * std::clamp((1.0 - edge.at(x, y)) * 2.2, 0.0, 1.0);
            const double lum = 0.3 * r + 0.59 * g + 0.11 * b;
            const double lift = spill * (0.10 * lum + 6.0);
            r -= spill * 3.0;
            if (bd.screen == Screen::Green) {
                g += lift;
                b -= spill * 3.0;
            } else {
                b += lift;
                g -= spill * 3.0;
            }
            dst[x] = packRgb(r, g, b);
        }
    }
    addSensorNoise(photo, 2.6, 1.8, bd.seed + 100);
    result.image = photo;
    return result;
}

} // namespace

StudioPhoto makeGreenScreenPhoto()
{
    Figure man;
    man.cx = 930;
    man.top = 118;
    man.height = 1030;
    man.skin = QColor(226, 178, 148);
    man.hair = QColor(36, 27, 22);
    man.clothing = QColor(54, 54, 60);
    man.trousers = QColor(32, 32, 36);
    man.shoes = QColor(24, 19, 17);
    man.shirtAndTie = true;
    man.seed = 0x5eed0001;
    return makePhoto(Backdrop{52, 172, 68, Screen::Green, 0x6a11e0}, man);
}

StudioPhoto makeBlueScreenPhoto()
{
    Figure woman;
    woman.cx = 860;
    woman.top = 140;
    woman.height = 990;
    woman.skin = QColor(210, 156, 122);
    woman.hair = QColor(46, 31, 24);
    woman.clothing = QColor(124, 34, 52);
    woman.trousers = QColor(36, 34, 38);
    woman.shoes = QColor(44, 22, 26);
    woman.longHair = true;
    woman.handOnHip = true;
    woman.seed = 0x5eed0002;
    return makePhoto(Backdrop{40, 84, 196, Screen::Blue, 0xb10e5c}, woman);
}

} // namespace samplegen
