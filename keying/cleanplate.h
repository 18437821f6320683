// SPDX-License-Identifier: MIT
#pragma once

// The clean plate: the backdrop's colour across the whole photo, as it would
// be without the subject. Backdrop lighting falls off towards the corners and
// is uneven, so the soft keyer keys each pixel against the backdrop at its
// place rather than against one colour. The plate is a coarse grid: each cell
// holds the mean of the pixels in it that are surely backdrop; cells with too
// few of them (under the subject) are filled from their neighbours by a
// pull-push pyramid, and each pixel reads the grid bilinearly (linearly on
// beyond the outer nodes).
//
// Beside it, a finer grid of the subject's own colour difference: where the
// subject near an edge is brown or skin (a difference well below zero) or
// yellow (above zero), a mix of it with the backdrop is that much further
// from or nearer to the backdrop, and the matte measures from there.
// Internal to the keying library.

#include <QImage>

#include <cstdint>
#include <vector>

namespace keying {

// The channels of the backdrop colour, in the order the soft keyer reads
// them: red, the key channel (green or blue), the other of green and blue.
struct PlateColour
{
    float red = 0, dominant = 0, other = 0;
};

// What tells surely-backdrop and surely-subject pixels apart from the rest.
struct SureBackdrop
{
    PlateColour key;               // the key colour
    float cMax, cRed, cOther;      // the "other two" channels, as the matte reads them
    float minDifference;           // the key channel above the other two by at least this
    float redRatio, otherRatio;    // the key colour's red and other channel over its key channel
    float tolerance;               // how far a pixel's ratios may stray from those
    float keepShare;               // of a cell's top differences, the share down to which pixels count
    float outlier;                 // a cell below this share of a neighbour's difference is not backdrop
    float subjectBelow;            // key channel minus the larger other at most this: surely subject
    float subjectLowest;           // 0: a subject cell's mean difference; 1: its lowest
    int subjectReach;              // the subject grid takes the lowest within this many cells
    int dominantShift, otherShift; // bit positions in the 0xAARRGGBB word
};

// A coarse grid of values (`channels` per node, node (i, j) at the centre of
// cell (i, j)), read bilinearly at every pixel.
class PlateGrid
{
public:
    void setup(int width, int height, int cell, int channels);
    // Nodes with weight 1 keep their values, nodes with weight 0 are filled
    // from the coarser levels of a pull-push pyramid, the rest blend the two.
    // `fallback` fills every node when no weight is above 0.
    void fill(std::vector<float> weights, const float* fallback);

    int cell() const { return m_cell; }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    int channels() const { return m_channels; }
    float value(int i, int j, int channel) const
    {
        return m_values[(std::size_t(j) * m_columns + i) * m_channels + channel];
    }
    std::vector<float>& values() { return m_values; }
    // The grid along photo row y: out[c][x] for each channel c.
    void row(int y, float* const* out) const;

private:
    int m_width = 0;
    int m_cell = 1, m_columns = 1, m_rows = 1, m_channels = 1;
    std::vector<float> m_values;
    std::vector<float> m_rightWeight; // per photo column: weight of the node to its right
    std::vector<int> m_segmentEnd;    // per node column: one past the last photo column left of the next node
};

class CleanPlate
{
public:
    // The plate of `photo` (32-bit ARGB words), its pixels read on up to
    // `threads` threads. Where no pixel is surely backdrop, the plate is the
    // key colour everywhere; where none is surely subject, the subject's
    // difference is 0.
    CleanPlate(const QImage& photo, const SureBackdrop& sure, int threads);

    const PlateGrid& backdrop() const { return m_backdrop; }
    const PlateGrid& subject() const { return m_subject; }

    // The plate along row y, pixel by pixel (arrays of the photo's width):
    // the backdrop's channels and the subject's colour difference.
    void row(int y, float* red, float* dominant, float* other, float* subjectDifference) const;

    // The backdrop's grain: the standard deviation of its colour difference,
    // in levels (0 for a photo without grain or without enough backdrop to
    // tell).
    float grainLevels() const { return m_grainLevels; }

private:
    void measure(const QImage& photo, const SureBackdrop& sure, int threads);

    PlateGrid m_backdrop; // red, dominant, other
    PlateGrid m_subject;  // the colour difference of sure subject pixels
    std::vector<double> m_sums;     // per backdrop cell: red, dominant, other, count
    std::vector<int> m_sampled;     // per backdrop cell: pixels looked at
    std::vector<double> m_subjectSums; // per subject cell: difference, count
    std::vector<int> m_subjectSampled;
    std::vector<float> m_subjectLowest;
    std::vector<float> m_grain;     // per backdrop cell: its grain in levels, below 0 when not measured
    float m_grainLevels = 0;
};

} // namespace keying
