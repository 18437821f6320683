// SPDX-License-Identifier: MIT
#include "keying/backdropcolour.h"

#include "keying/keymask.h"

#include <QList>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace keying {

namespace {

// The photo is judged on a grid of at most this many samples a side: enough
// for a border ring of a dozen samples deep, and the same work for a
// thumbnail as for 100 megapixels.
constexpr int kGridSide = 256;
// The border ring: this share of the width (height) on each side.
constexpr double kRing = 0.1;
// A corner patch: this share of each side, at each corner.
constexpr double kCorner = 0.08;

// What a candidate must show to count as the backdrop.
constexpr double kMinEdgeShare = 0.2;    // of the border ring
constexpr double kMinSideShare = 0.1;    // on a side ...
constexpr int kMinSides = 2;             // ... on at least this many sides
constexpr double kMinFrameShare = 0.05;  // of the whole frame
constexpr double kMinOneColour = 0.5;    // of its family's pixels taken by its key
constexpr double kMaxRoughness = 0.10;   // neighbours taken that still differ a lot
// Two nearby samples of one even backdrop differ by grain and falloff only;
// leaves, fabric and walls differ by more than this in some channel.
constexpr int kRoughStep = 40;

struct Sample
{
    QRgb pixel;
    BackdropFamily family;
    bool border;
    int side;   // bit set: 1 top, 2 bottom, 4 left, 8 right
    int corner; // 0 none, 1..4
};

struct Grid
{
    int columns = 0;
    int rows = 0;
    QList<Sample> samples; // row by row
    int borderCount = 0;
    std::array<int, 4> sideCount{};
    std::array<int, 4> cornerCount{};
};

Grid sampleGrid(const QImage& photo)
{
    Grid g;
    g.columns = std::min(photo.width(), kGridSide);
    g.rows = std::min(photo.height(), kGridSide);
    g.samples.reserve(qsizetype(g.columns) * g.rows);
    const int ringX = std::max(1, int(g.columns * kRing));
    const int ringY = std::max(1, int(g.rows * kRing));
    const int cornerX = std::max(1, int(g.columns * kCorner));
    const int cornerY = std::max(1, int(g.rows * kCorner));
    for (int j = 0; j < g.rows; ++j) {
        const int y = int((qint64(j) * photo.height() + photo.height() / 2) / g.rows);
        for (int i = 0; i < g.columns; ++i) {
            const int x = int((qint64(i) * photo.width() + photo.width() / 2) / g.columns);
            Sample s;
            s.pixel = photo.pixel(x, y);
            s.family = familyOf(s.pixel);
            s.side = (j < ringY ? 1 : 0) | (j >= g.rows - ringY ? 2 : 0) | (i < ringX ? 4 : 0)
                | (i >= g.columns - ringX ? 8 : 0);
            s.border = s.side != 0;
            const bool left = i < cornerX, right = i >= g.columns - cornerX;
            const bool top = j < cornerY, bottom = j >= g.rows - cornerY;
            s.corner = (top && left) ? 1 : (top && right) ? 2 : (bottom && left) ? 3 : (bottom && right) ? 4 : 0;
            if (s.border)
                ++g.borderCount;
            for (int b = 0; b < 4; ++b)
                g.sideCount[b] += (s.side >> b) & 1;
            if (s.corner)
                ++g.cornerCount[s.corner - 1];
            g.samples.append(s);
        }
    }
    return g;
}

// A candidate colour judged against the grid.
struct Judgement
{
    QRgb colour = 0;
    BackdropFamily family = BackdropFamily::None;
    double edgeShare = 0;
    double frameShare = 0;
    double oneColour = 0;
    double roughness = 1;
    int sidesHeld = 0;
    int cornersHeld = 0;

