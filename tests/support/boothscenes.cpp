// SPDX-License-Identifier: MIT
#include "tests/support/boothscenes.h"

#include "keying/keymask.h"

#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

namespace boothscenes {

namespace {

int clamp255(double v)
{
    return std::clamp(int(std::lround(v)), 0, 255);
}

double gaussian(QRandomGenerator& rng)
{
    // Sum of four uniforms: close enough to normal for grain.
    double s = 0;
    for (int i = 0; i < 4; ++i)
        s += rng.generateDouble();
    return (s - 2.0) * std::sqrt(3.0);
}

QColor pickClothes(QRandomGenerator& rng)
{
    static const QColor palette[] = {QColor(180, 40, 40), QColor(120, 120, 120), QColor(40, 40, 45),
                                     QColor(200, 180, 150), QColor(220, 120, 40), QColor(235, 235, 235),
                                     QColor(110, 70, 40), QColor(150, 60, 90)};
    return palette[rng.bounded(int(std::size(palette)))];
}

// The subject's outline for a placement: a head and shoulders that reach the
// bottom edge, as a booth frames a guest.
QPainterPath subjectPath(const SceneRecipe& s, QRandomGenerator& rng, QPainterPath* head)
{
    const double w = s.width, h = s.height;
    const double jitter = 0.9 + 0.2 * rng.generateDouble();
    QPainterPath body;
    if (s.placement == Placement::Fills80) {
        // 0.9 x 0.89 of the frame: the backdrop shows in a band at the top
        // and thin strips at the sides.
        body.addRoundedRect(QRectF(0.05 * w, 0.11 * h, 0.9 * w, 0.95 * h), 0.08 * w, 0.08 * w);
        head->addEllipse(QRectF(0.4 * w, 0.115 * h, 0.2 * w, 0.2 * h));
        return body;
    }
    double cx = 0.5 * w;
    double scale = 1.0;
    if (s.placement == Placement::Side)
        cx = (rng.bounded(2) ? 0.08 : 0.92) * w;
    if (s.placement == Placement::Corner) {
        cx = (rng.bounded(2) ? 0.05 : 0.95) * w;
        scale = 1.25;
    }
    const double shoulders = 0.42 * w * scale * jitter;
    const double top = h * (1.0 - 0.45 * scale);
    body.addRoundedRect(QRectF(cx - shoulders / 2, top, shoulders, h - top + 0.1 * h), 0.08 * w, 0.08 * w);
    const double headW = 0.16 * w * scale * jitter, headH = 0.26 * h * scale;
    head->addEllipse(QRectF(cx - headW / 2, top - headH * 0.9, headW, headH));
    return body;
}

} // namespace

QString placementName(Placement p)
{
    switch (p) {
    case Placement::Middle: return QStringLiteral("middle");
    case Placement::Side: return QStringLiteral("side");
    case Placement::Corner: return QStringLiteral("corner");
    case Placement::Fills80: return QStringLiteral("fills80");
    }
    return QString();
}

Scene makeScene(const SceneRecipe& s)
{
    QRandomGenerator rng(s.seed);
    // The backdrop colour, varied a little per seed.
    const double vary = 0.9 + 0.2 * rng.generateDouble();
    double base[3];
    if (!s.blue) {
        const double g = (s.dark ? 105 : 200) * vary;
        base[0] = g * (0.25 + 0.15 * rng.generateDouble());
        base[1] = g;
        base[2] = g * (0.3 + 0.15 * rng.generateDouble());
    } else {
        const double b = (s.dark ? 125 : 215) * vary;
        base[0] = b * (0.15 + 0.15 * rng.generateDouble());
        base[1] = b * (0.35 + 0.15 * rng.generateDouble());
        base[2] = b;
    }
    // The light: brightest at a point near the middle, falling toward the
    // corners with the square of the distance.
    const double lx = s.width * (0.4 + 0.2 * rng.generateDouble());
    const double ly = s.height * (0.4 + 0.2 * rng.generateDouble());
    const double reach = std::hypot(std::max(lx, s.width - lx), std::max(ly, s.height - ly));
    auto light = [&](int x, int y) {
        const double d = std::hypot(x - lx, y - ly) / reach;
        return 1.0 - s.falloff * d * d;
    };

    QImage clean(s.width, s.height, QImage::Format_RGB32);
    for (int y = 0; y < s.height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(clean.scanLine(y));
        for (int x = 0; x < s.width; ++x) {
            const double f = light(x, y);
            row[x] = qRgb(clamp255(base[0] * f), clamp255(base[1] * f), clamp255(base[2] * f));
        }
    }
    QPainterPath head;
    const QPainterPath body = subjectPath(s, rng, &head);
    const QColor clothes = pickClothes(rng);
    const QColor skin(224 - rng.bounded(60), 172 - rng.bounded(60), 140 - rng.bounded(50));
    const QColor hair(50 + rng.bounded(80), 35 + rng.bounded(40), 25 + rng.bounded(20));
    {
        QPainter p(&clean);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(Qt::NoPen);
        p.fillPath(body, clothes);
        p.fillPath(head, skin);
        // Hair on the upper part of the head.
        const QRectF hb = head.boundingRect();
        p.save();
        p.setClipPath(head);
        p.fillRect(QRectF(hb.left(), hb.top(), hb.width(), hb.height() * 0.35), hair);
        p.restore();
    }
    Scene scene;
    scene.truth = QImage(s.width, s.height, QImage::Format_Grayscale8);
    scene.truth.fill(255);
    {
        QPainter p(&scene.truth);
        p.setRenderHint(QPainter::Antialiasing);
        p.fillPath(body.united(head), Qt::black);
    }
    // Grain on every pixel.
    scene.photo = clean;
    for (int y = 0; y < s.height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(scene.photo.scanLine(y));
        for (int x = 0; x < s.width; ++x) {
            const QRgb c = row[x];
            row[x] = qRgb(clamp255(qRed(c) + s.noise * gaussian(rng)), clamp255(qGreen(c) + s.noise * gaussian(rng)),
                          clamp255(qBlue(c) + s.noise * gaussian(rng)));
        }
    }
    // The click: where the light is the backdrop's middling light, on a
    // patch of pure backdrop, as an operator picks a plain part of it.
    QList<double> lights;
    for (int y = 0; y < s.height; y += 4) {
        const uchar* t = scene.truth.constScanLine(y);
        for (int x = 0; x < s.width; x += 4) {
            if (t[x] == 255)
                lights << light(x, y);
        }
    }
    std::nth_element(lights.begin(), lights.begin() + lights.size() / 2, lights.end());
    const double middling = lights.isEmpty() ? 1.0 : lights[lights.size() / 2];
    double bestGap = 2.0;
    const int margin = std::max(3, s.width / 40);
    for (int y = margin; y < s.height - margin; y += 2) {
        for (int x = margin; x < s.width - margin; x += 2) {
            const double gap = std::fabs(light(x, y) - middling);
            if (gap >= bestGap)
                continue;
            bool plain = true;
            for (int dy = -margin; dy <= margin && plain; dy += margin)
                for (int dx = -margin; dx <= margin && plain; dx += margin)
                    plain = scene.truth.constScanLine(y + dy)[x + dx] == 255;
            if (plain) {
                bestGap = gap;
                scene.click = QPoint(x, y);
            }
        }
    }
    return scene;
}

SceneRecipe randomRecipe(quint32 seed)
{
    QRandomGenerator rng(seed * 2654435761u + 17u);
    SceneRecipe s;
    s.placement = Placement(rng.bounded(4));
    s.blue = rng.bounded(2) == 1;
    s.dark = rng.bounded(2) == 1;
    s.falloff = 0.05 + 0.25 * rng.generateDouble();
    s.noise = 1.0 + 7.0 * rng.generateDouble();
    static const QSize sizes[] = {QSize(480, 320), QSize(320, 480), QSize(400, 400), QSize(640, 360), QSize(300, 450)};
    const QSize size = sizes[rng.bounded(int(std::size(sizes)))];
    s.width = size.width();
    s.height = size.height();
    s.seed = rng.generate();
    return s;
}

QImage noBackdropPhoto(NoBackdrop kind, int width, int height, quint32 seed)
{
    QRandomGenerator rng(seed);
    QImage photo(width, height, QImage::Format_RGB32);
    QPainter p(&photo);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    const double w = width, h = height;
    switch (kind) {
    case NoBackdrop::Indoor: {
        QLinearGradient wall(0, 0, 0, h);
        wall.setColorAt(0, QColor(215, 195, 165));
        wall.setColorAt(1, QColor(170, 150, 120));
        p.fillRect(photo.rect(), wall);
        p.fillRect(QRectF(0.05 * w, 0.1 * h, 0.25 * w, 0.35 * h), QColor(205, 215, 220)); // a window
        p.fillRect(QRectF(0, 0.7 * h, w, 0.3 * h), QColor(120, 80, 50));                  // a floor
        p.fillRect(QRectF(0.7 * w, 0.4 * h, 0.25 * w, 0.4 * h), QColor(90, 60, 40));      // a cupboard
        // A guest in a green shirt, reaching the bottom edge only.
        p.setBrush(QColor(40, 150, 60));
        p.drawRoundedRect(QRectF(0.36 * w, 0.55 * h, 0.28 * w, 0.5 * h), 0.04 * w, 0.04 * w);
        p.setBrush(QColor(210, 160, 130));
        p.drawEllipse(QRectF(0.44 * w, 0.33 * h, 0.12 * w, 0.24 * h));
        break;
    }
    case NoBackdrop::GreyWall: {
        const int grey = 90 + rng.bounded(110);
        p.fillRect(photo.rect(), QColor(grey, grey + rng.bounded(8), grey));
        p.setBrush(QColor(60, 70, 140));
        p.drawRoundedRect(QRectF(0.3 * w, 0.5 * h, 0.4 * w, 0.6 * h), 0.05 * w, 0.05 * w);
        p.setBrush(QColor(210, 160, 130));
        p.drawEllipse(QRectF(0.42 * w, 0.25 * h, 0.16 * w, 0.28 * h));
        break;
    }
    case NoBackdrop::Foliage: {
        p.fillRect(photo.rect(), QColor(20, 32, 15));
        const int leaves = int(w * h / 60);
        for (int i = 0; i < leaves; ++i) {
            const double light = 0.3 + 0.7 * rng.generateDouble();
            const QColor c(clamp255((40 + rng.bounded(90)) * light), clamp255((120 + rng.bounded(110)) * light),
                           clamp255((20 + rng.bounded(70)) * light));
            const double size = w * (0.01 + 0.03 * rng.generateDouble());
            p.setBrush(c);
            p.drawEllipse(QPointF(w * rng.generateDouble(), h * rng.generateDouble()), size, size * 0.5);
        }
        break;
    }
    }
    p.end();
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const QRgb c = row[x];
            row[x] = qRgb(clamp255(qRed(c) + 3 * gaussian(rng)), clamp255(qGreen(c) + 3 * gaussian(rng)),
                          clamp255(qBlue(c) + 3 * gaussian(rng)));
        }
    }
    return photo;
}

