// SPDX-License-Identifier: MIT
#include "keying/cleanplate.h"

#include "keying/rowpool.h"
#include "keying/softrows.h"

#include <algorithm>
#include <cmath>

namespace keying {

namespace {

// Cells of about a 64th of the photo's longer side, never under 16 pixels: a
// 24-megapixel photo has a grid of 64 x 43, enough for the fall-off of studio
// light, and the grid's cost stays small whatever the photo's size.
int cellSizeFor(int width, int height)
{
    return std::max(16, (std::max(width, height) + 63) / 64);
}

bool isSure(const SureBackdrop& s, std::uint32_t px, float* difference)
{
    const float r = float((px >> 16) & 255u);
    const float d = float((px >> s.dominantShift) & 255u);
    const float o = float((px >> s.otherShift) & 255u);
    *difference = d - softrows::otherTwo(s.cMax, s.cRed, s.cOther, r, o);
    if (*difference < s.minDifference)
        return false;
    // Lighting scales the three channels alike, so the backdrop keeps the
    // key colour's ratios where it is darker or brighter; a pixel with some
    // subject in it strays from them.
    const float slack = s.tolerance * d;
    return std::fabs(r - s.redRatio * d) <= slack && std::fabs(o - s.otherRatio * d) <= slack;
}

struct Level
{
    int columns = 0, rows = 0;
    std::vector<PlateColour> colour;
    std::vector<float> weight;
};

PlateColour blend(const PlateColour& a, const PlateColour& b, float t)
{
    return {a.red + (b.red - a.red) * t, a.dominant + (b.dominant - a.dominant) * t, a.other + (b.other - a.other) * t};
}

// The level's colour at a point in its own cell coordinates (cell centres at
// whole numbers), bilinear, clamped at the edges.
PlateColour sampleLevel(const Level& l, float gx, float gy)
{
    gx = std::clamp(gx, 0.0f, float(l.columns - 1));
    gy = std::clamp(gy, 0.0f, float(l.rows - 1));
    const int i0 = int(gx);
    const int j0 = int(gy);
    const int i1 = std::min(i0 + 1, l.columns - 1);
    const int j1 = std::min(j0 + 1, l.rows - 1);
    const float fx = gx - float(i0);
    const float fy = gy - float(j0);
    const auto at = [&](int i, int j) { return l.colour[std::size_t(j) * l.columns + i]; };
    return blend(blend(at(i0, j0), at(i1, j0), fx), blend(at(i0, j1), at(i1, j1), fx), fy);
}

} // namespace

CleanPlate::CleanPlate(const QImage& photo, const SureBackdrop& sure, int threads)
{
    m_width = photo.width();
    m_cell = cellSizeFor(photo.width(), photo.height());
    m_columns = std::max(1, (photo.width() + m_cell - 1) / m_cell);
    m_rows = std::max(1, (photo.height() + m_cell - 1) / m_cell);
    measure(photo, sure, threads);
    fill(sure.key);

    // Node i's centre lies at (i + 0.5) cells; photo column x at x + 0.5.
    m_leftNode.resize(std::size_t(std::max(0, m_width)));
    m_rightWeight.resize(std::size_t(std::max(0, m_width)));
    for (int x = 0; x < m_width; ++x) {
        const float g = (float(x) + 0.5f) / float(m_cell) - 0.5f;
        const int left = std::clamp(int(std::floor(g)), 0, m_columns - 1);
        m_leftNode[std::size_t(x)] = left;
        m_rightWeight[std::size_t(x)] = left + 1 < m_columns ? std::clamp(g - float(left), 0.0f, 1.0f) : 0.0f;
    }
    // Photo columns that read nodes i and i + 1 end where the next run starts.
    m_segmentEnd.assign(std::size_t(m_columns), 0);
    for (int x = 0; x < m_width; ++x)
        m_segmentEnd[std::size_t(m_leftNode[std::size_t(x)])] = x + 1;
    for (int i = 1; i < m_columns; ++i)
        m_segmentEnd[std::size_t(i)] = std::max(m_segmentEnd[std::size_t(i)], m_segmentEnd[std::size_t(i - 1)]);
}

void CleanPlate::measure(const QImage& photo, const SureBackdrop& sure, int threads)
{
    const std::size_t cells = std::size_t(m_columns) * m_rows;
    m_sums.assign(cells * 4, 0.0);
    m_sampled.assign(cells, 0);
    const int width = photo.width();
    const int height = photo.height();
    // Every other pixel of every other row is plenty for a cell's mean on
    // large photos, and a quarter of the reads.
    const int step = m_cell >= 32 ? 2 : 1;
    const uchar* bits = photo.constBits();
    const qsizetype stride = photo.bytesPerLine();
    const float keep = sure.keepShare;
    // Each run of grid rows writes only its own cells.
    runRowsOnPool(m_rows, threads, [&](int firstRow, int endRow) {
        // Per cell of the grid row, the sure pixels by their colour
        // difference (one bin a level): count and channel sums.
        constexpr int kBins = 256;
        std::vector<int> count(std::size_t(m_columns) * kBins);
        std::vector<float> sums(std::size_t(m_columns) * kBins * 3);
        for (int j = firstRow; j < endRow; ++j) {
            std::fill(count.begin(), count.end(), 0);
            std::fill(sums.begin(), sums.end(), 0.0f);
            int* sampled = m_sampled.data() + std::size_t(j) * m_columns;
            const int yEnd = std::min(height, (j + 1) * m_cell);
            for (int y = j * m_cell; y < yEnd; y += step) {
                const auto* row = reinterpret_cast<const std::uint32_t*>(bits + y * stride);
                for (int i = 0; i < m_columns; ++i) {
                    const int xEnd = std::min(width, (i + 1) * m_cell);
                    int* c = count.data() + std::size_t(i) * kBins;
                    float* sm = sums.data() + std::size_t(i) * kBins * 3;
                    int looked = 0;
                    for (int x = i * m_cell; x < xEnd; x += step) {
                        const std::uint32_t px = row[x];
                        ++looked;
                        float difference = 0;
                        if (!isSure(sure, px, &difference))
                            continue;
                        const int bin = std::clamp(int(difference), 0, kBins - 1);
                        ++c[bin];
                        sm[bin * 3] += float((px >> 16) & 255u);
                        sm[bin * 3 + 1] += float((px >> sure.dominantShift) & 255u);
                        sm[bin * 3 + 2] += float((px >> sure.otherShift) & 255u);
                    }
                    sampled[i] += looked;
                }
            }
            // Pixels with a little subject in them (the thin ends of hair, a
            // veil's edge) pass the colour test too, but their difference
            // falls short of the backdrop's. The cell's backdrop is what is
            // near the top of its differences: the pixels within `keep` of
            // the level a tenth of them reach.
            double* cellSums = m_sums.data() + std::size_t(j) * m_columns * 4;
            for (int i = 0; i < m_columns; ++i) {
                const int* c = count.data() + std::size_t(i) * kBins;
                const float* sm = sums.data() + std::size_t(i) * kBins * 3;
                int total = 0;
                for (int b = 0; b < kBins; ++b)
                    total += c[b];
                if (total == 0)
                    continue;
                int seen = 0;
                int top = kBins - 1;
                while (top > 0 && (seen += c[top]) * 10 < total)
                    --top;
                const int from = int(std::ceil(float(top) * keep));
                for (int b = from; b < kBins; ++b) {
                    cellSums[i * 4 + 0] += sm[b * 3];
                    cellSums[i * 4 + 1] += sm[b * 3 + 1];
                    cellSums[i * 4 + 2] += sm[b * 3 + 2];
                    cellSums[i * 4 + 3] += c[b];
                }
            }
        }
    });
}

// Pull-push: each coarser level is the weighted mean of the four cells
// below it; going back down, a cell keeps its own mean in the measure of its
// weight and takes the rest from the coarser level around it. Cells under
// the subject thus get the backdrop around them, smoothly.
void CleanPlate::fill(const PlateColour& fallback)
{
    std::vector<Level> levels(1);
    Level& base = levels[0];
    base.columns = m_columns;
    base.rows = m_rows;
    base.colour.resize(m_sampled.size());
    base.weight.resize(m_sampled.size());
    for (std::size_t c = 0; c < m_sampled.size(); ++c) {
        const double n = m_sums[c * 4 + 3];
        if (n > 0) {
            base.colour[c] = {float(m_sums[c * 4] / n), float(m_sums[c * 4 + 1] / n), float(m_sums[c * 4 + 2] / n)};
        }
        // A cell with a quarter of its pixels surely backdrop is trusted whole.
        const double enough = std::max(1.0, m_sampled[c] / 4.0);
        base.weight[c] = float(std::min(1.0, n / enough));
    }
    m_sums.clear();
    m_sampled.clear();

    while (levels.back().columns > 1 || levels.back().rows > 1) {
        const Level& fine = levels.back();
        Level coarse;
        coarse.columns = (fine.columns + 1) / 2;
        coarse.rows = (fine.rows + 1) / 2;
        coarse.colour.resize(std::size_t(coarse.columns) * coarse.rows);
        coarse.weight.resize(coarse.colour.size());
        for (int j = 0; j < coarse.rows; ++j) {
            for (int i = 0; i < coarse.columns; ++i) {
                PlateColour sum;
                float w = 0;
                for (int dj = 0; dj < 2; ++dj) {
                    for (int di = 0; di < 2; ++di) {
                        const int fi = 2 * i + di;
                        const int fj = 2 * j + dj;
                        if (fi >= fine.columns || fj >= fine.rows)
                            continue;
                        const std::size_t c = std::size_t(fj) * fine.columns + fi;
                        const float cw = fine.weight[c];
                        sum.red += cw * fine.colour[c].red;
                        sum.dominant += cw * fine.colour[c].dominant;
                        sum.other += cw * fine.colour[c].other;
                        w += cw;
                    }
                }
                const std::size_t c = std::size_t(j) * coarse.columns + i;
                if (w > 0)
                    coarse.colour[c] = {sum.red / w, sum.dominant / w, sum.other / w};
                coarse.weight[c] = std::min(1.0f, w);
            }
        }
        levels.push_back(std::move(coarse));
    }

    Level& top = levels.back();
    if (top.weight[0] <= 0)
        top.colour[0] = fallback;
    top.weight[0] = 1;
    for (std::size_t l = levels.size() - 1; l-- > 0;) {
        Level& fine = levels[l];
        const Level& coarse = levels[l + 1];
        for (int j = 0; j < fine.rows; ++j) {
            for (int i = 0; i < fine.columns; ++i) {
                const std::size_t c = std::size_t(j) * fine.columns + i;
                const float w = fine.weight[c];
                if (w >= 1)
                    continue;
                // Fine centre i sits at (i + 0.5) / 2 - 0.5 in coarse cells.
                const PlateColour around = sampleLevel(coarse, float(i) * 0.5f - 0.25f, float(j) * 0.5f - 0.25f);
                fine.colour[c] = w > 0 ? blend(around, fine.colour[c], w) : around;
                fine.weight[c] = 1;
            }
        }
    }
    m_nodes = std::move(levels[0].colour);
}

void CleanPlate::row(int y, float* red, float* dominant, float* other) const
{
    const float g = (float(y) + 0.5f) / float(m_cell) - 0.5f;
    const int top = std::clamp(int(std::floor(g)), 0, m_rows - 1);
    const int bottom = std::min(top + 1, m_rows - 1);
    const float fy = bottom > top ? std::clamp(g - float(top), 0.0f, 1.0f) : 0.0f;
    // The grid's row at y, then each photo column between its two nodes.
    // Runs of columns share their nodes, so the inner loops are plain
    // streams the compiler turns into vector code.
    int x = 0;
    for (int i = 0; i < m_columns && x < m_width; ++i) {
        const PlateColour a = blend(node(i, top), node(i, bottom), fy);
        const int next = std::min(i + 1, m_columns - 1);
        const PlateColour b = blend(node(next, top), node(next, bottom), fy);
        const float stepR = b.red - a.red;
        const float stepD = b.dominant - a.dominant;
        const float stepO = b.other - a.other;
        const int end = m_segmentEnd[std::size_t(i)];
        const float* w = m_rightWeight.data();
        for (int p = x; p < end; ++p) {
            red[p] = a.red + w[p] * stepR;
            dominant[p] = a.dominant + w[p] * stepD;
            other[p] = a.other + w[p] * stepO;
        }
        x = end;
    }
}

} // namespace keying
