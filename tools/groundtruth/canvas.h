// SPDX-License-Identifier: MIT
#pragma once

// The made photos' renderer. Every layer is drawn at 8x8 samples per photo
// pixel and composited front over back ("over"), then the samples of a pixel
// are averaged (a box filter). The averaged opacity is the true alpha and the
// averaged premultiplied colour over it the true foreground colour, so that
// a*F + (1-a)*S is exactly what the layers show over any backdrop S.

#include <QPointF>
#include <QRectF>
#include <QSize>

#include <functional>
#include <variant>
#include <vector>

namespace groundtruth {

struct Rgb
{
    float r = 0, g = 0, b = 0;
};

inline Rgb mixRgb(Rgb a, Rgb b, float t)
{
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

// What a layer puts on one sample: how much it hides of what lies behind it,
// and its colour there.
struct Paint
{
    float opacity = 1;
    Rgb colour;
};

// A shape given by a test of a point (photo pixels, 0,0 the top left corner of
// the photo); the test fills in the paint and says whether the point is inside.
struct Region
{
    QRectF box; // nothing outside it is covered
    std::function<bool(float x, float y, Paint& paint)> at;
    QPointF motion; // how far it moves while the shutter is open
};

// A thin strand (a hair, a thread) along a polyline, its width narrowing from
// root to tip. Its own crossings are drawn once: a strand never darkens itself.
struct Strand
{
    std::vector<QPointF> points;
    float rootWidth = 1;
    float tipWidth = 1;
    float opacity = 1;
    Rgb colour;
    QPointF motion;
};

using Layer = std::variant<Region, Strand>;

struct Scene
{
    QSize size;
    std::vector<Layer> layers; // back to front
};

// The truth about one photo's subject: alpha 0..1 and the straight colour
// (0..1 a channel) per pixel, row by row.
struct TrueMatte
{
    int width = 0;
    int height = 0;
    std::vector<float> alpha;
    std::vector<Rgb> foreground;
    float alphaAt(int x, int y) const { return alpha[static_cast<size_t>(y) * width + x]; }
};

constexpr int kSamplesPerSide = 8;

TrueMatte render(const Scene& scene);

// The moment of the exposure (-0.5..0.5) at which a sample is taken: the 64
// samples of a pixel see 64 different moments, so a moving layer leaves an
// evenly weighted trail.
float sampleTime(int sx, int sy);

} // namespace groundtruth
