// SPDX-License-Identifier: MIT
#pragma once

// The person in the sample photos, drawn from simple shaded shapes.

#include <QColor>
#include <QImage>

#include <cstdint>

namespace samplegen {

struct Figure
{
    double cx = 0.0;      // horizontal centre of the body, pixels
    double top = 0.0;     // top of the head, pixels
    double height = 0.0;  // head to soles, pixels
    QColor skin;
    QColor hair;
    QColor clothing;      // top or jacket
    QColor trousers;
    QColor shoes;
    bool longHair = false;
    bool handOnHip = false;
    bool shirtAndTie = false;
    std::uint64_t seed = 1;

    double unit() const { return height / 8.0; }
    double solesY() const { return top + 7.92 * unit(); }
};

// Paints the person into `layer` (ARGB32 premultiplied, transparent where the
// backdrop shows) and the Region code of every covered pixel into `labels`
// (RGB32, the code in each channel, drawn without antialiasing). Loose hair
// strands go into `layer` only: they are never solid.
void paintFigure(const Figure& f, QImage& layer, QImage& labels);

} // namespace samplegen
