// SPDX-License-Identifier: MIT
#pragma once

// Seeded randomness for the made ground truth: a photo is a pure function of
// its seed, so the tuning and held-out sets are the same on every machine.

#include <cmath>
#include <cstdint>

namespace groundtruth {

inline std::uint64_t mix64(std::uint64_t z)
{
    z += 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(mix64(seed)) {}

    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15ull;
        return mix64(m_state);
    }
    double uniform() { return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0); }
    double range(double lo, double hi) { return lo + (hi - lo) * uniform(); }
    int below(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n)); }
    // Box-Muller without a cached second value, so the stream depends only on
    // how many draws were made.
    double gaussian()
    {
        const double u1 = 1.0 - uniform();
        const double u2 = uniform();
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(6.283185307179586 * u2);
    }

private:
    std::uint64_t m_state;
};

} // namespace groundtruth
