// SPDX-License-Identifier: MIT
#include "bench/qualitykeyers.h"

#include <algorithm>
#include <iterator>

namespace quality {

namespace {

using groundtruth::Rgb;

// The two knobs, as the share r = D / D_backdrop of the backdrop's own
// difference: at and above "clear" a pixel is backdrop (alpha 0), at and below
// "solid" it is subject (alpha 1), linear between; that is alpha = 1 - k*(r -
// solid) with the gain k = 1 / (clear - solid).
constexpr double kClears[] = {0.7, 0.8, 0.9, 1.0, 1.1};
constexpr double kSolids[] = {-0.2, -0.1, 0.0, 0.1, 0.2, 0.3};
constexpr int kSolidCount = static_cast<int>(std::size(kSolids));
constexpr int kGridSize = static_cast<int>(std::size(kClears)) * kSolidCount;

// The backdrop's channel and the other two, for green or blue.
struct Channels
{
    float key, other1, other2;
};

inline Channels split(const Rgb& c, bool green)
{
    return green ? Channels{c.g, c.r, c.b} : Channels{c.b, c.r, c.g};
}

// How far the backdrop's channel stands above the larger of the other two.
inline float difference(const Rgb& c, bool green)
{
    const Channels ch = split(c, green);
    return ch.key - std::max(ch.other1, ch.other2);
}

inline float classicAlpha(float d, float backdropD, float clear, float solid)
{
    return std::clamp((clear - d / backdropD) / (clear - solid), 0.0f, 1.0f);
}

// The subject's colour: the backdrop's share taken out of the photo's colour,
// then the backdrop's channel limited to the larger of the other two (the
// classic spill suppression).
inline Rgb classicColour(const Rgb& photo, const Rgb& backdrop, float a, bool green)
{
    Rgb f = photo;
    if (a > 0.0f) {
        const float open = 1.0f - a;
        f = Rgb{std::clamp((photo.r - open * backdrop.r) / a, 0.0f, 1.0f),
                std::clamp((photo.g - open * backdrop.g) / a, 0.0f, 1.0f),
                std::clamp((photo.b - open * backdrop.b) / a, 0.0f, 1.0f)};
    }
    if (green)
        f.g = std::min(f.g, std::max(f.r, f.b));
    else
        f.b = std::min(f.b, std::max(f.r, f.g));
    return f;
}

class ClassicKeyer : public Keyer
{
public:
    QString id() const override { return QStringLiteral("classic"); }
    QString title() const override { return QStringLiteral("classic colour difference"); }
    int settingCount() const override { return kGridSize; }
    QString settingLabel(int s) const override
    {
        return QStringLiteral("clear at %1, solid at %2").arg(clear(s)).arg(solid(s));
    }

    std::vector<KeyResult> key(const ShotPhoto& shot, const std::vector<int>& settings) const override
    {
        const bool green = shot.condition.screen == groundtruth::Screen::Green;
        const Rgb backdrop = shot.keyColour;
        // A backdrop that hardly stands out in its channel would divide by
        // nearly nothing; one 8-bit step is the least difference kept.
        const float backdropD = std::max(difference(backdrop, green), 1.0f / 255.0f);
        const int w = shot.photo.width(), h = shot.photo.height();
        std::vector<KeyResult> results(settings.size());
        for (size_t i = 0; i < settings.size(); ++i) {
            const float cl = static_cast<float>(clear(settings[i])), so = static_cast<float>(solid(settings[i]));
            groundtruth::KeyedMatte& m = results[i].matte;
            m.width = w;
            m.height = h;
            m.alpha.resize(static_cast<size_t>(w) * h);
            m.colour.resize(m.alpha.size());
            for (int y = 0; y < h; ++y) {
                const QRgb* row = reinterpret_cast<const QRgb*>(shot.photo.constScanLine(y));
                for (int x = 0; x < w; ++x) {
                    const Rgb c{qRed(row[x]) / 255.0f, qGreen(row[x]) / 255.0f, qBlue(row[x]) / 255.0f};
                    const size_t p = static_cast<size_t>(y) * w + x;
                    const float a = classicAlpha(difference(c, green), backdropD, cl, so);
                    m.alpha[p] = a;
                    m.colour[p] = classicColour(c, backdrop, a, green);
                }
            }
        }
        return results;
    }

private:
    static double clear(int s) { return kClears[s / kSolidCount]; }
    static double solid(int s) { return kSolids[s % kSolidCount]; }
};

} // namespace

std::unique_ptr<Keyer> classicKeyer()
{
    return std::make_unique<ClassicKeyer>();
}

} // namespace quality
