// SPDX-License-Identifier: MIT
#include "tools/groundtruth/subjects.h"

#include "tools/groundtruth/random.h"

#include <algorithm>
#include <cmath>

namespace groundtruth {

namespace {

constexpr double kPi = 3.14159265358979323846;

Rgb pick(Random& rnd, std::initializer_list<Rgb> palette)
{
    return *(palette.begin() + rnd.below(static_cast<int>(palette.size())));
}

Rgb scaled(Rgb c, float f)
{
    return {std::clamp(c.r * f, 0.0f, 1.0f), std::clamp(c.g * f, 0.0f, 1.0f), std::clamp(c.b * f, 0.0f, 1.0f)};
}

Rgb skinColour(Random& rnd)
{
    return pick(rnd, {{0.93f, 0.76f, 0.63f}, {0.80f, 0.58f, 0.42f}, {0.55f, 0.36f, 0.24f}, {0.36f, 0.24f, 0.17f}});
}

Rgb clothColour(Random& rnd)
{
    return pick(rnd, {{0.90f, 0.50f, 0.15f}, {0.45f, 0.30f, 0.18f}, {0.90f, 0.80f, 0.30f}, {0.75f, 0.16f, 0.15f},
                      {0.55f, 0.53f, 0.52f}, {0.92f, 0.90f, 0.85f}, {0.45f, 0.25f, 0.42f}, {0.12f, 0.11f, 0.11f}});
}

// Blond, yellow, brown, black, grey and auburn hair, chosen by the seed.
Rgb hairColour(Random& rnd)
{
    return pick(rnd, {{0.86f, 0.72f, 0.42f}, {0.94f, 0.83f, 0.42f}, {0.42f, 0.27f, 0.15f}, {0.07f, 0.06f, 0.06f},
                      {0.68f, 0.68f, 0.66f}, {0.62f, 0.28f, 0.12f}});
}

// Soft shading across a solid: darker towards its rim, with slow waves.
float shade(float nx, float ny, float phase)
{
    const float d2 = std::min(1.0f, nx * nx + ny * ny);
    return 0.78f + 0.2f * (1.0f - d2) + 0.05f * std::sin(3.1f * nx + phase) * std::cos(2.3f * ny - phase);
}

struct Person
{
    double cx, cy, rx, ry; // the head
    double shoulderY, shoulderRx, shoulderRy;
    Rgb skin, cloth;
};

Person placePerson(Random& rnd, QSize size)
{
    Person p;
    const double w = size.width(), h = size.height();
    p.cx = w * rnd.range(0.42, 0.58);
    p.cy = h * rnd.range(0.42, 0.5);
    p.ry = h * rnd.range(0.17, 0.21);
    p.rx = p.ry * rnd.range(0.74, 0.84);
    p.shoulderY = h * 1.02;
    p.shoulderRx = w * rnd.range(0.26, 0.32);
    p.shoulderRy = h * rnd.range(0.3, 0.36);
    p.skin = skinColour(rnd);
    p.cloth = clothColour(rnd);
    return p;
}

void addPerson(Scene& scene, const Person& p, QPointF motion = {})
{
    // Neck and shoulders in cloth, then the head in skin over them.
    const double neckHalf = p.rx * 0.45;
    const double top = p.shoulderY - p.shoulderRy;
    Region body;
    body.box = QRectF(p.cx - p.shoulderRx, p.cy, 2 * p.shoulderRx, scene.size.height() - p.cy + 1);
    body.motion = motion;
    body.at = [p, neckHalf, top](float x, float y, Paint& paint) {
        const float nx = static_cast<float>((x - p.cx) / p.shoulderRx);
        const float ny = static_cast<float>((y - p.shoulderY) / p.shoulderRy);
        const bool shoulders = nx * nx + ny * ny <= 1.0f;
        const bool neck = std::abs(x - p.cx) <= neckHalf && y >= p.cy && y <= top + 10;
        if (!shoulders && !neck)
            return false;
        paint.opacity = 1;
        paint.colour = shoulders ? scaled(p.cloth, shade(nx, ny, 0.7f)) : scaled(p.skin, 0.8f);
        return true;
    };
    scene.layers.push_back(body);
    Region head;
    head.box = QRectF(p.cx - p.rx, p.cy - p.ry, 2 * p.rx, 2 * p.ry);
    head.motion = motion;
    head.at = [p](float x, float y, Paint& paint) {
        const float nx = static_cast<float>((x - p.cx) / p.rx), ny = static_cast<float>((y - p.cy) / p.ry);
        if (nx * nx + ny * ny > 1.0f)
            return false;
        paint.opacity = 1;
        paint.colour = scaled(p.skin, shade(nx, ny, 1.9f));
        return true;
    };
    scene.layers.push_back(head);
}

// One hair from a root, bending under its own weight, with a little curl.
Strand grow(Random& rnd, QPointF root, double angle, double length, double gravity, double curl, Rgb colour,
            double rootWidth, QPointF motion = {})
{
    Strand s;
    s.colour = scaled(colour, static_cast<float>(rnd.range(0.82, 1.15)));
    s.opacity = static_cast<float>(rnd.range(0.7, 1.0));
    s.rootWidth = static_cast<float>(rootWidth);
    s.tipWidth = static_cast<float>(rootWidth * rnd.range(0.3, 0.6));
    s.motion = motion;
    const double step = 2.0;
    const int steps = std::max(2, static_cast<int>(length / step));
    double dx = std::cos(angle), dy = std::sin(angle);
    double bend = rnd.range(-curl, curl);
    QPointF p = root;
    s.points.push_back(p);
    for (int i = 0; i < steps; ++i) {
        bend += rnd.range(-curl, curl) * 0.3;
        const double c = std::cos(bend * step), sn = std::sin(bend * step);
        double nx = dx * c - dy * sn, ny = dx * sn + dy * c;
        ny += gravity * step;
        const double len = std::hypot(nx, ny);
        dx = nx / len;
        dy = ny / len;
        p += QPointF(dx * step, dy * step);
        s.points.push_back(p);
    }
    return s;
}

// A cap of hair on the head and strands from it, falling beside the face,
// some flying away.
void addHair(Scene& scene, Random& rnd, const Person& p, Rgb colour, int strands, double maxLength,
             QPointF motion = {})
{
    Region cap;
    cap.box = QRectF(p.cx - p.rx * 1.05, p.cy - p.ry * 1.05, 2.1 * p.rx, p.ry * 1.2);
    cap.motion = motion;
    const double phase = rnd.range(0, 6);
    cap.at = [p, colour, phase](float x, float y, Paint& paint) {
        const float nx = static_cast<float>((x - p.cx) / (p.rx * 1.03)),
                    ny = static_cast<float>((y - p.cy) / (p.ry * 1.03));
        const float fringe = static_cast<float>(-0.25 + 0.08 * std::sin(nx * 9 + phase));
        if (nx * nx + ny * ny > 1.0f || ny > fringe)
            return false;
        paint.opacity = 1;
        paint.colour = scaled(colour, 0.85f + 0.12f * std::sin(x * 0.9f + 0.3f * y));
        return true;
    };
    scene.layers.push_back(cap);
    for (int i = 0; i < strands; ++i) {
        const double theta = rnd.range(kPi * 1.02, kPi * 1.98);
        const double reach = rnd.range(0.8, 1.0);
        const QPointF root(p.cx + p.rx * reach * std::cos(theta), p.cy + p.ry * reach * std::sin(theta));
        const bool flyaway = rnd.uniform() < 0.12;
        const double angle = theta + rnd.range(-0.5, 0.5) + (flyaway ? rnd.range(-0.6, 0.6) : 0.0);
        const double length = flyaway ? rnd.range(40, maxLength * 0.8) : rnd.range(25, maxLength);
        const double width = flyaway ? rnd.range(0.3, 0.6) : rnd.range(0.5, 1.3);
        scene.layers.push_back(grow(rnd, root, angle, length, flyaway ? 0.006 : rnd.range(0.015, 0.035),
                                    flyaway ? 0.03 : 0.012, colour, width, motion));
    }
}

void addFur(Scene& scene, Random& rnd, QSize size)
{
    const double w = size.width(), h = size.height();
    const double cx = w * rnd.range(0.45, 0.55), cy = h * rnd.range(0.55, 0.62);
    const double rx = w * rnd.range(0.25, 0.3), ry = h * rnd.range(0.26, 0.3);
    const Rgb fur = pick(rnd, {{0.55f, 0.38f, 0.22f}, {0.85f, 0.55f, 0.25f}, {0.62f, 0.6f, 0.57f},
                               {0.9f, 0.85f, 0.72f}, {0.2f, 0.16f, 0.13f}});
    const Rgb belly = mixRgb(fur, Rgb{0.95f, 0.92f, 0.85f}, 0.5f);
    // An ear-topped body: one ellipse and a smaller one above it.
    const double hx = cx + rx * rnd.range(-0.3, 0.3), hy = cy - ry * 0.95, hr = ry * 0.55;
    auto inside = [=](double x, double y, double grow) {
        const double ex = (x - cx) / (rx + grow), ey = (y - cy) / (ry + grow);
        const double fx = (x - hx) / (hr * 1.15 + grow), fy = (y - hy) / (hr + grow);
        return ex * ex + ey * ey <= 1.0 || fx * fx + fy * fy <= 1.0;
    };
    Region body;
    body.box = QRectF(cx - rx, hy - hr, 2 * rx, cy + ry - (hy - hr));
    body.at = [=](float x, float y, Paint& paint) {
        if (!inside(x, y, 0))
            return false;
        const float nx = static_cast<float>((x - cx) / rx), ny = static_cast<float>((y - cy) / ry);
        paint.opacity = 1;
        paint.colour = scaled(mixRgb(fur, belly, std::clamp(0.5f - nx * nx - ny, 0.0f, 1.0f)), shade(nx, ny, 0.4f));
        return true;
    };
    scene.layers.push_back(body);
    // Fur roots on the outline, pointing outwards with scatter; thicker near
    // the body, single hairs at the tips.
    const int tufts = 3200;
    for (int i = 0; i < tufts; ++i) {
        const bool onHead = rnd.uniform() < 0.3;
        const double t = rnd.range(0, 2 * kPi);
        double ox = onHead ? hx : cx, oy = onHead ? hy : cy;
        double ax = onHead ? hr * 1.15 : rx, ay = onHead ? hr : ry;
        const double depth = rnd.range(0.88, 1.0);
        const QPointF root(ox + ax * depth * std::cos(t), oy + ay * depth * std::sin(t));
        if (!onHead && inside(root.x(), root.y(), -1) && (root.y() < hy + hr * 0.8 && std::abs(root.x() - hx) < hr))
            continue; // hidden under the head
        const double normal = std::atan2(std::sin(t) / ay, std::cos(t) / ax);
        const double angle = normal + rnd.range(-0.6, 0.6);
        const double length = rnd.range(5, 26);
        scene.layers.push_back(grow(rnd, root, angle, length, 0.004, 0.04, scaled(fur, static_cast<float>(rnd.range(0.8, 1.2))),
                                    rnd.range(0.5, 1.1)));
    }
}

void addVeil(Scene& scene, Random& rnd, const Person& p)
{
    const Rgb cloth = pick(rnd, {{0.96f, 0.95f, 0.93f}, {0.95f, 0.9f, 0.78f}, {0.95f, 0.78f, 0.8f},
                                 {0.86f, 0.8f, 0.86f}});
    const double top = p.cy - p.ry * 1.12;
    const double spread = rnd.range(0.35, 0.6);
    const double hem = p.cy + p.ry * rnd.range(2.0, 2.4);
    const double base = rnd.range(0.3, 0.55);
    const double ph1 = rnd.range(0, 6), ph2 = rnd.range(0, 6);
    const double halfTop = p.rx * 1.15;
    Region veil;
    const double widest = halfTop + (hem + 12 - top) * spread + 8;
    veil.box = QRectF(p.cx - widest, top - 1, 2 * widest, hem + 14 - top);
    veil.at = [=](float x, float y, Paint& paint) {
        if (y < top)
            return false;
        const double half = halfTop * std::sqrt(std::min(1.0, (y - top) / (p.ry * 0.5) + 0.15))
            + (y - top) * spread + 6 * std::sin(y / 13.0 + ph1);
        const double edge = half - std::abs(x - p.cx);
        const double bottom = hem + 10 * std::sin(x / 21.0 + ph2);
        if (edge < 0 || y > bottom)
            return false;
        // Folds, a fine weave, and more cloth where it turns at its edges.
        double o = base * (0.8 + 0.2 * std::sin(x * 0.09 + 1.5 * std::sin(y * 0.05 + ph1)));
        o *= 0.85 + 0.15 * std::cos(2 * kPi * x / 2.5) * std::cos(2 * kPi * y / 2.5);
        o += 0.3 * std::exp(-std::min(edge, bottom - y) / 3.0);
        paint.opacity = static_cast<float>(std::clamp(o, 0.0, 0.95));
        paint.colour = scaled(cloth, static_cast<float>(0.9 + 0.08 * std::sin(x * 0.09 + ph2)));
        return true;
    };
    scene.layers.push_back(veil);
    // Loose threads from the hem.
    for (int i = 0; i < 70; ++i) {
        const double x = p.cx + rnd.range(-1, 1) * (halfTop + (hem - top) * spread * 0.9);
        const QPointF root(x, hem + 10 * std::sin(x / 21.0 + ph2) - 1);
        Strand s = grow(rnd, root, kPi / 2 + rnd.range(-0.4, 0.4), rnd.range(5, 16), 0.01, 0.05, cloth, 0.4);
        s.opacity = static_cast<float>(rnd.range(0.4, 0.7));
        scene.layers.push_back(s);
    }
}

void addGlass(Scene& scene, Random& rnd, const Person& p, QSize size)
{
    const Rgb tint = pick(rnd, {{0.95f, 0.75f, 0.4f}, {0.95f, 0.92f, 0.7f}, {0.95f, 0.7f, 0.68f}, {0.62f, 0.6f, 0.58f}});
    const double gw = size.width() * rnd.range(0.14, 0.18), gh = gw * rnd.range(1.4, 1.7);
    const double side = rnd.uniform() < 0.5 ? -1 : 1;
    const double gx = p.cx + side * (p.shoulderRx * 0.95) - gw / 2;
    const double gy = size.height() * rnd.range(0.5, 0.6);
    const double corner = gw * 0.25;
    const double base = rnd.range(0.12, 0.25);
    Region glass;
    glass.box = QRectF(gx, gy, gw, gh);
    glass.at = [=](float x, float y, Paint& paint) {
        // Distance inside a rounded rectangle.
        const double qx = std::abs(x - (gx + gw / 2)) - (gw / 2 - corner);
        const double qy = std::abs(y - (gy + gh / 2)) - (gh / 2 - corner);
        const double outside = std::hypot(std::max(qx, 0.0), std::max(qy, 0.0)) + std::min(std::max(qx, qy), 0.0) - corner;
        if (outside > 0)
            return false;
        const double d = -outside;
        double o = base + 0.55 * std::exp(-d / 3.5);
        Rgb c = tint;
        const double u = (x - gx) / gw;
        if (u > 0.2 && u < 0.27 && y > gy + gh * 0.12 && y < gy + gh * 0.8) {
            o = 0.8;
            c = Rgb{0.98f, 0.98f, 0.97f};
        }
        paint.opacity = static_cast<float>(std::min(o, 0.9));
        paint.colour = c;
        return true;
    };
    scene.layers.push_back(glass);
}

void addBall(Scene& scene, Random& rnd, const Person& p, QSize size)
{
    const Rgb colour = pick(rnd, {{0.92f, 0.45f, 0.12f}, {0.8f, 0.15f, 0.15f}, {0.95f, 0.85f, 0.3f}, {0.93f, 0.92f, 0.88f}});
    const double r = size.height() * rnd.range(0.06, 0.08);
    const double side = rnd.uniform() < 0.5 ? -1 : 1;
    const double bx = p.cx + side * (p.rx + r + size.width() * rnd.range(0.08, 0.12));
    const double by = p.cy + rnd.range(-0.2, 0.3) * p.ry;
    Region ball;
    ball.box = QRectF(bx - r, by - r, 2 * r, 2 * r);
    ball.motion = QPointF(side * rnd.range(25, 50), rnd.range(-12, 12));
    ball.at = [=](float x, float y, Paint& paint) {
        const float nx = static_cast<float>((x - bx) / r), ny = static_cast<float>((y - by) / r);
        if (nx * nx + ny * ny > 1.0f)
            return false;
        paint.opacity = 1;
        paint.colour = scaled(colour, shade(nx, ny, 0.2f));
        return true;
    };
    scene.layers.push_back(ball);
}

} // namespace

QString subjectKindName(SubjectKind kind)
{
    switch (kind) {
    case SubjectKind::Hair: return QStringLiteral("hair");
    case SubjectKind::Fur: return QStringLiteral("fur");
    case SubjectKind::Veil: return QStringLiteral("veil");
    case SubjectKind::Glass: return QStringLiteral("glass");
    case SubjectKind::Motion: return QStringLiteral("motion");
    }
    return QString();
}

Scene subjectScene(SubjectKind kind, std::uint64_t seed, QSize size)
{
    Random rnd(seed * 8 + static_cast<std::uint64_t>(kind));
    Scene scene;
    scene.size = size;
    if (kind == SubjectKind::Fur) {
        addFur(scene, rnd, size);
        return scene;
    }
    const Person p = placePerson(rnd, size);
    const Rgb hair = hairColour(rnd);
    switch (kind) {
    case SubjectKind::Hair:
        addPerson(scene, p);
        addHair(scene, rnd, p, hair, 1100, size.height() * 0.55);
        break;
    case SubjectKind::Veil:
        addPerson(scene, p);
        addHair(scene, rnd, p, hair, 500, size.height() * 0.25);
        addVeil(scene, rnd, p);
        break;
    case SubjectKind::Glass:
        addPerson(scene, p);
        addHair(scene, rnd, p, hair, 600, size.height() * 0.35);
        addGlass(scene, rnd, p, size);
        break;
    case SubjectKind::Motion: {
        const QPointF sway(rnd.range(-8, 8), rnd.range(-3, 3));
        addPerson(scene, p, sway);
        addHair(scene, rnd, p, hair, 700, size.height() * 0.4, sway);
        addBall(scene, rnd, p, size);
        break;
    }
    case SubjectKind::Fur:
        break;
    }
    return scene;
}

} // namespace groundtruth
