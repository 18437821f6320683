// SPDX-License-Identifier: MIT
#include "backgrounds.h"

#include "canvas.h"
#include "noise.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace samplegen {

namespace {

constexpr int W = 1800;
constexpr int H = 1200;

struct Rgb
{
    double r, g, b;
};

Rgb mixRgb(const Rgb& a, const Rgb& b, double t)
{
    return {lerp(a.r, b.r, t), lerp(a.g, b.g, t), lerp(a.b, b.b, t)};
}

Rgb scaleRgb(const Rgb& a, double f) { return {a.r * f, a.g * f, a.b * f}; }

// A vertical ramp through several colours.
Rgb ramp(const std::vector<std::pair<double, Rgb>>& stops, double t)
{
    if (t <= stops.front().first)
        return stops.front().second;
    for (size_t i = 1; i < stops.size(); ++i) {
        if (t <= stops[i].first) {
            const double k = (t - stops[i - 1].first) / (stops[i].first - stops[i - 1].first);
            return mixRgb(stops[i - 1].second, stops[i].second, smooth(k));
        }
    }
    return stops.back().second;
}

template <typename Fn>
QImage perPixel(Fn colourAt)
{
    QImage img(W, H, QImage::Format_RGB32);
    for (int y = 0; y < H; ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < W; ++x) {
            const Rgb c = colourAt(x, y);
            line[x] = packRgb(c.r, c.g, c.b);
        }
    }
    return img;
}

Rgb sunGlow(Rgb c, double x, double y, double sx, double sy, double radius, double strength)
{
    const double d = std::hypot(x - sx, y - sy);
    const double glow = strength * std::exp(-d / radius) + (d < radius * 0.22 ? 1.0 : std::exp(-(d - radius * 0.22) / 6.0));
    const Rgb warm{255, 246, 225};
    return mixRgb(c, warm, std::min(1.0, glow));
}

// --- landscape -----------------------------------------------------------

void conifer(QPainter& p, QPointF base, double height, const QColor& c)
{
    const double w = height * 0.42;
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(70, 50, 35));
    p.drawRect(QRectF(base.x() - w * 0.06, base.y() - height * 0.15, w * 0.12, height * 0.15));
    for (int tier = 0; tier < 4; ++tier) {
        const double bottom = base.y() - height * (0.1 + tier * 0.2);
        const double top = bottom - height * 0.38;
        const double half = w * (0.5 - tier * 0.1);
        QPainterPath t;
        t.moveTo(base.x() - half, bottom);
        t.lineTo(base.x(), top);
        t.lineTo(base.x() + half, bottom);
        t.quadTo(base.x(), bottom - height * 0.05, base.x() - half, bottom);
        QLinearGradient g(base.x() - half, 0, base.x() + half, 0);
        g.setColorAt(0, shade(c, 1.25));
        g.setColorAt(1, shade(c, 0.7));
        p.setBrush(g);
        p.drawPath(t);
    }
}

void leafyTree(QPainter& p, QPointF base, double height, const QColor& c, Rng& rng)
{
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(80, 58, 40));
    p.drawRect(QRectF(base.x() - height * 0.04, base.y() - height * 0.45, height * 0.08, height * 0.45));
    for (int i = 0; i < 7; ++i) {
        const QPointF centre = base + QPointF(rng.range(-0.22, 0.22) * height, -rng.range(0.5, 0.85) * height);
        const double r = rng.range(0.16, 0.26) * height;
        QRadialGradient g(centre - QPointF(r * 0.35, r * 0.35), r * 1.3);
        g.setColorAt(0, shade(c, 1.35));
        g.setColorAt(1, shade(c, 0.65));
        p.setBrush(g);
        p.drawEllipse(centre, r, r * 0.9);
    }
}

