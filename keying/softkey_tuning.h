// SPDX-License-Identifier: MIT
#pragma once

// Knobs of the soft keyer for tests, benchmarks and the quality measurements.
// The batch tool calls softCutOut(photo, key), which uses the defaults below,
// measured on the tuning photos of the quality benchmark; these options pin
// the code path and thread count, or try other values of the knobs.

#include "keying/cleanplate.h"
#include "keying/keymask_tuning.h"
#include "keying/softkey.h"

namespace keying {

struct SoftTuning
{
    // The "other two" channels of the colour difference: a share `maxShare`
    // of the larger of red and the non-key channel, the rest a mix with
    // `redWeight` of red. The maximum keeps yellow and cyan subjects opaque.
    float redWeight = 0.5f;
    float maxShare = 1.0f;
    // The pixel's difference as a share of the clean plate's at its place:
    // at or below `opaqueBelow` the pixel is all subject (alpha 1), at or
    // above `clearAbove` all backdrop (alpha 0), in between linear. The gaps
    // to 0 and 1 absorb the grain of the backdrop and of the subject.
    float opaqueBelow = 0.12f;
    float clearAbove = 0.88f;
    // Below this alpha the recovered colour leans towards the pixel's own
    // (despilled) colour: a colour divided by a small alpha is mostly grain.
    float recoverFrom = 0.25f;
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
    float sureTolerance = 0.12f;
    // Of those, a cell's plate is the mean of the ones whose difference
    // reaches this share of the level its top tenth reaches.
    float plateKeep = 0.9f;
};

struct SoftOptions
{
    VectorPath path = VectorPath::Automatic; // Baseline pins the portable loop
    int threads = 0;                         // as in MaskOutOptions
    SoftTuning tuning;
};

// Same as softCutOut(photo, key), with the options given.
QImage softCutOut(const QImage& photo, QRgb key, const SoftOptions& options);

// The clean plate softCutOut keys `words` (32-bit RGB or ARGB) against.
CleanPlate cleanPlateFor(const QImage& words, QRgb key, const SoftTuning& tuning, int threads);

// Same as softComposite(cutOut, fittedBackground) on `threads` threads (0:
// as the photo's size asks).
QImage softComposite(const QImage& cutOut, const QImage& fittedBackground, int threads);

} // namespace keying
