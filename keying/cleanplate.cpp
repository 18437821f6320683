// SPDX-License-Identifier: MIT
#include "keying/cleanplate.h"

#include "keying/rowpool.h"
#include "keying/softrows.h"

#include <algorithm>
#include <cmath>

namespace keying {

namespace {

// Subject cells of about a 256th of the photo's longer side, never under 4
// pixels; backdrop cells four times that: a 24-megapixel photo has a backdrop
// grid of 63 x 42 (enough for the fall-off of studio light) and a subject
// grid four times finer, and the grids' cost stays small at any size.
int subjectCellFor(int width, int height)
{
    return std::max(4, (std::max(width, height) + 255) / 256);
}

float differenceOf(const SureBackdrop& s, float r, float d, float o)
{
    return d - softrows::otherTwo(s.cMax, s.cRed, s.cOther, r, o);
}

// Surely backdrop: strongly of the key's colour, with its channel ratios.
// Lighting scales the three channels alike, so the backdrop keeps the key
// colour's ratios where it is darker or brighter; a pixel with some subject
// in it strays from them.
bool isSureBackdrop(const SureBackdrop& s, float r, float d, float o, float difference)
{
    if (difference < s.minDifference)
        return false;
    const float slack = s.tolerance * d;
    return std::fabs(r - s.redRatio * d) <= slack && std::fabs(o - s.otherRatio * d) <= slack;
}

// Pull-push: each coarser level is the weighted mean of the four nodes below
// it; going back down, a node keeps its own value in the measure of its
// weight and takes the rest from the coarser level around it. Nodes under
// the subject thus get the backdrop around them, smoothly.
struct Level
{
    int columns = 0, rows = 0;
    std::vector<float> values;
    std::vector<float> weight;
};

void sampleLevel(const Level& l, int channels, float gx, float gy, float* out)
{
    gx = std::clamp(gx, 0.0f, float(l.columns - 1));
    gy = std::clamp(gy, 0.0f, float(l.rows - 1));
    const int i0 = int(gx);
    const int j0 = int(gy);
    const int i1 = std::min(i0 + 1, l.columns - 1);
    const int j1 = std::min(j0 + 1, l.rows - 1);
    const float fx = gx - float(i0);
    const float fy = gy - float(j0);
    for (int c = 0; c < channels; ++c) {
        const auto at = [&](int i, int j) { return l.values[(std::size_t(j) * l.columns + i) * channels + c]; };
        const float top = at(i0, j0) + (at(i1, j0) - at(i0, j0)) * fx;
        const float bottom = at(i0, j1) + (at(i1, j1) - at(i0, j1)) * fx;
        out[c] = top + (bottom - top) * fy;
    }
}

} // namespace

void PlateGrid::setup(int width, int height, int cell, int channels)
{
    m_width = std::max(0, width);
    m_cell = std::max(1, cell);
    m_columns = std::max(1, (width + m_cell - 1) / m_cell);
    m_rows = std::max(1, (height + m_cell - 1) / m_cell);
    m_channels = channels;
    m_values.assign(std::size_t(m_columns) * m_rows * channels, 0.0f);
    // Node i's centre lies at (i + 0.5) cells; photo column x at x + 0.5.
    m_rightWeight.resize(std::size_t(m_width));
    m_segmentEnd.assign(std::size_t(m_columns), 0);
    for (int x = 0; x < m_width; ++x) {
        // Beyond the outer nodes the grid goes on along the line of the
        // last two, so that light falling off towards an edge is followed
        // to the edge.
        const float g = (float(x) + 0.5f) / float(m_cell) - 0.5f;
        const int left = std::clamp(int(std::floor(g)), 0, std::max(0, m_columns - 2));
        m_rightWeight[std::size_t(x)] = left + 1 < m_columns ? g - float(left) : 0.0f;
        m_segmentEnd[std::size_t(left)] = x + 1;
    }
    for (int i = 1; i < m_columns; ++i)
        m_segmentEnd[std::size_t(i)] = std::max(m_segmentEnd[std::size_t(i)], m_segmentEnd[std::size_t(i - 1)]);
}

void PlateGrid::fill(std::vector<float> weights, const float* fallback)
{
    const int ch = m_channels;
    std::vector<Level> levels(1);
    levels[0].columns = m_columns;
    levels[0].rows = m_rows;
    levels[0].values = std::move(m_values);
    levels[0].weight = std::move(weights);
    while (levels.back().columns > 1 || levels.back().rows > 1) {
        const Level& fine = levels.back();
        Level coarse;
        coarse.columns = (fine.columns + 1) / 2;
        coarse.rows = (fine.rows + 1) / 2;
        coarse.values.assign(std::size_t(coarse.columns) * coarse.rows * ch, 0.0f);
        coarse.weight.assign(std::size_t(coarse.columns) * coarse.rows, 0.0f);
        for (int j = 0; j < coarse.rows; ++j) {
            for (int i = 0; i < coarse.columns; ++i) {
                const std::size_t n = std::size_t(j) * coarse.columns + i;
                float w = 0;
                for (int dj = 0; dj < 2; ++dj) {
                    for (int di = 0; di < 2; ++di) {
                        const int fi = 2 * i + di;
                        const int fj = 2 * j + dj;
                        if (fi >= fine.columns || fj >= fine.rows)
                            continue;
                        const std::size_t f = std::size_t(fj) * fine.columns + fi;
                        const float fw = fine.weight[f];
                        for (int c = 0; c < ch; ++c)
                            coarse.values[n * ch + c] += fw * fine.values[f * ch + c];
                        w += fw;
                    }
                }
                if (w > 0) {
                    for (int c = 0; c < ch; ++c)
                        coarse.values[n * ch + c] /= w;
                }
                coarse.weight[n] = std::min(1.0f, w);
            }
        }
        levels.push_back(std::move(coarse));
    }

    Level& top = levels.back();
    if (top.weight[0] <= 0) {
        for (int c = 0; c < ch; ++c)
            top.values[std::size_t(c)] = fallback[c];
    }
    top.weight[0] = 1;
    std::vector<float> around(static_cast<std::size_t>(ch));
    for (std::size_t l = levels.size() - 1; l-- > 0;) {
        Level& fine = levels[l];
        const Level& coarse = levels[l + 1];
        for (int j = 0; j < fine.rows; ++j) {
            for (int i = 0; i < fine.columns; ++i) {
                const std::size_t n = std::size_t(j) * fine.columns + i;
                const float w = fine.weight[n];
                if (w >= 1)
                    continue;
                // Fine centre i sits at (i + 0.5) / 2 - 0.5 in coarse cells.
                sampleLevel(coarse, ch, float(i) * 0.5f - 0.25f, float(j) * 0.5f - 0.25f, around.data());
                for (int c = 0; c < ch; ++c) {
                    float& v = fine.values[n * ch + std::size_t(c)];
                    v = w > 0 ? around[std::size_t(c)] + (v - around[std::size_t(c)]) * w : around[std::size_t(c)];
                }
                fine.weight[n] = 1;
            }
        }
    }
    m_values = std::move(levels[0].values);
}

void PlateGrid::row(int y, float* const* out) const
{
    const float g = (float(y) + 0.5f) / float(m_cell) - 0.5f;
    const int top = std::clamp(int(std::floor(g)), 0, std::max(0, m_rows - 2));
    const int bottom = std::min(top + 1, m_rows - 1);
    const float fy = bottom > top ? g - float(top) : 0.0f;
    const float* w = m_rightWeight.data();
    // The grid's row at y, then each photo column between its two nodes.
    // Runs of columns share their nodes, so the inner loops are plain
    // streams the compiler turns into vector code.
    int x = 0;
    for (int i = 0; i < m_columns && x < m_width; ++i) {
        const int next = std::min(i + 1, m_columns - 1);
        const int end = m_segmentEnd[std::size_t(i)];
        for (int c = 0; c < m_channels; ++c) {
            const float a = value(i, top, c) + (value(i, bottom, c) - value(i, top, c)) * fy;
            const float b = value(next, top, c) + (value(next, bottom, c) - value(next, top, c)) * fy;
            const float step = b - a;
            // No aliasing between the weights and the row: plain vector code.
            float* __restrict o = out[c];
            const float* __restrict weight = w;
            for (int p = x; p < end; ++p)
                o[p] = a + weight[p] * step;
        }
        x = std::max(x, end);
    }
}

CleanPlate::CleanPlate(const QImage& photo, const SureBackdrop& sure, int threads)
{
    const int subjectCell = subjectCellFor(photo.width(), photo.height());
    m_backdrop.setup(photo.width(), photo.height(), subjectCell * 4, 3);
    m_subject.setup(photo.width(), photo.height(), subjectCell, 1);
    measure(photo, sure, threads);

    // Backdrop: the mean of each cell's sure pixels; a cell with a quarter of
    // its pixels surely backdrop is trusted whole.
    const std::size_t cells = m_sampled.size();
    std::vector<float> weights(cells, 0.0f);
    std::vector<float> difference(cells, 0.0f);
    std::vector<float>& colour = m_backdrop.values();
    for (std::size_t c = 0; c < cells; ++c) {
        const double n = m_sums[c * 4 + 3];
        if (n <= 0)
            continue;
        for (int k = 0; k < 3; ++k)
            colour[c * 3 + std::size_t(k)] = float(m_sums[c * 4 + std::size_t(k)] / n);
        difference[c] = differenceOf(sure, colour[c * 3], colour[c * 3 + 1], colour[c * 3 + 2]);
        weights[c] = float(std::min(1.0, n / std::max(1.0, m_sampled[c] / 4.0)));
    }
    // Light changes slowly across a backdrop: a cell's difference is about
    // the mean of two trusted neighbours on opposite sides of it, whichever
    // way the light falls off. A cell well below such a pair's mean holds
    // subject (a veil, the thin ends of hair over the whole cell), not
    // backdrop, and is filled from around it instead.
    const int columns = m_backdrop.columns();
    const int rows = m_backdrop.rows();
    std::vector<float> kept = weights;
    const int pairs[4][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}};
    for (int j = 0; j < rows; ++j) {
        for (int i = 0; i < columns; ++i) {
            const std::size_t c = std::size_t(j) * columns + i;
            if (weights[c] <= 0)
                continue;
            float expected = 0;
            for (const auto& p : pairs) {
                const int ai = i + p[0], aj = j + p[1], bi = i - p[0], bj = j - p[1];
                if (ai < 0 || aj < 0 || bi < 0 || bj < 0 || ai >= columns || bi >= columns || aj >= rows || bj >= rows)
                    continue;
                const std::size_t a = std::size_t(aj) * columns + ai;
                const std::size_t b = std::size_t(bj) * columns + bi;
                if (weights[a] >= 0.5f && weights[b] >= 0.5f)
                    expected = std::max(expected, 0.5f * (difference[a] + difference[b]));
            }
            if (difference[c] < sure.outlier * expected)
                kept[c] = 0;
        }
    }
    const float keyColour[3] = {sure.key.red, sure.key.dominant, sure.key.other};
    m_backdrop.fill(std::move(kept), keyColour);