QImage landscape()
{
    const std::uint64_t s = 0x1a2d;
    auto farRidge = [&](double x) {
        return 0.52 * H - 0.28 * H * std::clamp((fbm1(x / 380.0, s + 1, 5) - 0.25) / 0.5, 0.0, 1.0);
    };
    auto nearRidge = [&](double x) { return 0.62 * H - 0.12 * H * fbm1(x / 300.0, s + 2, 5); };
    auto meadowTop = [&](double x) { return 0.70 * H - 0.05 * H * fbm1(x / 520.0, s + 3, 3); };
    const Rgb skyTop{58, 116, 200}, skyHorizon{196, 220, 240};

    QImage img = perPixel([&](int x, int y) -> Rgb {
        const double fr = farRidge(x), nr = nearRidge(x), mt = meadowTop(x);
        if (y < fr) {
            Rgb c = mixRgb(skyTop, skyHorizon, std::pow(std::clamp(y / (0.55 * H), 0.0, 1.0), 0.9));
            const double cl = fbm(x / 380.0, y / 110.0, s + 4, 5);
            const double density = smoothstep(0.5, 0.7, cl) * (1.0 - smoothstep(0.3 * H, 0.46 * H, y));
            const double body = 0.97 - 0.1 * smoothstep(0.6, 0.85, cl);
            c = mixRgb(c, Rgb{250 * body, 250 * body, 252 * body + 3}, density);
            return sunGlow(c, x, y, 0.76 * W, 0.15 * H, 160.0, 0.55);
        }
        if (y < nr) {
            // far mountains: rock lit from the upper right, shaded gullies, snow
            // above a ragged snow line, haze towards their feet
            const double depth = y - fr;
            const double gx = fbm((x + 2) / 70.0, y / 110.0, s + 5, 5) - fbm((x - 2) / 70.0, y / 110.0, s + 5, 5);
            const double ridgeSlope = (farRidge(x + 3) - farRidge(x - 3)) * std::exp(-depth / 90.0);
            const double lit = std::clamp(1.0 + 9.0 * gx + 0.02 * ridgeSlope, 0.65, 1.3);
            const double rock = 0.9 + 0.2 * fbm(x / 18.0, y / 18.0, s + 13, 3);
            Rgb c = scaleRgb(Rgb{112, 128, 164}, lit * rock);
            const double snowLine = 0.37 * H + 0.05 * H * (fbm(x / 60.0, y / 25.0, s + 6, 4) - 0.5) * 2.0
                + 0.03 * H * std::sin(x / 47.0 + 3.0 * fbm(x / 80.0, y / 40.0, s + 14, 2));
            if (y < snowLine)
                c = scaleRgb(Rgb{238, 242, 250}, std::clamp(0.82 + 0.6 * (lit - 1.0) + 0.12, 0.7, 1.04));
            return mixRgb(c, skyHorizon, 0.2 + 0.3 * smoothstep(fr, nr + 40, y));
        }
        if (y < mt) {
            // forested hills
            const double canopy = 0.75 + 0.5 * fbm(x / 14.0, y / 14.0, s + 7, 3);
            const double slope = nearRidge(x + 3) - nearRidge(x - 3);
            Rgb c = scaleRgb(Rgb{46, 86, 58}, canopy * std::clamp(1.0 + 0.03 * slope, 0.75, 1.2));
            return mixRgb(c, skyHorizon, 0.18 * (1.0 - smoothstep(nr, mt, y)));
        }
        // meadow, brighter and coarser towards the viewer
        const double t = (y - mt) / (H - mt);
        Rgb c = mixRgb(Rgb{120, 168, 76}, Rgb{88, 146, 52}, t);
        const double grass = 0.92 + 0.16 * fbm(x / (3.0 + 10.0 * t), y / (20.0 + 30.0 * t), s + 8, 3);
        const double patches = 0.9 + 0.2 * fbm(x / 260.0, y / 90.0, s + 9, 3);
        c = scaleRgb(c, grass * patches);
        c.r += 18.0 * smoothstep(0.55, 0.75, fbm(x / 180.0, y / 70.0, s + 10, 3));  // dry patches
        return c;
    });

    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    Rng rng(s + 11);
    // a line of conifers along the forest's edge, then a few trees in the meadow
    for (int i = 0; i < 26; ++i) {
        const double x = rng.range(0, W);
        const double y = meadowTop(x) + rng.range(2, 12);
        conifer(p, QPointF(x, y), rng.range(40, 75), QColor(34, 72, 44));
    }
    for (int i = 0; i < 5; ++i) {
        const double x = rng.range(0.05, 0.95) * W;
        const double y = rng.range(0.78, 0.9) * H;
        leafyTree(p, QPointF(x, y), rng.range(120, 190) * (y / H), QColor(58, 112, 48), rng);
    }
    // wild flowers in the foreground
    p.setPen(Qt::NoPen);
    const QColor flowers[] = {QColor(250, 240, 120), QColor(255, 255, 250), QColor(190, 120, 220), QColor(240, 90, 80)};
    for (int i = 0; i < 900; ++i) {
        const double y = rng.range(0.8, 1.0) * H;
        const double x = rng.range(0, W);
        const double r = 1.0 + 3.0 * (y - 0.8 * H) / (0.2 * H) * rng.range(0.5, 1.0);
        p.setBrush(flowers[rng.intRange(0, 4)]);
        p.drawEllipse(QPointF(x, y), r, r * 0.8);
    }
    p.end();
    addSensorNoise(img, 1.6, 0.8, s + 12);
    return img;
}

