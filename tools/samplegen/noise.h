// SPDX-License-Identifier: MIT
#pragma once

// Seeded randomness for the sample pictures. Everything here is a pure
// function of its seed and coordinates, so the generator writes the same bytes
// on every run and the result does not depend on the order pixels are drawn.

#include <cmath>
#include <cstdint>

namespace samplegen {

inline std::uint64_t mix64(std::uint64_t z)
{
    z += 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

// A small sequential generator for placing things (trees, windows, wisps).
class Rng
{
public:
    explicit Rng(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        m_state += 0x9E3779B97F4A7C15ull;
        return mix64(m_state);
    }
    double uniform() { return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0); }
    double range(double lo, double hi) { return lo + (hi - lo) * uniform(); }
    // lo inclusive, hi exclusive
    int intRange(int lo, int hi) { return lo + static_cast<int>(next() % static_cast<std::uint64_t>(hi - lo)); }
    bool chance(double p) { return uniform() < p; }

private:
    std::uint64_t m_state;
};

inline double hash01(std::int64_t x, std::int64_t y, std::uint64_t seed)
{
    const std::uint64_t h = mix64(seed ^ mix64(static_cast<std::uint64_t>(x) * 0x632BE59BD9B4E019ull
                                               + static_cast<std::uint64_t>(y) * 0x85157AF5ull));
    return static_cast<double>(h >> 11) * (1.0 / 9007199254740992.0);
}

// Roughly normal (mean 0, deviation 1): the sum of four uniforms, rescaled.
inline double hashGauss(std::int64_t x, std::int64_t y, std::uint64_t seed)
{
    const double s = hash01(x, y, seed) + hash01(x, y, seed + 1) + hash01(x, y, seed + 2)
        + hash01(x, y, seed + 3);
    return (s - 2.0) * 1.7320508;
}

inline double smooth(double t) { return t * t * (3.0 - 2.0 * t); }

inline double smoothstep(double e0, double e1, double x)
{
    double t = (x - e0) / (e1 - e0);
    t = t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
    return smooth(t);
}

// Value noise in [0, 1] on a unit lattice.
inline double valueNoise(double x, double y, std::uint64_t seed)
{
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const auto ix = static_cast<std::int64_t>(fx);
    const auto iy = static_cast<std::int64_t>(fy);
    const double tx = smooth(x - fx);
    const double ty = smooth(y - fy);
    const double a = hash01(ix, iy, seed);
    const double b = hash01(ix + 1, iy, seed);
    const double c = hash01(ix, iy + 1, seed);
    const double d = hash01(ix + 1, iy + 1, seed);
    return (a + (b - a) * tx) * (1.0 - ty) + (c + (d - c) * tx) * ty;
}

inline double valueNoise1(double x, std::uint64_t seed)
{
    const double fx = std::floor(x);
    const auto ix = static_cast<std::int64_t>(fx);
    const double t = smooth(x - fx);
    const double a = hash01(ix, 0, seed);
    const double b = hash01(ix + 1, 0, seed);
    return a + (b - a) * t;
}

// Fractal sums, normalised back into [0, 1].
inline double fbm(double x, double y, std::uint64_t seed, int octaves)
{
    double sum = 0.0, amp = 1.0, norm = 0.0;
    for (int o = 0; o < octaves; ++o) {
        sum += amp * valueNoise(x, y, seed + static_cast<std::uint64_t>(o) * 1013);
        norm += amp;
        amp *= 0.5;
        x *= 2.03;
        y *= 2.03;
    }
    return sum / norm;
}

inline double fbm1(double x, std::uint64_t seed, int octaves)
{
    double sum = 0.0, amp = 1.0, norm = 0.0;
    for (int o = 0; o < octaves; ++o) {
        sum += amp * valueNoise1(x, seed + static_cast<std::uint64_t>(o) * 7919);
        norm += amp;
        amp *= 0.5;
        x *= 2.07;
    }
    return sum / norm;
}

} // namespace samplegen