double alikeShare(const QImage& photo, QRgb a, QRgb b)
{
    const QImage words = photo.convertToFormat(QImage::Format_ARGB32);
    const keying::KeyColour ka = keying::keyColourOf(a), kb = keying::keyColourOf(b);
    qint64 alike = 0;
    for (int y = 0; y < words.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(words.constScanLine(y));
        for (int x = 0; x < words.width(); ++x)
            alike += keying::isBackdrop(ka, row[x]) == keying::isBackdrop(kb, row[x]) ? 1 : 0;
    }
    return double(alike) / (qint64(words.width()) * words.height());
}

double truthMismatch(const QImage& photo, QRgb key, const QImage& truth)
{
    const QImage words = photo.convertToFormat(QImage::Format_ARGB32);
    const keying::KeyColour k = keying::keyColourOf(key);
    qint64 wrong = 0;
    for (int y = 0; y < words.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(words.constScanLine(y));
        const uchar* t = truth.constScanLine(y);
        for (int x = 0; x < words.width(); ++x) {
            const bool taken = keying::isBackdrop(k, row[x]);
            if ((t[x] == 255 && !taken) || (t[x] == 0 && taken))
                ++wrong;
        }
    }
    return double(wrong) / (qint64(words.width()) * words.height());
}

} // namespace boothscenes