// --- city ------------------------------------------------------------------

void windowGrid(QPainter& p, const QRectF& facade, Rng& rng, double litChance, double scale)
{
    const double ww = rng.range(9, 14) * scale;
    const double wh = rng.range(14, 20) * scale;
    const double gx = ww * rng.range(1.6, 2.2);
    const double gy = wh * rng.range(1.5, 1.9);
    for (double y = facade.top() + gy * 0.8; y + wh < facade.bottom() - gy * 0.3; y += gy) {
        for (double x = facade.left() + gx * 0.5; x + ww < facade.right() - gx * 0.3; x += gx) {
            QColor c;
            if (rng.chance(litChance)) {
                const double warm = rng.range(0.75, 1.0);
                c = QColor(clampByte(255 * warm), clampByte(rng.range(190, 225) * warm), clampByte(rng.range(100, 150) * warm));
            } else {
                c = QColor(clampByte(rng.range(30, 60)), clampByte(rng.range(36, 62)), clampByte(rng.range(60, 95)));
            }
            p.fillRect(QRectF(x, y, ww, wh), c);
        }
    }
}

QImage city()
{
    const std::uint64_t s = 0xc17e;
    const double street = 0.82 * H;
    QImage img = perPixel([&](int x, int y) -> Rgb {
        const double t = double(y) / street;
        Rgb c = ramp({{0.0, Rgb{26, 34, 88}}, {0.35, Rgb{92, 72, 140}}, {0.62, Rgb{220, 120, 110}},
                      {0.85, Rgb{252, 170, 98}}, {1.0, Rgb{255, 200, 130}}}, t);
        const double streak = fbm(x / 520.0, y / 26.0, s + 1, 4);
        const double cloud = smoothstep(0.55, 0.75, streak) * (1.0 - smoothstep(0.5 * H, 0.7 * H, y));
        c = mixRgb(c, Rgb{255, 160, 150}, 0.55 * cloud);
        return c;
    });

    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    Rng rng(s + 2);
    // distant towers in the haze
    for (double x = -40; x < W;) {
        const double w = rng.range(50, 130);
        const double h = rng.range(0.16, 0.42) * H;
        const QRectF r(x, street - h, w, h);
        p.fillRect(r, QColor(104, 82, 124));
        p.setOpacity(0.6);
        windowGrid(p, r, rng, 0.18, 0.6);
        p.setOpacity(1.0);
        x += w + rng.range(-10, 20);
    }
    // a tall tower with a spire
    {
        const QRectF tower(0.63 * W, street - 0.72 * H, 120, 0.72 * H);
        QLinearGradient g(tower.left(), 0, tower.right(), 0);
        g.setColorAt(0, QColor(96, 86, 104));
        g.setColorAt(1, QColor(44, 42, 58));
        p.fillRect(tower, g);
        windowGrid(p, tower, rng, 0.45, 0.8);
        p.setPen(QPen(QColor(60, 56, 70), 5));
        p.drawLine(QPointF(tower.center().x(), tower.top()), QPointF(tower.center().x(), tower.top() - 110));
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(255, 60, 50));
        p.drawEllipse(QPointF(tower.center().x(), tower.top() - 112), 5, 5);
    }
    // near buildings
    const QColor palette[] = {QColor(58, 54, 70), QColor(72, 60, 62), QColor(50, 60, 76), QColor(80, 70, 64),
                              QColor(64, 64, 74)};
    for (double x = -60; x < W;) {
        const double w = rng.range(110, 240);
        const double h = rng.range(0.22, 0.58) * H;
        const QColor c = palette[rng.intRange(0, 5)];
        QRectF r(x, street - h, w, h);
        if (std::fabs(r.center().x() - 0.63 * W - 60) < 90 && h > 0.3 * H)
            r.setTop(street - 0.28 * H);  // keep the tall tower in sight
        QLinearGradient g(r.left(), 0, r.right(), 0);
        g.setColorAt(0, shade(c, 1.35));
        g.setColorAt(0.12, shade(c, 1.05));
        g.setColorAt(1, shade(c, 0.75));
        p.fillRect(r, g);
        windowGrid(p, r, rng, 0.42, 1.0);
        if (rng.chance(0.4)) {
            // a set-back top floor with a water tank or an aerial
            const QRectF top(r.left() + w * 0.2, r.top() - 40, w * 0.5, 40);
            p.fillRect(top, shade(c, 0.9));
            p.setPen(QPen(shade(c, 0.6), 3));
            p.drawLine(QPointF(top.center().x(), top.top()), QPointF(top.center().x(), top.top() - 50));
            p.setPen(Qt::NoPen);
        }
        x += w + rng.range(4, 26);
    }
    // the street: pavement, kerb, road with markings and the trails of passing cars
    p.fillRect(QRectF(0, street, W, 0.05 * H), QColor(96, 92, 98));
    p.fillRect(QRectF(0, street + 0.05 * H, W, 6), QColor(140, 134, 138));
    QLinearGradient road(0, street + 0.05 * H, 0, H);
    road.setColorAt(0, QColor(54, 52, 60));
    road.setColorAt(1, QColor(38, 38, 44));
    p.fillRect(QRectF(0, street + 0.05 * H + 6, W, H), road);
    for (double x = 10; x < W; x += 140)
        p.fillRect(QRectF(x, 0.935 * H, 80, 7), QColor(230, 226, 210));
    for (int i = 0; i < 3; ++i) {
        const double y = (0.9 + 0.02 * i) * H;
        QLinearGradient trail(0, 0, W, 0);
        trail.setColorAt(0, QColor(255, 40, 30, 0));
        trail.setColorAt(0.5, QColor(255, 60, 40, 200));
        trail.setColorAt(1, QColor(255, 40, 30, 40));
        p.fillRect(QRectF(0, y, W, 3), trail);
        QLinearGradient white(0, 0, W, 0);
        white.setColorAt(0, QColor(255, 250, 220, 50));
        white.setColorAt(0.6, QColor(255, 250, 220, 220));
        white.setColorAt(1, QColor(255, 250, 220, 0));
        p.fillRect(QRectF(0, y + 0.06 * H, W, 3), white);
    }
    // street lamps and their pools of light
    for (double x = 120; x < W; x += 420) {
        const double top = street - 0.2 * H;
        p.setPen(QPen(QColor(30, 30, 36), 7));
        p.drawLine(QPointF(x, street + 0.03 * H), QPointF(x, top));
        p.drawLine(QPointF(x, top), QPointF(x + 40, top));
        p.setPen(Qt::NoPen);
        QRadialGradient glow(QPointF(x + 40, top + 6), 90);
        glow.setColorAt(0, QColor(255, 236, 180, 255));
        glow.setColorAt(0.12, QColor(255, 220, 150, 200));
        glow.setColorAt(1, QColor(255, 200, 120, 0));
        p.setBrush(glow);
        p.drawEllipse(QPointF(x + 40, top + 6), 90, 90);
        QRadialGradient pool(QPointF(x + 40, street + 0.04 * H), 140);
        pool.setColorAt(0, QColor(255, 210, 140, 90));
        pool.setColorAt(1, QColor(255, 210, 140, 0));
        p.setBrush(pool);
        p.drawEllipse(QPointF(x + 40, street + 0.04 * H), 140, 40);
    }
    p.end();
    addSensorNoise(img, 2.0, 1.0, s + 3);
    return img;
}

