// SPDX-License-Identifier: MIT
#pragma once

// Small pixel helpers shared by the picture makers.

#include <QColor>
#include <QImage>
#include <QRgb>
#include <QString>

#include <cstdint>
#include <vector>

namespace samplegen {

inline int clampByte(double v)
{
    const long r = std::lround(v);
    return r < 0 ? 0 : (r > 255 ? 255 : static_cast<int>(r));
}

inline QRgb packRgb(double r, double g, double b)
{
    return qRgb(clampByte(r), clampByte(g), clampByte(b));
}

inline QColor shade(const QColor& c, double f, int alpha = 255)
{
    return QColor(clampByte(c.red() * f), clampByte(c.green() * f), clampByte(c.blue() * f), alpha);
}

inline double lerp(double a, double b, double t) { return a + (b - a) * t; }

// A plane of floats, one per pixel, row after row.
struct Plane
{
    int width = 0;
    int height = 0;
    std::vector<float> v;

    Plane(int w, int h, float fill = 0.0f) : width(w), height(h), v(static_cast<size_t>(w) * h, fill) {}
    float& at(int x, int y) { return v[static_cast<size_t>(y) * width + x]; }
    float at(int x, int y) const { return v[static_cast<size_t>(y) * width + x]; }
};

// Repeated box blur: three passes come close to a Gaussian of radius r.
Plane blurred(const Plane& src, int radius, int passes = 3);

// The alpha channel of an ARGB image, 0..1.
Plane alphaPlane(const QImage& argb);

// Camera noise: a luminance part shared by the three channels plus a smaller
// colour part per channel.
void addSensorNoise(QImage& img, double lumaSigma, double chromaSigma, std::uint64_t seed);

// Saves with the given format and quality; false when the file cannot be written.
bool saveImage(const QImage& img, const QString& path, const char* format, int quality);

} // namespace samplegen