    // Subject: each cell's sure subject pixels. Mixing with the backdrop
    // only raises a colour's difference, and a mixed pixel at the subject's
    // edge can pass for subject, so a cell counts between the mean of its
    // subject pixels and their lowest (`subjectLowest`), and the filled grid
    // takes the lowest value within `subjectReach` cells around.
    std::vector<float> subjectWeights(m_subjectSampled.size(), 0.0f);
    std::vector<float>& subjectValues = m_subject.values();
    for (std::size_t c = 0; c < m_subjectSampled.size(); ++c) {
        const double n = m_subjectSums[c * 2 + 1];
        if (n <= 0)
            continue;
        const float mean = float(m_subjectSums[c * 2] / n);
        subjectValues[c] = mean + (m_subjectLowest[c] - mean) * sure.subjectLowest;
        subjectWeights[c] = float(std::min(1.0, n / std::max(1.0, m_subjectSampled[c] / 4.0)));
    }
    const float none = 0.0f;
    m_subject.fill(std::move(subjectWeights), &none);
    if (sure.subjectReach > 0) {
        const std::vector<float> filled = m_subject.values();
        const int sc = m_subject.columns(), sr = m_subject.rows(), reach = sure.subjectReach;
        for (int j = 0; j < sr; ++j) {
            for (int i = 0; i < sc; ++i) {
                float least = filled[std::size_t(j) * sc + i];
                for (int nj = std::max(0, j - reach); nj <= std::min(sr - 1, j + reach); ++nj) {
                    for (int ni = std::max(0, i - reach); ni <= std::min(sc - 1, i + reach); ++ni)
                        least = std::min(least, filled[std::size_t(nj) * sc + ni]);
                }
                subjectValues[std::size_t(j) * sc + i] = least;
            }
        }
    }
    m_sums.clear();
    m_sampled.clear();
    m_subjectSums.clear();
    m_subjectSampled.clear();
    m_subjectLowest.clear();