// --- beach -------------------------------------------------------------------

void palm(QPainter& p, QPointF base, QPointF crown, Rng& rng)
{
    // trunk: a curved, tapering band with rings
    const QPointF bend = (base + crown) / 2 + QPointF(90, 0);
    QPainterPath spine;
    spine.moveTo(base);
    spine.quadTo(bend, crown);
    const int steps = 40;
    for (int i = 0; i < steps; ++i) {
        const double t = double(i) / steps;
        const QPointF a = spine.pointAtPercent(t);
        const QPointF b = spine.pointAtPercent(t + 1.0 / steps);
        const double w = lerp(34, 18, t);
        QLinearGradient g(a.x() - w, 0, a.x() + w, 0);
        g.setColorAt(0, QColor(150, 118, 80));
        g.setColorAt(0.6, QColor(118, 88, 58));
        g.setColorAt(1, QColor(80, 60, 40));
        p.setPen(QPen(QBrush(g), w, Qt::SolidLine, Qt::FlatCap));
        p.drawLine(a, b);
        p.setPen(QPen(QColor(70, 52, 34, 150), 2));
        p.drawLine(a - QPointF(w / 2, 0), a + QPointF(w / 2, 0));
    }
    // fronds
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 11; ++i) {
        const double ang = -3.14159 + i * 3.14159 / 10.0 + rng.range(-0.15, 0.15);
        const double len = rng.range(220, 300);
        const QPointF tip = crown + QPointF(std::cos(ang) * len, std::sin(ang) * len * 0.45 + len * 0.35);
        const QPointF ctrl = crown + QPointF(std::cos(ang) * len * 0.5, -len * 0.25);
        QPainterPath leaf;
        const QPointF n(0, 14);
        leaf.moveTo(crown);
        leaf.quadTo(ctrl - n, tip);
        leaf.quadTo(ctrl + n, crown);
        QLinearGradient g(crown, tip);
        g.setColorAt(0, QColor(40, 100, 46));
        g.setColorAt(1, QColor(86, 150, 60));
        p.setBrush(g);
        p.drawPath(leaf);
        // leaflets along the frond
        QPainterPath rib;
        rib.moveTo(crown);
        rib.quadTo(ctrl, tip);
        for (int k = 1; k < 18; ++k) {
            const double t = k / 18.0;
            const QPointF at = rib.pointAtPercent(t);
            const double a2 = rib.angleAtPercent(t) * 3.14159 / 180.0;
            const QPointF dir(std::cos(a2), -std::sin(a2));
            const QPointF side(-dir.y(), dir.x());
            const double l = 40 * (1.0 - t * 0.6);
            p.setPen(QPen(QColor(50, 118, 52), 4, Qt::SolidLine, Qt::RoundCap));
            p.drawLine(at, at + side * l + dir * (l * 0.6));
            p.drawLine(at, at - side * l * 0.6 + dir * (l * 0.6) + QPointF(0, l * 0.5));
        }
        p.setPen(Qt::NoPen);
    }
    p.setBrush(QColor(92, 70, 38));
    for (int i = 0; i < 3; ++i)
        p.drawEllipse(crown + QPointF(rng.range(-14, 14), rng.range(8, 22)), 12, 12);
}

