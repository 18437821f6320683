// SPDX-License-Identifier: MIT
#include "tools/groundtruth/shooting.h"

#include "tools/groundtruth/random.h"

#include <QBuffer>

#include <algorithm>
#include <cmath>

namespace groundtruth {

namespace {

constexpr double kNoiseDeviation = 3.0 / 255.0;
constexpr int kJpegQuality = 90;

// Three passes of a box blur, close to a Gaussian of the given radius.
std::vector<float> blurred(std::vector<float> v, int w, int h, int radius)
{
    std::vector<float> tmp(v.size());
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < h; ++y) {
            const float* row = v.data() + static_cast<size_t>(y) * w;
            double sum = 0;
            int count = 0;
            for (int x = -radius; x < w + radius; ++x) {
                const int in = x + radius, out = x - radius - 1;
                if (in < w) { sum += row[in]; ++count; }
                if (out >= 0) { sum -= row[out]; --count; }
                if (x >= 0 && x < w)
                    tmp[static_cast<size_t>(y) * w + x] = static_cast<float>(sum / std::max(1, count));
            }
        }
        for (int x = 0; x < w; ++x) {
            double sum = 0;
            int count = 0;
            for (int y = -radius; y < h + radius; ++y) {
                const int in = y + radius, out = y - radius - 1;
                if (in < h) { sum += tmp[static_cast<size_t>(in) * w + x]; ++count; }
                if (out >= 0) { sum -= tmp[static_cast<size_t>(out) * w + x]; --count; }
                if (y >= 0 && y < h)
                    v[static_cast<size_t>(y) * w + x] = static_cast<float>(sum / std::max(1, count));
            }
        }
    }
    return v;
}

int toByte(double v)
{
    return std::clamp(static_cast<int>(std::lround(v * 255.0)), 0, 255);
}

} // namespace

std::vector<Condition> allConditions()
{
    std::vector<Condition> all;
    for (Screen s : {Screen::Green, Screen::Blue})
        for (Shooting k : {Shooting::Clean, Shooting::Spill, Shooting::Uneven})
            all.push_back({s, k});
    return all;
}

QString conditionName(const Condition& c)
{
    const QString screen = c.screen == Screen::Green ? QStringLiteral("green") : QStringLiteral("blue");
    switch (c.shooting) {
    case Shooting::Clean: return screen + QStringLiteral(", clean");
    case Shooting::Spill: return screen + QStringLiteral(", edge spill + noise + JPEG q90");
    case Shooting::Uneven: return screen + QStringLiteral(", uneven backdrop + noise + JPEG q90");
    }
    return screen;
}

QString conditionTag(const Condition& c)
{
    const QString screen = c.screen == Screen::Green ? QStringLiteral("green") : QStringLiteral("blue");
    switch (c.shooting) {
    case Shooting::Clean: return screen + QStringLiteral("-clean");
    case Shooting::Spill: return screen + QStringLiteral("-spill");
    case Shooting::Uneven: return screen + QStringLiteral("-uneven");
    }
    return screen;
}

Rgb backdropShade(Screen screen, std::uint64_t seed)
{
    Random rnd(seed ^ 0x5eed5eedull);
    const float t = static_cast<float>(rnd.uniform());
    const float hue = static_cast<float>(rnd.range(-0.06, 0.06));
    if (screen == Screen::Green) {
        Rgb c = mixRgb(Rgb{0.10f, 0.38f, 0.16f}, Rgb{0.38f, 0.86f, 0.32f}, t);
        c.r += hue;
        c.b -= hue;
        return c;
    }
    Rgb c = mixRgb(Rgb{0.07f, 0.17f, 0.45f}, Rgb{0.26f, 0.52f, 0.92f}, t);
    c.g += hue;
    return c;
}

QImage shoot(const TrueMatte& subject, const Condition& condition, std::uint64_t seed)
{
    const int w = subject.width, h = subject.height;
    QImage photo(w, h, QImage::Format_RGB32);
    if (photo.isNull())
        return photo;
    Random rnd(seed * 31 + static_cast<std::uint64_t>(condition.screen) * 7 + static_cast<std::uint64_t>(condition.shooting));
    const Rgb shade = backdropShade(condition.screen, seed);

    // The uneven backdrop: 30 % of brightness from one side of the frame to
    // the other, in a direction the seed chooses.
    const double angle = rnd.range(0, 6.283185307179586);
    const double ux = std::cos(angle), uy = std::sin(angle);
    const double c0 = std::min({0.0, ux * w, uy * h, ux * w + uy * h});
    const double c1 = std::max({0.0, ux * w, uy * h, ux * w + uy * h});
    const bool uneven = condition.shooting == Shooting::Uneven;

    // Spill: the backdrop's light on the subject where the backdrop is near.
    std::vector<float> spill;
    double spillAmount = 0;
    if (condition.shooting == Shooting::Spill) {
        spillAmount = rnd.range(0.25, 0.4);
        std::vector<float> open(subject.alpha.size());
        for (size_t i = 0; i < open.size(); ++i)
            open[i] = 1.0f - subject.alpha[i];
        spill = blurred(std::move(open), w, h, 4);
    }
    const bool noisy = condition.shooting != Shooting::Clean;
    for (int y = 0; y < h; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const size_t i = static_cast<size_t>(y) * w + x;
            Rgb s = shade;
            if (uneven) {
                const double ramp = (ux * x + uy * y - c0) / std::max(1.0, c1 - c0);
                const float f = static_cast<float>(1.15 - 0.3 * ramp);
                s = Rgb{s.r * f, s.g * f, s.b * f};
            }
            const float a = subject.alpha[i];
            Rgb f = subject.foreground[i];
            if (!spill.empty() && a > 0)
                f = mixRgb(f, s, static_cast<float>(spillAmount * std::min(1.0f, 2.0f * spill[i])));
            double r = a * f.r + (1 - a) * s.r, g = a * f.g + (1 - a) * s.g, b = a * f.b + (1 - a) * s.b;
            if (noisy) {
                r += kNoiseDeviation * rnd.gaussian();
                g += kNoiseDeviation * rnd.gaussian();
                b += kNoiseDeviation * rnd.gaussian();
            }
            row[x] = qRgb(toByte(r), toByte(g), toByte(b));
        }
    }
    if (!noisy)
        return photo;
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    photo.save(&buffer, "JPG", kJpegQuality);
    QImage decoded;
    decoded.loadFromData(jpeg, "JPG");
    return decoded.convertToFormat(QImage::Format_RGB32);
}

} // namespace groundtruth
