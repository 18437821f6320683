// SPDX-License-Identifier: MIT
#pragma once

// How far a keyer's result is from the truth: alpha SAD (sum of |a - a_true|
// with a in 0..1, over 1000), alpha MSE in the edge band (pixels whose true
// alpha is strictly between 0 and 1, widened by a few pixels; x1e3), and the
// MSE of the composite over a new background against the true composite
// (channels 0..1, x1e3). Every keyer's composite is a*F + (1-a)*B from its own
// alpha and colour, by the same formula.

#include "tools/groundtruth/canvas.h"

#include <QImage>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace groundtruth {

struct KeyedMatte
{
    int width = 0;
    int height = 0;
    std::vector<float> alpha;
    std::vector<Rgb> colour; // straight, not premultiplied
};

// A keyer's RGBA output (straight alpha, as PNG stores it).
KeyedMatte keyedFromImage(const QImage& image);

struct MatteScores
{
    double sad = 0;
    double edgeMse = 0;
    double compositeMse = 0;
};

constexpr int kEdgeBandRadius = 3;

// The background the composites are judged on: a smooth colourful gradient of
// oranges, reds, magentas and yellows, far from any backdrop colour.
std::vector<Rgb> judgingBackground(int width, int height);

// The edge band: true alpha strictly between 0 and 1, widened by the radius
// (a disc).
std::vector<std::uint8_t> edgeBand(const TrueMatte& truth, int radius = kEdgeBandRadius);

class MatteJudge
{
public:
    explicit MatteJudge(const TrueMatte& truth);
    // Empty when the keyed matte is not the truth's size.
    std::optional<MatteScores> score(const KeyedMatte& keyed) const;
    const TrueMatte& truth() const { return m_truth; }

private:
    const TrueMatte& m_truth;
    std::vector<std::uint8_t> m_band;
    std::vector<Rgb> m_background;
    std::vector<Rgb> m_composite;
};

// A well-placed click on the backdrop: a pixel whose neighbourhood is all true
// backdrop (alpha 0), as near a corner as there is one, looked for from the
// top left, then top right, bottom left and bottom right. Null when the photo
// has no such pixel.
std::optional<QPoint> keyPointFor(const TrueMatte& truth);

// A photo with its true matte read from files (foreground colour and alpha
// 0..255); empty when either is unreadable or they differ in size.
std::optional<TrueMatte> loadMatte(const QString& foregroundPath, const QString& alphaPath);

} // namespace groundtruth