QImage beach()
{
    const std::uint64_t s = 0xbeac4;
    const double horizon = 0.46 * H;
    auto shore = [&](double x) {
        return 0.68 * H + 0.025 * H * std::sin(x / 260.0 + 0.5) + 0.03 * H * (fbm1(x / 160.0, s + 1, 3) - 0.5);
    };
    const double sunX = 0.24 * W, sunY = 0.14 * H;
    QImage img = perPixel([&](int x, int y) -> Rgb {
        const double sh = shore(x);
        if (y < horizon) {
            Rgb c = mixRgb(Rgb{60, 140, 222}, Rgb{190, 224, 246}, std::pow(double(y) / horizon, 1.4));
            const double cl = fbm(x / 300.0, y / 90.0, s + 2, 5);
            const double density = smoothstep(0.52, 0.7, cl) * smoothstep(0.2 * H, 0.34 * H, y);
            c = mixRgb(c, Rgb{252, 252, 255}, density * (0.95 - 0.2 * smoothstep(0.65, 0.85, cl)));
            return sunGlow(c, x, y, sunX, sunY, 140.0, 0.6);
        }
        if (y < sh) {
            const double d = (y - horizon) / (sh - horizon);
            Rgb c = mixRgb(Rgb{22, 84, 142}, Rgb{44, 176, 180}, std::pow(d, 1.3));
            const double wave = fbm(x / (300.0 - 200.0 * d), y / (3.0 + 10.0 * d), s + 3, 4);
            c = scaleRgb(c, 0.9 + 0.25 * wave);
            const double cap = smoothstep(0.72, 0.8, wave) * (0.3 + 0.7 * d);
            c = mixRgb(c, Rgb{240, 248, 250}, 0.7 * cap);
            // glitter of the sun on the water
            const double glint = std::exp(-std::pow((x - sunX) / (120.0 + 240.0 * d), 2.0));
            if (hash01(x, y, s + 4) > 0.985 - 0.03 * glint * (1.0 - d))
                c = mixRgb(c, Rgb{255, 255, 245}, 0.8 * glint);
            if (y - horizon < 2.0)
                c = mixRgb(c, Rgb{190, 220, 240}, 0.5);
            return c;
        }
        const double below = y - sh;
        const double foamEdge = 10.0 + 8.0 * fbm(x / 40.0, 0.0, s + 5, 3);
        if (below < foamEdge) {
            const double foam = 0.75 + 0.25 * fbm(x / 6.0, y / 3.0, s + 6, 3);
            return Rgb{240 * foam, 244 * foam, 242 * foam};
        }
        const double wet = 1.0 - smoothstep(foamEdge, foamEdge + 0.05 * H, below);
        const double t = (y - sh) / (H - sh);
        Rgb sand = mixRgb(Rgb{222, 198, 154}, Rgb{240, 220, 178}, t);
        const double ripple = 1.0 + 0.025 * std::sin(y / 5.0 + 6.0 * fbm(x / 120.0, y / 120.0, s + 7, 3));
        const double grain = 1.0 + 0.05 * (hash01(x, y, s + 8) - 0.5);
        sand = scaleRgb(sand, ripple * grain * (0.95 + 0.1 * fbm(x / 200.0, y / 80.0, s + 9, 3)));
        return mixRgb(sand, Rgb{176, 150, 114}, 0.75 * wet);
    });

    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    Rng rng(s + 10);
    // a sailing boat far out
    {
        const QPointF at(0.62 * W, horizon + 14);
        QPainterPath hull;
        hull.moveTo(at + QPointF(-22, 0));
        hull.lineTo(at + QPointF(22, 0));
        hull.lineTo(at + QPointF(16, 6));
        hull.lineTo(at + QPointF(-16, 6));
        hull.closeSubpath();
        p.fillPath(hull, QColor(70, 60, 60));
        QPainterPath sail;
        sail.moveTo(at + QPointF(-2, -2));
        sail.lineTo(at + QPointF(-2, -50));
        sail.lineTo(at + QPointF(18, -2));
        sail.closeSubpath();
        p.fillPath(sail, QColor(250, 248, 240));
    }
    // the palm's shadow on the sand, then the palm
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(120, 96, 64, 70));
    p.drawEllipse(QPointF(0.9 * W, 0.965 * H), 230, 28);
    palm(p, QPointF(0.88 * W, 0.97 * H), QPointF(0.79 * W, 0.3 * H), rng);
    p.end();
    addSensorNoise(img, 1.6, 0.8, s + 11);
    return img;
}

