// SPDX-License-Identifier: MIT
#include "tools/groundtruth/canvas.h"

#include <algorithm>
#include <cmath>

namespace groundtruth {

namespace {

constexpr int kS = kSamplesPerSide;
constexpr int kStripRows = 8; // photo rows rendered at a time, to keep the samples small

// The samples of a band of photo rows: accumulated opacity and premultiplied
// colour, and which layer last drew each sample.
struct Strip
{
    int width = 0; // samples a row
    int firstRow = 0; // the strip's first sample row in the photo
    int rows = 0; // sample rows
    std::vector<float> a, r, g, b;
    std::vector<int> stamp;

    void over(size_t i, const Paint& p)
    {
        const float keep = 1.0f - p.opacity;
        a[i] = p.opacity + a[i] * keep;
        r[i] = p.opacity * p.colour.r + r[i] * keep;
        g[i] = p.opacity * p.colour.g + g[i] * keep;
        b[i] = p.opacity * p.colour.b + b[i] * keep;
    }
};

// Sample index range [lo, hi) covering photo coordinates [from, to).
void sampleRange(double from, double to, int limit, int* lo, int* hi)
{
    *lo = std::max(0, static_cast<int>(std::floor(from * kS)));
    *hi = std::min(limit, static_cast<int>(std::ceil(to * kS)) + 1);
}

void drawRegion(Strip& s, const Region& region)
{
    const double mx = std::abs(region.motion.x()) / 2, my = std::abs(region.motion.y()) / 2;
    int x0, x1, y0, y1;
    sampleRange(region.box.left() - mx, region.box.right() + mx, s.width, &x0, &x1);
    sampleRange(region.box.top() - my, region.box.bottom() + my, s.firstRow + s.rows, &y0, &y1);
    y0 = std::max(y0, s.firstRow);
    const bool moving = !region.motion.isNull();
    const float vx = static_cast<float>(region.motion.x()), vy = static_cast<float>(region.motion.y());
    Paint paint;
    for (int sy = y0; sy < y1; ++sy) {
        const float y = (sy + 0.5f) / kS;
        size_t i = static_cast<size_t>(sy - s.firstRow) * s.width + x0;
        for (int sx = x0; sx < x1; ++sx, ++i) {
            float px = (sx + 0.5f) / kS, py = y;
            if (moving) {
                const float t = sampleTime(sx, sy);
                px -= t * vx;
                py -= t * vy;
            }
            if (region.at(px, py, paint))
                s.over(i, paint);
        }
    }
}

void drawStrand(Strip& s, const Strand& strand, int id)
{
    const size_t n = strand.points.size();
    if (n < 2)
        return;
    const Paint paint{strand.opacity, strand.colour};
    const bool moving = !strand.motion.isNull();
    const float vx = static_cast<float>(strand.motion.x()), vy = static_cast<float>(strand.motion.y());
    const double mx = std::abs(vx) / 2.0, my = std::abs(vy) / 2.0;
    for (size_t k = 0; k + 1 < n; ++k) {
        const float along = static_cast<float>(k) / static_cast<float>(n - 1);
        const float half = 0.5f * (strand.rootWidth + (strand.tipWidth - strand.rootWidth) * along);
        const QPointF a = strand.points[k], b = strand.points[k + 1];
        int x0, x1, y0, y1;
        sampleRange(std::min(a.x(), b.x()) - half - mx, std::max(a.x(), b.x()) + half + mx, s.width, &x0, &x1);
        sampleRange(std::min(a.y(), b.y()) - half - my, std::max(a.y(), b.y()) + half + my, s.firstRow + s.rows, &y0,
                    &y1);
        y0 = std::max(y0, s.firstRow);
        if (y0 >= y1 || x0 >= x1)
            continue;
        const float ax = static_cast<float>(a.x()), ay = static_cast<float>(a.y());
        const float dx = static_cast<float>(b.x() - a.x()), dy = static_cast<float>(b.y() - a.y());
        const float len2 = dx * dx + dy * dy;
        const float inv = len2 > 0 ? 1.0f / len2 : 0.0f;
        const float half2 = half * half;
        for (int sy = y0; sy < y1; ++sy) {
            size_t i = static_cast<size_t>(sy - s.firstRow) * s.width + x0;
            for (int sx = x0; sx < x1; ++sx, ++i) {
                if (s.stamp[i] == id)
                    continue;
                float px = (sx + 0.5f) / kS - ax, py = (sy + 0.5f) / kS - ay;
                if (moving) {
                    const float t = sampleTime(sx, sy);
                    px -= t * vx;
                    py -= t * vy;
                }
                const float u = std::clamp((px * dx + py * dy) * inv, 0.0f, 1.0f);
                const float ex = px - u * dx, ey = py - u * dy;
                if (ex * ex + ey * ey <= half2) {
                    s.over(i, paint);
                    s.stamp[i] = id;
                }
            }
        }
    }
}

// Whether a layer can touch the sample rows [y0, y1).
bool reaches(const Layer& layer, double top, double bottom)
{
    if (const auto* region = std::get_if<Region>(&layer)) {
        const double my = std::abs(region->motion.y()) / 2 + 1;
        return region->box.bottom() + my >= top && region->box.top() - my <= bottom;
    }
    const auto& strand = std::get<Strand>(layer);
    double lo = 1e30, hi = -1e30;
    for (const QPointF& p : strand.points) {
        lo = std::min(lo, p.y());
        hi = std::max(hi, p.y());
    }
    const double reach = std::max(strand.rootWidth, strand.tipWidth) + std::abs(strand.motion.y()) / 2 + 1;
    return hi + reach >= top && lo - reach <= bottom;
}

} // namespace

float sampleTime(int sx, int sy)
{
    // 37 is prime to 64, so the 64 samples of a pixel take all 64 moments.
    const int slot = ((sx & (kS - 1)) * kS + (sy & (kS - 1))) * 37 % (kS * kS);
    return (static_cast<float>(slot) + 0.5f) / (kS * kS) - 0.5f;
}

TrueMatte render(const Scene& scene)
{
    TrueMatte m;
    m.width = std::max(0, scene.size.width());
    m.height = std::max(0, scene.size.height());
    m.alpha.assign(static_cast<size_t>(m.width) * m.height, 0.0f);
    m.foreground.assign(m.alpha.size(), Rgb{});
    Strip s;
    s.width = m.width * kS;
    const size_t samples = static_cast<size_t>(s.width) * kStripRows * kS;
    for (int row0 = 0; row0 < m.height; row0 += kStripRows) {
        const int rows = std::min(kStripRows, m.height - row0);
        s.firstRow = row0 * kS;
        s.rows = rows * kS;
        s.a.assign(samples, 0.0f);
        s.r.assign(samples, 0.0f);
        s.g.assign(samples, 0.0f);
        s.b.assign(samples, 0.0f);
        s.stamp.assign(samples, -1);
        for (size_t k = 0; k < scene.layers.size(); ++k) {
            const Layer& layer = scene.layers[k];
            if (!reaches(layer, row0, row0 + rows))
                continue;
            if (const auto* region = std::get_if<Region>(&layer))
                drawRegion(s, *region);
            else
                drawStrand(s, std::get<Strand>(layer), static_cast<int>(k));
        }
        constexpr float kInvSamples = 1.0f / (kS * kS);
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < m.width; ++x) {
                double a = 0, r = 0, g = 0, b = 0;
                for (int j = 0; j < kS; ++j) {
                    size_t i = static_cast<size_t>(y * kS + j) * s.width + static_cast<size_t>(x) * kS;
                    for (int q = 0; q < kS; ++q, ++i) {
                        a += s.a[i];
                        r += s.r[i];
                        g += s.g[i];
                        b += s.b[i];
                    }
                }
                const size_t p = static_cast<size_t>(row0 + y) * m.width + x;
                const float alpha = static_cast<float>(a) * kInvSamples;
                m.alpha[p] = alpha;
                if (a > 0) {
                    const double inv = 1.0 / a;
                    m.foreground[p] = Rgb{static_cast<float>(std::min(1.0, r * inv)),
                                          static_cast<float>(std::min(1.0, g * inv)),
                                          static_cast<float>(std::min(1.0, b * inv))};
                }
            }
        }
    }
    return m;
}

} // namespace groundtruth
