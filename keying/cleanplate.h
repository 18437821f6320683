// SPDX-License-Identifier: MIT
#pragma once

// The clean plate: the backdrop's colour across the whole photo, as it would
// be without the subject. Backdrop lighting falls off towards the corners and
// is uneven, so the soft keyer keys each pixel against the backdrop at its
// place rather than against one colour. The plate is a coarse grid: each cell
// holds the mean of the pixels in it that are surely backdrop; cells with too
// few of them (under the subject) are filled from their neighbours by a
// pull-push pyramid, and each pixel reads the grid bilinearly. Internal to
// the keying library.

#include <QImage>

#include <vector>

namespace keying {

// The channels of the backdrop colour, in the order the soft keyer reads
// them: red, the key channel (green or blue), the other of green and blue.
struct PlateColour
{
    float red = 0, dominant = 0, other = 0;
};

// What tells surely-backdrop pixels apart from everything else.
struct SureBackdrop
{
    PlateColour key;               // the key colour
    float cMax, cRed, cOther;      // the "other two" channels, as the matte reads them
    float minDifference;           // the key channel above the other two by at least this
    float redRatio, otherRatio;    // the key colour's red and other channel over its key channel
    float tolerance;               // how far a pixel's ratios may stray from those
    float keepShare;               // of a cell's top differences, the share down to which pixels count
    int dominantShift, otherShift; // bit positions in the 0xAARRGGBB word
};

class CleanPlate
{
public:
    // The plate of `photo` (32-bit ARGB words), its pixels read on up to
    // `threads` threads. Where no pixel of the photo is surely backdrop, the
    // plate is the key colour everywhere.
    CleanPlate(const QImage& photo, const SureBackdrop& sure, int threads);

    int cellSize() const { return m_cell; }
    int columns() const { return m_columns; }
    int rows() const { return m_rows; }
    // A grid node: the backdrop colour at the centre of cell (i, j).
    PlateColour node(int i, int j) const { return m_nodes[std::size_t(j) * m_columns + i]; }

    // The plate along row y of the photo, pixel by pixel (arrays of the
    // photo's width).
    void row(int y, float* red, float* dominant, float* other) const;

private:
    void measure(const QImage& photo, const SureBackdrop& sure, int threads);
    void fill(const PlateColour& fallback);

    int m_width = 0;
    int m_cell = 1;
    int m_columns = 1;
    int m_rows = 1;
    std::vector<PlateColour> m_nodes;
    std::vector<double> m_sums;    // per cell: red, dominant, other, count
    std::vector<int> m_sampled;    // per cell: pixels looked at
    // Per photo column: the node column to its left and the weight of the
    // one to its right.
    std::vector<int> m_leftNode;
    std::vector<float> m_rightWeight;
    std::vector<int> m_segmentEnd; // per node column: one past its last photo column
};

} // namespace keying
