// SPDX-License-Identifier: MIT
#include "figure.h"

#include "canvas.h"
#include "noise.h"
#include "studiophoto.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <functional>

namespace samplegen {

namespace {

constexpr double kPi = 3.14159265358979323846;

// Paints each body part twice: shaded into the photo layer, flat into the
// region labels that the self-check compares the keying against.
class PartPainter
{
public:
    PartPainter(QImage& layer, QImage& labels) : img(&layer), lab(&labels)
    {
        img.setRenderHint(QPainter::Antialiasing, true);
        lab.setRenderHint(QPainter::Antialiasing, false);
        img.setPen(Qt::NoPen);
        lab.setPen(Qt::NoPen);
    }

    void fill(const QPainterPath& p, const QBrush& brush, Region r)
    {
        img.fillPath(p, brush);
        lab.fillPath(p, QColor(r, r, r));
    }

    // Details drawn inside a part only (creases, face features).
    template <typename Fn>
    void inside(const QPainterPath& clip, Fn draw)
    {
        img.save();
        img.setClipPath(clip);
        draw(img);
        img.restore();
    }

    QPainter img;
    QPainter lab;
};

QPointF perpendicular(QPointF a, QPointF b)
{
    const QPointF d = b - a;
    const double len = std::hypot(d.x(), d.y());
    return len > 0.0 ? QPointF(-d.y() / len, d.x() / len) : QPointF(1.0, 0.0);
}

// A tapered capsule from a (width wa) to b (width wb): an arm or leg segment.
QPainterPath limb(QPointF a, QPointF b, double wa, double wb)
{
    const QPointF n = perpendicular(a, b);
    QPainterPath body;
    body.moveTo(a + n * (wa / 2));
    body.lineTo(b + n * (wb / 2));
    body.lineTo(b - n * (wb / 2));
    body.lineTo(a - n * (wa / 2));
    body.closeSubpath();
    QPainterPath ends;
    ends.addEllipse(a, wa / 2, wa / 2);
    ends.addEllipse(b, wb / 2, wb / 2);
    ends.setFillRule(Qt::WindingFill);
    return body.united(ends);
}

// Light from the upper left: a rounded form is brightest a little left of its
// middle and darkens towards both sides.
QBrush roundShade(const QColor& c, QPointF from, QPointF to)
{
    QLinearGradient g(from, to);
    g.setColorAt(0.0, shade(c, 0.66));
    g.setColorAt(0.32, shade(c, 1.10));
    g.setColorAt(0.55, shade(c, 1.0));
    g.setColorAt(1.0, shade(c, 0.62));
    return QBrush(g);
}

QBrush limbShade(const QColor& c, QPointF a, QPointF b, double w)
{
    const QPointF mid = (a + b) / 2;
    const QPointF n = perpendicular(a, b);
    // Orient the gradient from the left side of the limb to its right side.
    const QPointF l = n.x() < 0 ? n : -n;
    return roundShade(c, mid + l * (w / 2), mid - l * (w / 2));
}

// Fabric creases: soft darker and lighter strokes inside a piece of clothing.
void creases(PartPainter& pp, const QPainterPath& clip, const QColor& c, Rng& rng, int count, double u)
{
    pp.inside(clip, [&](QPainter& p) {
        const QRectF br = clip.boundingRect();
        for (int i = 0; i < count; ++i) {
            const QPointF a(rng.range(br.left(), br.right()), rng.range(br.top(), br.bottom()));
            const double ang = rng.range(-0.35, 0.35) + kPi / 2;
            const double len = rng.range(0.4, 1.0) * u;
            const QPointF b = a + QPointF(std::cos(ang) * len, std::sin(ang) * len);
            const QPointF m = (a + b) / 2 + QPointF(rng.range(-0.1, 0.1) * u, 0);
            QPainterPath s;
            s.moveTo(a);
            s.quadTo(m, b);
            const bool dark = rng.chance(0.65);
            QPen pen(dark ? shade(c, 0.65, 55) : shade(c, 1.3, 35), rng.range(0.03, 0.06) * u);
            pen.setCapStyle(Qt::RoundCap);
            p.strokePath(s, pen);
        }
    });
}

// Hair texture: strands following the hair's flow, inside the hair shape.
void hairStrands(PartPainter& pp, const QPainterPath& clip, const QColor& hair, QPointF crown, Rng& rng,
                 int count, double u)
{
    pp.inside(clip, [&](QPainter& p) {
        const QRectF br = clip.boundingRect();
        for (int i = 0; i < count; ++i) {
            const QPointF a(rng.range(br.left(), br.right()), rng.range(br.top(), br.bottom()));
            QPointF dir = a - crown;
            const double len = std::hypot(dir.x(), dir.y());
            dir = len > 0 ? dir / len : QPointF(0, 1);
            const double l = rng.range(0.15, 0.5) * u;
            const QPointF b = a + dir * l + QPointF(rng.range(-0.05, 0.05) * u, 0);
            QPainterPath s;
            s.moveTo(a);
            s.quadTo((a + b) / 2 + perpendicular(a, b) * rng.range(-0.05, 0.05) * u, b);
            const bool light = rng.chance(0.5);
            p.strokePath(s, QPen(light ? shade(hair, 1.9, 70) : shade(hair, 0.55, 90), rng.range(0.8, 2.0)));
        }
    });
}

// Loose strands beyond the hair's outline: thin, partly transparent curls
// that the keyer can only partly keep.
void wisps(QPainter& p, const QPainterPath& outline, QPointF centre, const QColor& hair, Rng& rng, int count,
           double u, double fromPercent, double toPercent)
{
    for (int i = 0; i < count; ++i) {
        const double t = rng.range(fromPercent, toPercent);
        const QPointF a = outline.pointAtPercent(t);
        const double ang = outline.angleAtPercent(t) * kPi / 180.0;
        // Qt's angle is counter-clockwise with y up.
        const QPointF tangent(std::cos(ang), -std::sin(ang));
        QPointF normal(tangent.y(), -tangent.x());
        const QPointF away = a - centre;
        if (normal.x() * away.x() + normal.y() * away.y() < 0)
            normal = -normal;
        const double len = rng.range(0.03, 0.15) * u;
        const double lean = rng.range(-1.6, 1.6);
        const QPointF inward = a - normal * (0.03 * u);
        const QPointF mid = a + normal * (len * 0.5) + tangent * (lean * len * 0.4);
        const QPointF end = a + normal * len + tangent * (lean * len);
        QPainterPath s;
        s.moveTo(inward);
        s.quadTo(mid, end);
        QColor c = shade(hair, rng.range(0.8, 1.4));
        c.setAlphaF(static_cast<float>(rng.range(0.3, 0.75)));
        QPen pen(c, rng.range(0.6, 1.5));
        pen.setCapStyle(Qt::RoundCap);
        p.strokePath(s, pen);
    }
}

void paintFace(PartPainter& pp, const QPainterPath& head, const Figure& f, const std::function<QPointF(double, double)>& P,
               double u, bool female)
{
    pp.inside(head, [&](QPainter& p) {
        p.setPen(Qt::NoPen);
        // Cheeks and the shadow under the jaw line.
        QRadialGradient blush(P(0, 0.66), 0.36 * u);
        blush.setColorAt(0.0, QColor(200, 90, 80, female ? 40 : 22));
        blush.setColorAt(1.0, QColor(200, 90, 80, 0));
        p.setBrush(blush);
        p.drawEllipse(P(-0.19, 0.66), 0.13 * u, 0.09 * u);
        p.drawEllipse(P(0.19, 0.66), 0.13 * u, 0.09 * u);

        for (int side = -1; side <= 1; side += 2) {
            const double sx = side * 0.135;
            // eye socket shadow
            QRadialGradient socket(P(sx, 0.47), 0.11 * u);
            socket.setColorAt(0.0, shade(f.skin, 0.72, 120));
            socket.setColorAt(1.0, shade(f.skin, 0.72, 0));
            p.setBrush(socket);
            p.drawEllipse(P(sx, 0.47), 0.11 * u, 0.08 * u);
            // white of the eye, iris, pupil, highlight
            QPainterPath eye;
            eye.moveTo(P(sx - 0.075, 0.48));
            eye.quadTo(P(sx, 0.43), P(sx + 0.075, 0.48));
            eye.quadTo(P(sx, 0.515), P(sx - 0.075, 0.48));
            p.fillPath(eye, QColor(236, 232, 226));
            p.save();
            p.setClipPath(eye, Qt::IntersectClip);
            p.setBrush(QColor(92, 64, 40));
            p.drawEllipse(P(sx + 0.01, 0.476), 0.034 * u, 0.034 * u);
            p.setBrush(QColor(18, 14, 12));
            p.drawEllipse(P(sx + 0.01, 0.476), 0.016 * u, 0.016 * u);
            p.restore();
            p.setBrush(QColor(255, 255, 255, 200));
            p.drawEllipse(P(sx + 0.002, 0.468), 0.007 * u, 0.007 * u);
            // upper lid line
            QPainterPath lid;
            lid.moveTo(P(sx - 0.08, 0.482));
            lid.quadTo(P(sx, 0.425), P(sx + 0.08, 0.482));
            QPen lidPen(QColor(40, 26, 20, 220), female ? 0.018 * u : 0.012 * u);
            lidPen.setCapStyle(Qt::RoundCap);
            p.strokePath(lid, lidPen);
            // eyebrow
            QPainterPath brow;
            brow.moveTo(P(side * 0.06, female ? 0.385 : 0.395));
            brow.quadTo(P(side * 0.15, female ? 0.345 : 0.36), P(side * 0.23, female ? 0.375 : 0.385));
            QPen browPen(shade(f.hair, 1.1, 230), (female ? 0.025 : 0.04) * u);
            browPen.setCapStyle(Qt::RoundCap);
            p.strokePath(brow, browPen);
        }
        // nose: a shadow on its right side and the nostrils
        QPainterPath nose;
        nose.moveTo(P(0.02, 0.49));
        nose.cubicTo(P(0.05, 0.58), P(0.07, 0.63), P(0.04, 0.665));
        p.strokePath(nose, QPen(shade(f.skin, 0.72, 150), 0.03 * u, Qt::SolidLine, Qt::RoundCap));
        p.setBrush(shade(f.skin, 0.55, 170));
        p.drawEllipse(P(-0.03, 0.67), 0.018 * u, 0.01 * u);
        p.drawEllipse(P(0.035, 0.67), 0.018 * u, 0.01 * u);
        // mouth
        QPainterPath lips;
        lips.moveTo(P(-0.1, 0.775));
        lips.quadTo(P(0, 0.745), P(0.1, 0.775));
        lips.quadTo(P(0, 0.83), P(-0.1, 0.775));
        p.fillPath(lips, female ? QColor(176, 74, 82) : shade(f.skin, 0.78));
        p.strokePath(lips, QPen(QColor(110, 50, 50, 120), 0.008 * u));
        QPainterPath parting;
        parting.moveTo(P(-0.095, 0.776));
        parting.quadTo(P(0, 0.79), P(0.095, 0.776));
        p.strokePath(parting, QPen(QColor(90, 40, 40, 200), 0.012 * u));
        // stubble shadow for the man
        if (!female) {
            QRadialGradient beard(P(0, 0.85), 0.3 * u);
            beard.setColorAt(0.0, QColor(60, 45, 40, 50));
            beard.setColorAt(1.0, QColor(60, 45, 40, 0));
            p.setBrush(beard);
            p.drawEllipse(P(0, 0.8), 0.3 * u, 0.2 * u);
        }
    });
}

} // namespace

void paintFigure(const Figure& f, QImage& layer, QImage& labels)
{
    const double u = f.unit();
    const std::function<QPointF(double, double)> P = [&](double dx, double dy) {
        return QPointF(f.cx + dx * u, f.top + dy * u);
    };
    Rng rng(f.seed);
    PartPainter pp(layer, labels);
    const bool female = f.longHair;
    const double shoulder = female ? 0.84 : 1.0;

    // Long hair falls behind the neck and shoulders.
    QPainterPath backHair;
    if (f.longHair) {
        backHair.moveTo(P(-0.42, 0.1));
        backHair.cubicTo(P(-0.62, 0.6), P(-0.66, 1.5), P(-0.6, 2.25));
        backHair.cubicTo(P(-0.3, 2.4), P(0.3, 2.4), P(0.6, 2.25));
        backHair.cubicTo(P(0.66, 1.5), P(0.62, 0.6), P(0.42, 0.1));
        backHair.closeSubpath();
        pp.fill(backHair, roundShade(f.hair, P(-0.65, 1), P(0.65, 1)), RegionHair);
        hairStrands(pp, backHair, f.hair, P(0, 0), rng, 260, u);
    }

    // Legs, hips and shoes.
    const double stanceR = f.handOnHip ? 0.16 : 0.08;
    const QPointF hipL = P(-0.3, 3.9), kneeL = P(-0.34, 5.8), ankleL = P(-0.38, 7.55);
    const QPointF hipR = P(0.3, 3.9), kneeR = P(0.32 + stanceR / 2, 5.8), ankleR = P(0.38 + stanceR, 7.55);
    const double thigh = (female ? 0.54 : 0.64) * u;
    const double shin = (female ? 0.42 : 0.5) * u;
    QPainterPath legs = limb(hipL, kneeL, thigh, shin * 1.05).united(limb(kneeL, ankleL, shin * 1.05, shin * 0.85));
    legs = legs.united(limb(hipR, kneeR, thigh, shin * 1.05)).united(limb(kneeR, ankleR, shin * 1.05, shin * 0.85));
    QPainterPath pelvis;
    pelvis.moveTo(P(-0.64 * shoulder, 3.3));
    pelvis.lineTo(P(0.64 * shoulder, 3.3));
    pelvis.lineTo(P(0.6, 4.15));
    pelvis.quadTo(P(0, 4.45), P(-0.6, 4.15));
    pelvis.closeSubpath();
    legs = legs.united(pelvis);
    pp.fill(legs, roundShade(f.trousers, P(-0.7, 5), P(0.8, 5)), RegionClothing);
    creases(pp, legs, f.trousers, rng, 18, u);
    pp.inside(legs, [&](QPainter& p) {
        // the gap between the legs is in shadow
        QPainterPath inner;
        inner.moveTo(P(0, 4.3));
        inner.lineTo((kneeL + kneeR) / 2);
        p.strokePath(inner, QPen(shade(f.trousers, 0.5, 160), 0.06 * u));
    });
    for (const QPointF ankle : {ankleL, ankleR}) {
        const double out = ankle.x() < f.cx ? -1.0 : 1.0;
        QPainterPath shoe;
        shoe.addEllipse(ankle + QPointF(out * 0.07 * u, 0.24 * u), 0.3 * u, 0.135 * u);
        pp.fill(shoe, roundShade(f.shoes, ankle + QPointF(0, 0.1 * u), ankle + QPointF(0, 0.38 * u)), RegionClothing);
    }

    // Neck.
    const double neckW = female ? 0.3 : 0.44;
    QPainterPath neck;
    neck.addRoundedRect(QRectF(P(-neckW / 2, 0.75), P(neckW / 2, 1.45)), 0.08 * u, 0.08 * u);
    pp.fill(neck, roundShade(f.skin, P(-neckW / 2, 1), P(neckW / 2, 1)), RegionSkin);
    pp.inside(neck, [&](QPainter& p) {
        QLinearGradient chin(P(0, 0.8), P(0, 1.05));
        chin.setColorAt(0.0, shade(f.skin, 0.45, 200));
        chin.setColorAt(1.0, shade(f.skin, 0.45, 0));
        p.fillRect(neck.boundingRect(), chin);
    });

    // Torso.
    const double s = shoulder;
    QPainterPath torso;
    torso.moveTo(P(-0.2, 1.24));
    torso.quadTo(P(-0.75 * s, 1.27), P(-0.98 * s, 1.58));
    torso.cubicTo(P(-1.02 * s, 2.2), P(-0.82 * s, 2.7), P(-0.72 * s, 3.1));
    torso.lineTo(P(-0.7 * s, 3.98));
    torso.quadTo(P(0, 4.08), P(0.7 * s, 3.98));
    torso.lineTo(P(0.72 * s, 3.1));
    torso.cubicTo(P(0.82 * s, 2.7), P(1.02 * s, 2.2), P(0.98 * s, 1.58));
    torso.quadTo(P(0.75 * s, 1.27), P(0.2, 1.24));
    torso.quadTo(P(0, 1.36), P(-0.2, 1.24));
    torso.closeSubpath();
    pp.fill(torso, roundShade(f.clothing, P(-1.0 * s, 2.4), P(1.0 * s, 2.4)), RegionClothing);
    creases(pp, torso, f.clothing, rng, 22, u);

    if (f.shirtAndTie) {
        QPainterPath shirt;
        shirt.moveTo(P(-0.21, 1.23));
        shirt.lineTo(P(0.21, 1.23));
        shirt.lineTo(P(0.0, 2.35));
        shirt.closeSubpath();
        pp.fill(shirt, roundShade(QColor(226, 228, 230), P(-0.2, 1.6), P(0.2, 1.6)), RegionClothing);
        QPainterPath tie;
        tie.moveTo(P(-0.045, 1.34));
        tie.lineTo(P(0.045, 1.34));
        tie.lineTo(P(0.07, 2.15));
        tie.lineTo(P(0.0, 2.3));
        tie.lineTo(P(-0.07, 2.15));
        tie.closeSubpath();
        pp.fill(tie, roundShade(QColor(120, 28, 36), P(-0.07, 1.8), P(0.07, 1.8)), RegionClothing);
        QPainterPath knot;
        knot.addEllipse(P(0, 1.33), 0.055 * u, 0.045 * u);
        pp.fill(knot, QColor(100, 22, 30), RegionClothing);
        // lapels
        for (int side = -1; side <= 1; side += 2) {
            QPainterPath lapel;
            lapel.moveTo(P(side * 0.22, 1.24));
            lapel.lineTo(P(side * 0.36, 1.5));
            lapel.lineTo(P(side * 0.26, 1.62));
            lapel.lineTo(P(side * 0.02, 2.4));
            lapel.lineTo(P(side * 0.12, 1.9));
            lapel.closeSubpath();
            pp.fill(lapel, shade(f.clothing, side < 0 ? 1.25 : 0.85), RegionClothing);
        }
        pp.inside(torso, [&](QPainter& p) {
            p.setBrush(shade(f.clothing, 0.5));
            for (double y : {2.75, 3.3})
                p.drawEllipse(P(0.03, y), 0.03 * u, 0.03 * u);
            p.strokePath([&] {
                QPainterPath edge;
                edge.moveTo(P(0.0, 2.38));
                edge.lineTo(P(0.02, 4.0));
                return edge;
            }(), QPen(shade(f.clothing, 0.45), 0.02 * u));
        });
    } else {
        // a rounded neckline with a little skin showing
        QPainterPath neckline;
        neckline.moveTo(P(-0.2, 1.24));
        neckline.quadTo(P(0, 1.62), P(0.2, 1.24));
        neckline.closeSubpath();
        pp.fill(neckline, roundShade(f.skin, P(-0.2, 1.3), P(0.2, 1.3)), RegionSkin);
        QPainterPath rib;
        rib.moveTo(P(-0.22, 1.24));
        rib.quadTo(P(0, 1.66), P(0.22, 1.24));
        pp.img.strokePath(rib, QPen(shade(f.clothing, 0.75), 0.05 * u));
    }

    // Arms: hands first, sleeves over their wrists.
    struct Arm { QPointF shoulder, elbow, wrist, hand; double handAngle; };
    const Arm left{P(-0.86 * s, 1.66), P(-1.1 * s, 2.85), P(-1.13 * s, 3.85), P(-1.14 * s, 4.1), 95};
    const Arm right = f.handOnHip
        ? Arm{P(0.86 * s, 1.66), P(1.42 * s, 2.7), P(0.86 * s, 3.45), P(0.72 * s, 3.52), 200}
        : Arm{P(0.86 * s, 1.66), P(1.1 * s, 2.85), P(1.15 * s, 3.85), P(1.16 * s, 4.1), 85};
    const double upper = (female ? 0.32 : 0.4) * u;
    const double fore = (female ? 0.27 : 0.33) * u;
    for (const Arm& a : {left, right}) {
        QPainterPath hand;
        hand.addEllipse(QPointF(0, 0), 0.22 * u, 0.13 * u);
        QTransform t;
        t.translate(a.hand.x(), a.hand.y());
        t.rotate(a.handAngle);
        hand = t.map(hand);
        pp.fill(hand, roundShade(f.skin, a.hand - QPointF(0.13 * u, 0), a.hand + QPointF(0.13 * u, 0)), RegionSkin);
        const QPainterPath sleeve = limb(a.shoulder, a.elbow, upper, fore * 1.05).united(limb(a.elbow, a.wrist, fore * 1.05, fore));
        pp.fill(sleeve, limbShade(f.clothing, a.shoulder, a.wrist, upper), RegionClothing);
        creases(pp, sleeve, f.clothing, rng, 6, u);
        pp.inside(sleeve, [&](QPainter& p) {
            // the crook of the elbow
            p.setBrush(shade(f.clothing, 0.55, 110));
            p.drawEllipse(a.elbow, fore * 0.4, fore * 0.18);
        });
    }

    // Ears, head and face.
    const double headRx = female ? 0.35 : 0.39;
    const double headRy = female ? 0.47 : 0.5;
    for (int side = -1; side <= 1; side += 2) {
        QPainterPath ear;
        ear.addEllipse(P(side * (headRx - 0.01), 0.52), 0.075 * u, 0.13 * u);
        pp.fill(ear, roundShade(f.skin, P(side * headRx - 0.07, 0.5), P(side * headRx + 0.07, 0.5)), RegionSkin);
    }
    QPainterPath head;
    head.moveTo(P(0, 0.0));
    head.cubicTo(P(headRx * 1.05, 0.0), P(headRx * 1.05, 0.45), P(headRx * 0.95, 0.62));
    head.cubicTo(P(headRx * 0.8, 0.88), P(0.14, 1.0), P(0, 1.0));
    head.cubicTo(P(-0.14, 1.0), P(-headRx * 0.8, 0.88), P(-headRx * 0.95, 0.62));
    head.cubicTo(P(-headRx * 1.05, 0.45), P(-headRx * 1.05, 0.0), P(0, 0.0));
    head.closeSubpath();
    QTransform squash;
    squash.translate(f.cx, f.top);
    squash.scale(1.0, headRy / 0.5);
    squash.translate(-f.cx, -f.top);
    head = squash.map(head);
    QRadialGradient faceLight(P(-0.1, 0.42), 0.6 * u);
    faceLight.setColorAt(0.0, shade(f.skin, 1.07));
    faceLight.setColorAt(0.6, shade(f.skin, 0.98));
    faceLight.setColorAt(1.0, shade(f.skin, 0.72));
    pp.fill(head, faceLight, RegionSkin);
    paintFace(pp, head, f, P, u, female);

    // Hair over the head.
    QPainterPath cap;
    if (f.longHair) {
        cap.moveTo(P(-0.37, 0.95));
        cap.cubicTo(P(-0.44, 0.5), P(-0.46, -0.1), P(0.0, -0.07));
        cap.cubicTo(P(0.46, -0.1), P(0.44, 0.5), P(0.37, 0.95));
        cap.lineTo(P(0.3, 0.95));
        cap.cubicTo(P(0.3, 0.6), P(0.3, 0.3), P(0.08, 0.2));
        cap.cubicTo(P(-0.05, 0.26), P(-0.25, 0.3), P(-0.3, 0.6));
        cap.lineTo(P(-0.3, 0.95));
        cap.closeSubpath();
    } else {
        cap.moveTo(P(-0.36, 0.5));
        cap.cubicTo(P(-0.45, 0.15), P(-0.3, -0.1), P(0.02, -0.08));
        cap.cubicTo(P(0.33, -0.08), P(0.46, 0.12), P(0.37, 0.5));
        cap.lineTo(P(0.33, 0.5));
        cap.cubicTo(P(0.32, 0.35), P(0.3, 0.27), P(0.22, 0.25));
        cap.cubicTo(P(0.05, 0.22), P(-0.1, 0.26), P(-0.26, 0.25));
        cap.cubicTo(P(-0.31, 0.3), P(-0.32, 0.4), P(-0.33, 0.5));
        cap.closeSubpath();
    }
    pp.fill(cap, roundShade(f.hair, P(-0.45, 0.3), P(0.45, 0.3)), RegionHair);
    hairStrands(pp, cap, f.hair, P(0.05, -0.05), rng, f.longHair ? 200 : 160, u);

    // Loose strands around the top of the head, and at the ends of long hair.
    wisps(pp.img, cap, P(0, 0.5), f.hair, rng, f.longHair ? 170 : 230, u, 0.0, 0.55);
    if (f.longHair)
        wisps(pp.img, backHair, P(0, 1.2), f.hair, rng, 160, u, 0.02, 0.98);
}

} // namespace samplegen