// --- studio ------------------------------------------------------------------

QImage studio()
{
    const std::uint64_t s = 0x57d10;
    QImage img = perPixel([&](int x, int y) -> Rgb {
        const double floorT = smoothstep(0.66 * H, 0.9 * H, y);
        const double dx = (x - 0.46 * W) / (0.42 * W);
        const double dy = (y - 0.4 * H) / (0.55 * H);
        const double pool = std::exp(-0.5 * (dx * dx + dy * dy));
        const double rx = (x - 0.5 * W) / (0.5 * W), ry = (y - 0.5 * H) / (0.5 * H);
        const double vignette = 1.0 - 0.35 * std::pow((rx * rx + ry * ry) / 2.0, 1.2);
        double light = (0.5 + 0.62 * pool) * vignette;
        light *= 1.0 + 0.06 * floorT * (1.0 - std::fabs(rx));
        const Rgb wall{186, 174, 160};
        const Rgb floor{178, 166, 152};
        Rgb c = scaleRgb(mixRgb(wall, floor, floorT), light);
        // a smooth, very fine grain: enough to stop banding, little enough to compress
        const double grain = hash01(x, y, s) < 0.5 ? -0.5 : 0.5;
        return Rgb{c.r + grain, c.g + grain, c.b + grain};
    });
    return img;
}

} // namespace

std::vector<Background> makeBackgrounds()
{
    std::vector<Background> list;
    list.push_back({QStringLiteral("beach.jpg"), beach(), "JPEG", 88});
    list.push_back({QStringLiteral("City.JPG"), city(), "JPEG", 88});
    list.push_back({QStringLiteral("landscape.jpg"), landscape(), "JPEG", 88});
    list.push_back({QStringLiteral("studio.png"), studio(), "PNG", 0});
    return list;
}

} // namespace samplegen
