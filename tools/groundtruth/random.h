// SPDX-License-Identifier: MIT
#pragma once

// Seeded randomness for the made ground truth: a photo is a pure function of
// its seed, so the tuning and held-out sets are the same on every machine.

#include "tools/samplegen/noise.h"

#include <cmath>
#include <cstdint>

namespace groundtruth {

using samplegen::mix64;

// The sample pictures' generator, its seed mixed first so that neighbouring
// seeds give unrelated photos, with the draws the ground truth needs.
class Random : public samplegen::Rng
{
public:
    explicit Random(std::uint64_t seed) : Rng(mix64(seed)) {}

    int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
    // Box-Muller without a cached second value, so the stream depends only on
    // how many draws were made.
    double gaussian()
    {
        const double u1 = 1.0 - uniform();
        const double u2 = uniform();
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(6.283185307179586 * u2);
    }
};

} // namespace groundtruth
