// SPDX-License-Identifier: MIT
#pragma once

// Knobs of the soft keyer for tests, benchmarks and the quality measurements.
// The batch tool calls softCutOut(photo, key), which uses the defaults below,
// measured on the tuning photos of the quality benchmark (bench/soft_tuning.cpp
// sweeps them there; the held-out photos never took part); these options pin
// the code path and thread count, or try other values of the knobs.

#include "keying/cleanplate.h"
#include "keying/keymask_tuning.h"
#include "keying/softkey.h"

namespace keying {

struct SoftTuning
{
    // The "other two" channels of the colour difference: a share `maxShare`
    // of the larger of red and the non-key channel, the rest a mix with
    // `redWeight` of red. The maximum keeps yellow and cyan subjects far from
    // the backdrop (with the mix alone, yellow on green would lie four
    // fifths of the way to the backdrop); the mix is linear, so a mix of
    // subject and backdrop lies in proportion between the two. Half of each
    // keeps yellow whole at a small cost on the tuning photos.
    float redWeight = 0.5f;
    float maxShare = 0.5f;
    // The pixel's difference as a share of the way from the subject's to
    // the clean plate's: at or below `opaqueBelow` the pixel is all subject
    // (alpha 1), at or above `clearAbove` all backdrop (alpha 0), in between
    // linear. The gaps widen with the grain measured on the backdrop (the
    // standard deviation of its difference, in levels), by `opaqueGrain` and
    // `clearGrain` times it, and clear backdrop always keeps `clearLevels`
    // (8-bit rounding of three channels moves the difference by one level at
    // most), so that grain on clean backdrop and on the subject does not show
    // as a speckled matte. A wider floor clears the faint ends of hair, more
    // so where backdrop light already thins them. On the tuning photos 1.5
    // levels against 3 gives less alpha and composite error on clean and
    // spilled backdrops, less composite error on uneven ones for a little
    // more alpha error there, and the clean blue composite within
    // 0.001 of what it was.
    float opaqueBelow = 0.02f;
    float clearAbove = 0.99f;
    float opaqueGrain = 4.0f;
    float clearGrain = 3.0f;
    float clearLevels = 1.5f;
    // Below this alpha the recovered colour leans towards the pixel's own
    // (despilled) colour: a colour divided by a small alpha is mostly grain.
    // Above about a twelfth the recovered colour is the better guess: from
    // 0.15 down to 0.08 the composite error fell on every tuning condition,
    // lower still gained little more.
    float recoverFrom = 0.08f;
    // A plate whose own difference is below this (in channel levels) is not
    // a backdrop colour; pixels there are kept whole.
    float minPlateDifference = 24.0f;
    // The spill limit on the key channel: a share `spillMax` of the larger
    // of the other two, the rest their weighted mix as above.
    float spillMax = 1.0f;
    // Sure backdrop for the clean plate: a difference of at least this share
    // of the key colour's, and channel ratios to the key channel within
    // `sureTolerance` of the key colour's.
    float sureDifference = 0.45f;
    float sureTolerance = 0.06f;
    // Of those, a cell's plate is the mean of the ones whose difference
    // reaches this share of the level its top tenth reaches.
    float plateKeep = 0.9f;
    // A plate cell whose difference is below this share of a trusted
    // neighbour's holds subject, and is filled from around it instead.
    float plateOutlier = 0.98f;
    // Surely subject: the key channel above the larger of the other two by
    // at most this share of the key colour's margin. Their colour difference,
    // on a finer grid, is where the matte's scale starts (a share
    // `subjectShare` of it; 0 measures from a difference of 0 everywhere).
    float subjectBelow = 0.02f;
    float subjectShare = 1.0f;
    // Mixed pixels at the subject's edge can pass for subject: a subject
    // cell counts this share of the way from its mean difference to its
    // lowest, and each takes the lowest within `subjectReach` cells.
    float subjectLowest = 1.0f;
    float subjectReach = 0.0f;
};

struct SoftOptions
{
    VectorPath path = VectorPath::Automatic; // Baseline pins the portable loop
    int threads = 0;                         // as in MaskOutOptions
    SoftTuning tuning;
};

// Same as softCutOut(photo, key), with the options given.
QImage softCutOut(const QImage& photo, QRgb key, const SoftOptions& options);
QImage softCutOut(QImage&& photo, QRgb key, const SoftOptions& options);

// The clean plate softCutOut keys `words` (32-bit RGB or ARGB) against.
CleanPlate cleanPlateFor(const QImage& words, QRgb key, const SoftTuning& tuning, int threads);

// Same as softComposite(cutOut, fittedBackground) on `threads` threads (0:
// as the photo's size asks).
QImage softComposite(const QImage& cutOut, const QImage& fittedBackground, int threads);
QImage softComposite(QImage&& cutOut, const QImage& fittedBackground, int threads);
QImage softCompositeOf(QImage photo, QRgb key, const QImage& fittedBackground, const SoftOptions& options);

} // namespace keying
