// SPDX-License-Identifier: MIT
#include "canvas.h"

#include "noise.h"

#include <QImageWriter>

namespace samplegen {

namespace {

void blurRows(const std::vector<float>& in, std::vector<float>& out, int w, int h, int r)
{
    const float norm = 1.0f / static_cast<float>(2 * r + 1);
    for (int y = 0; y < h; ++y) {
        const float* row = in.data() + static_cast<size_t>(y) * w;
        float* dst = out.data() + static_cast<size_t>(y) * w;
        double sum = 0.0;
        // Edges repeat the border pixel.
        for (int i = -r; i <= r; ++i)
            sum += row[i < 0 ? 0 : (i >= w ? w - 1 : i)];
        for (int x = 0; x < w; ++x) {
            dst[x] = static_cast<float>(sum) * norm;
            const int add = x + r + 1;
            const int sub = x - r;
            sum += row[add >= w ? w - 1 : add];
            sum -= row[sub < 0 ? 0 : sub];
        }
    }
}

void transpose(const std::vector<float>& in, std::vector<float>& out, int w, int h)
{
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            out[static_cast<size_t>(x) * h + y] = in[static_cast<size_t>(y) * w + x];
}

} // namespace

Plane blurred(const Plane& src, int radius, int passes)
{
    Plane result = src;
    std::vector<float> tmp(src.v.size());
    std::vector<float> t2(src.v.size());
    for (int p = 0; p < passes; ++p) {
        blurRows(result.v, tmp, src.width, src.height, radius);
        transpose(tmp, t2, src.width, src.height);
        blurRows(t2, tmp, src.height, src.width, radius);
        transpose(tmp, result.v, src.height, src.width);
    }
    return result;
}

Plane alphaPlane(const QImage& argb)
{
    Plane a(argb.width(), argb.height());
    for (int y = 0; y < argb.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x)
            a.at(x, y) = static_cast<float>(qAlpha(line[x])) / 255.0f;
    }
    return a;
}

void addSensorNoise(QImage& img, double lumaSigma, double chromaSigma, std::uint64_t seed)
{
    for (int y = 0; y < img.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < img.width(); ++x) {
            const QRgb p = line[x];
            const double l = lumaSigma * hashGauss(x, y, seed);
            const double r = qRed(p) + l + chromaSigma * hashGauss(x, y, seed + 11);
            const double g = qGreen(p) + l + chromaSigma * hashGauss(x, y, seed + 23);
            const double b = qBlue(p) + l + chromaSigma * hashGauss(x, y, seed + 37);
            line[x] = qRgba(clampByte(r), clampByte(g), clampByte(b), qAlpha(p));
        }
    }
}

bool saveImage(const QImage& img, const QString& path, const char* format, int quality)
{
    QImageWriter writer(path, format);
    writer.setQuality(quality);
    return writer.write(img);
}

} // namespace samplegen