    bool passes() const
    {
        return edgeShare >= kMinEdgeShare && sidesHeld >= kMinSides && frameShare >= kMinFrameShare
            && oneColour >= kMinOneColour && roughness <= kMaxRoughness;
    }
};

int channelStep(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
}

// The middle of the samples the key takes, channel by channel: the falloff
// darkens the corners and the light brightens the middle, and the middle
// value keeps both inside the key's reach.
QRgb medianColour(const Grid& g, const QList<bool>& taken, QRgb fallback)
{
    std::array<QList<int>, 3> channels;
    for (qsizetype n = 0; n < g.samples.size(); ++n) {
        if (!taken[n])
            continue;
        const QRgb p = g.samples[n].pixel;
        channels[0].append(qRed(p));
        channels[1].append(qGreen(p));
        channels[2].append(qBlue(p));
    }
    if (channels[0].isEmpty())
        return fallback;
    std::array<int, 3> middle{};
    for (int c = 0; c < 3; ++c) {
        auto mid = channels[c].begin() + channels[c].size() / 2;
        std::nth_element(channels[c].begin(), mid, channels[c].end());
        middle[c] = *mid;
    }
    return qRgb(middle[0], middle[1], middle[2]);
}

Judgement judge(const Grid& g, QRgb colour, BackdropFamily family, QList<bool>& taken)
{
    Judgement j;
    j.colour = colour;
    j.family = family;
    const KeyColour k = keyColourOf(colour);
    taken.fill(false, g.samples.size());
    int all = 0, border = 0, familyCount = 0, familyTaken = 0;
    std::array<int, 4> sides{}, corners{};
    for (qsizetype n = 0; n < g.samples.size(); ++n) {
        const Sample& s = g.samples[n];
        const bool t = isBackdrop(k, s.pixel);
        taken[n] = t;
        if (s.family == family) {
            ++familyCount;
            familyTaken += t ? 1 : 0;
        }
        if (!t)
            continue;
        ++all;
        border += s.border ? 1 : 0;
        for (int b = 0; b < 4; ++b)
            sides[b] += (s.side >> b) & 1;
        if (s.corner)
            ++corners[s.corner - 1];
    }
    j.frameShare = double(all) / std::max<qsizetype>(1, g.samples.size());
    j.edgeShare = double(border) / std::max(1, g.borderCount);
    j.oneColour = double(familyTaken) / std::max(1, familyCount);
    for (int b = 0; b < 4; ++b) {
        if (g.sideCount[b] > 0 && double(sides[b]) / g.sideCount[b] >= kMinSideShare)
            ++j.sidesHeld;
        if (g.cornerCount[b] > 0 && 2 * corners[b] >= g.cornerCount[b])
            ++j.cornersHeld;
    }
    // Pairs of taken samples a thirty-second of the frame apart: on a
    // backdrop they differ by grain and falloff only, on leaves or a
    // patterned wall by much more, whatever the photo's resolution.
    const int dx = std::max(1, g.columns / 32), dy = std::max(1, g.rows / 32);
    int pairs = 0, rough = 0;
    for (int y = 0; y < g.rows; ++y) {
        for (int x = 0; x < g.columns; ++x) {
            const qsizetype n = qsizetype(y) * g.columns + x;
            if (!taken[n])
                continue;
            const qsizetype right = n + dx, below = n + qsizetype(dy) * g.columns;
            if (x + dx < g.columns && taken[right]) {
                ++pairs;
                rough += channelStep(g.samples[n].pixel, g.samples[right].pixel) > kRoughStep ? 1 : 0;
            }
            if (y + dy < g.rows && taken[below]) {
                ++pairs;
                rough += channelStep(g.samples[n].pixel, g.samples[below].pixel) > kRoughStep ? 1 : 0;
            }
        }
    }
    j.roughness = pairs > 0 ? double(rough) / pairs : 1.0;
    return j;
}

// Up to two seeds per family: the most common colours of the family, the
// border counting three times, each the mean of its bin. The second must lie
// apart from the first, so that a second green (a green shirt before a green
// backdrop) gets its own judgement.
QList<QRgb> seedsOf(const Grid& g, BackdropFamily family)
{
    constexpr int kBins = 8 * 8 * 8;
    std::array<double, kBins> weight{};
    std::array<std::array<double, 3>, kBins> sum{};
    for (const Sample& s : g.samples) {
        if (s.family != family)
            continue;
        const int bin = (qRed(s.pixel) >> 5) * 64 + (qGreen(s.pixel) >> 5) * 8 + (qBlue(s.pixel) >> 5);
        const double w = s.border ? 3.0 : 1.0;
        weight[bin] += w;
        sum[bin][0] += w * qRed(s.pixel);
        sum[bin][1] += w * qGreen(s.pixel);
        sum[bin][2] += w * qBlue(s.pixel);
    }
    QList<QRgb> seeds;
    int first = -1;
    for (int round = 0; round < 2; ++round) {
        int best = -1;
        for (int bin = 0; bin < kBins; ++bin) {
            if (weight[bin] <= 0)
                continue;
            if (first >= 0) {
                const int dr = std::abs(bin / 64 - first / 64), dg = std::abs(bin / 8 % 8 - first / 8 % 8),
                          db = std::abs(bin % 8 - first % 8);
                if (std::max({dr, dg, db}) < 2)
                    continue;
            }
            if (best < 0 || weight[bin] > weight[best])
                best = bin;
        }
        if (best < 0)
            break;
        seeds.append(qRgb(int(sum[best][0] / weight[best] + 0.5), int(sum[best][1] / weight[best] + 0.5),
                          int(sum[best][2] / weight[best] + 0.5)));
        first = best;
    }
    return seeds;
}

bool better(const Judgement& a, const Judgement& b)
{
    if (a.cornersHeld != b.cornersHeld)
        return a.cornersHeld > b.cornersHeld;
    return a.edgeShare > b.edgeShare;
}

} // namespace

BackdropFamily familyOf(QRgb pixel)
{
    const KeyColour own = keyColourOf(pixel);
    if (!own.greenKey && !own.blueKey)
        return BackdropFamily::None;
    // A pixel the key made from itself would not take is too grey, too dark
    // or too faint to be backdrop.
    if (!isBackdrop(own, pixel))
        return BackdropFamily::None;
    return own.greenKey ? BackdropFamily::Green : BackdropFamily::Blue;
}

BackdropEstimate estimateBackdrop(const QImage& photo)
{
    BackdropEstimate e;
    if (photo.isNull() || photo.width() <= 0 || photo.height() <= 0) {
        e.whyNot = QStringLiteral("the photo is empty");
        return e;
    }
    const Grid g = sampleGrid(photo);
    QList<bool> taken;
    std::optional<Judgement> best;
    for (const BackdropFamily family : {BackdropFamily::Green, BackdropFamily::Blue}) {
        for (const QRgb seed : seedsOf(g, family)) {
            // Seeded from one bin (the border's, often the darkest), then
            // moved until it stays, at most five times, to the middle of
            // what its key takes: the whole backdrop, falloff included.
            Judgement j = judge(g, seed, family, taken);
            for (int round = 0; round < 5; ++round) {
                const QRgb middle = medianColour(g, taken, j.colour);
                if (middle == j.colour || familyOf(middle) != family)
                    break;
                j = judge(g, middle, family, taken);
            }
            if (j.passes() && (!best || better(j, *best)))
                best = j;
        }
    }
    if (!best) {
        e.whyNot = QStringLiteral("no green or blue backdrop found");
        return e;
    }
    e.found = true;
    e.colour = best->colour | 0xFF000000u;
    e.edgeShare = best->edgeShare;
    e.frameShare = best->frameShare;
    e.cornersHeld = best->cornersHeld;
    return e;
}

} // namespace keying