    // The photo's grain: the median over the cells that measured it.
    std::vector<float> grains;
    for (const float g : m_grain) {
        if (g >= 0)
            grains.push_back(g);
    }
    if (!grains.empty()) {
        std::nth_element(grains.begin(), grains.begin() + std::ptrdiff_t(grains.size() / 2), grains.end());
        m_grainLevels = grains[grains.size() / 2];
    }
    m_grain.clear();
    m_sums.clear();
    m_sampled.clear();
    m_subjectSums.clear();
    m_subjectSampled.clear();
}

void CleanPlate::measure(const QImage& photo, const SureBackdrop& sure, int threads)
{
    const int columns = m_backdrop.columns();
    const int cell = m_backdrop.cell();
    const int subjectColumns = m_subject.columns();
    const int subjectCell = m_subject.cell();
    const int perCell = cell / subjectCell;
    m_sums.assign(std::size_t(columns) * m_backdrop.rows() * 4, 0.0);
    m_sampled.assign(std::size_t(columns) * m_backdrop.rows(), 0);
    m_grain.assign(std::size_t(columns) * m_backdrop.rows(), -1.0f);
    m_subjectSums.assign(std::size_t(subjectColumns) * m_subject.rows() * 2, 0.0);
    m_subjectSampled.assign(std::size_t(subjectColumns) * m_subject.rows(), 0);
    m_subjectLowest.assign(std::size_t(subjectColumns) * m_subject.rows(), 1e9f);
    const int width = photo.width();
    const int height = photo.height();
    // Every other pixel of every other row (every fourth or sixth of every
    // fourth or sixth on large photos: at least 16 a subject cell) is plenty
    // for a cell's figures, at a fraction of the reads.
    const int step = subjectCell >= 24 ? 6 : subjectCell >= 16 ? 4 : subjectCell >= 8 ? 2 : 1;
    const uchar* bits = photo.constBits();
    const qsizetype stride = photo.bytesPerLine();
    // Each run of backdrop grid rows writes only its own cells, and the
    // subject cells inside them.
    runRowsOnPool(m_backdrop.rows(), threads, [&](int firstRow, int endRow) {
        // Per backdrop cell of the grid row, the sure pixels by their colour
        // difference (one bin a level): count and channel sums.
        // Kept by each thread from run to run and photo to photo: a fresh
        // quarter megabyte each time would be mapped and cleared anew.
        constexpr int kBins = 256;
        thread_local std::vector<int> count;
        thread_local std::vector<float> sums;
        count.resize(std::size_t(columns) * kBins);
        sums.resize(std::size_t(columns) * kBins * 3);
        for (int j = firstRow; j < endRow; ++j) {
            std::fill(count.begin(), count.end(), 0);
            std::fill(sums.begin(), sums.end(), 0.0f);
            int* sampled = m_sampled.data() + std::size_t(j) * columns;
            const int yEnd = std::min(height, (j + 1) * cell);
            for (int y = j * cell; y < yEnd; y += step) {
                const auto* row = reinterpret_cast<const std::uint32_t*>(bits + y * stride);
                const std::size_t subjectRow = std::size_t(y / subjectCell) * subjectColumns;
                for (int si = 0; si < subjectColumns; ++si) {
                    const int i = si / perCell;
                    const int xEnd = std::min(width, (si + 1) * subjectCell);
                    int* c = count.data() + std::size_t(i) * kBins;
                    float* sm = sums.data() + std::size_t(i) * kBins * 3;
                    int looked = 0;
                    int subjects = 0;
                    float subjectDifference = 0;
                    float lowest = 1e9f;
                    for (int x = si * subjectCell; x < xEnd; x += step) {
                        const std::uint32_t px = row[x];
                        ++looked;
                        const float r = float((px >> 16) & 255u);
                        const float d = float((px >> sure.dominantShift) & 255u);
                        const float o = float((px >> sure.otherShift) & 255u);
                        const float difference = differenceOf(sure, r, d, o);
                        if (d - std::max(r, o) <= sure.subjectBelow) {
                            ++subjects;
                            subjectDifference += difference;
                            lowest = std::min(lowest, difference);
                            continue;
                        }
                        if (!isSureBackdrop(sure, r, d, o, difference))
                            continue;
                        const int bin = std::clamp(int(difference), 0, kBins - 1);
                        ++c[bin];
                        sm[bin * 3] += r;
                        sm[bin * 3 + 1] += d;
                        sm[bin * 3 + 2] += o;
                    }
                    sampled[i] += looked;
                    m_subjectSampled[subjectRow + std::size_t(si)] += looked;
                    m_subjectSums[(subjectRow + std::size_t(si)) * 2] += subjectDifference;
                    m_subjectSums[(subjectRow + std::size_t(si)) * 2 + 1] += subjects;
                    float& least = m_subjectLowest[subjectRow + std::size_t(si)];
                    least = std::min(least, lowest);
                }
            }
            // Pixels with a little subject in them (the thin ends of hair, a
            // veil's edge) pass the colour test too, but their difference
            // falls short of the backdrop's. The cell's backdrop is what is
            // near the top of its differences: the pixels within `keep` of
            // the level a tenth of them reach.
            double* cellSums = m_sums.data() + std::size_t(j) * columns * 4;
            for (int i = 0; i < columns; ++i) {
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
                // The grain: the spread of the upper half of the differences
                // (the lower tail holds the mixed pixels), from the median
                // to the top tenth, 1.28 standard deviations apart.
                int middle = top;
                while (middle > 0 && (seen += c[middle - 1]) * 2 < total)
                    --middle;
                if (total >= 32)
                    m_grain[std::size_t(j) * columns + std::size_t(i)] = (float(top - middle) + 0.5f) / 1.28f;
                const int from = int(std::ceil(float(top) * sure.keepShare));
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

void CleanPlate::row(int y, float* red, float* dominant, float* other, float* subjectDifference) const
{
    float* const backdrop[3] = {red, dominant, other};
    m_backdrop.row(y, backdrop);
    float* const subject[1] = {subjectDifference};
    m_subject.row(y, subject);
}

} // namespace keying
