// SPDX-License-Identifier: MIT
#pragma once

// Knobs of the key mask for tests and benchmarks. The program itself calls
// keying::maskOut(img, bkg, key), which picks the widest vector instructions the
// processor has and spreads large photos over its cores; these options pin
// either choice so that every code path can be checked against the others.

#include "keying/keymask.h"

namespace keying {

enum class VectorPath {
    Automatic, // the widest the processor offers
    Baseline,  // 128-bit vectors (SSE2 on x86-64), present on every machine
    Wide,      // 256-bit AVX2; falls back to Baseline where the processor lacks it
};

struct MaskOutOptions
{
    VectorPath path = VectorPath::Automatic;
    // 0: one thread for small photos, every core for large ones. Any other
    // value uses that many threads (at most one per row), whatever the size.
    int threads = 0;
};

// Same result as maskOut(img, bkg, key), with the code path pinned.
void maskOut(QImage& img, const QImage& bkg, QRgb key, const MaskOutOptions& options);

// True when this processor runs the 256-bit path.
bool wideVectorsAvailable();

// The path and thread count maskOut would use for `img` with these options;
// threads is 0 when the photo takes the per-pixel path (formats other than
// 32-bit RGB/ARGB, or a background smaller than the photo).
struct MaskOutPlan
{
    VectorPath path;
    int threads;
};
MaskOutPlan planMaskOut(const QImage& img, const QImage& bkg, const MaskOutOptions& options = {});

// Photos with at least this many pixels are keyed on every core.
constexpr qsizetype kParallelKeyingPixels = qsizetype(1) << 20;

} // namespace keying
