// SPDX-License-Identifier: MIT
#include "tools/groundtruth/mattescore.h"

#include <algorithm>
#include <cmath>

namespace groundtruth {

KeyedMatte keyedFromImage(const QImage& image)
{
    KeyedMatte k;
    if (image.isNull())
        return k;
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    k.width = straight.width();
    k.height = straight.height();
    k.alpha.resize(static_cast<size_t>(k.width) * k.height);
    k.colour.resize(k.alpha.size());
    for (int y = 0; y < k.height; ++y) {
        const QRgb* row = reinterpret_cast<const QRgb*>(straight.constScanLine(y));
        for (int x = 0; x < k.width; ++x) {
            const size_t i = static_cast<size_t>(y) * k.width + x;
            k.alpha[i] = qAlpha(row[x]) / 255.0f;
            k.colour[i] = Rgb{qRed(row[x]) / 255.0f, qGreen(row[x]) / 255.0f, qBlue(row[x]) / 255.0f};
        }
    }
    return k;
}

std::vector<Rgb> judgingBackground(int width, int height)
{
    std::vector<Rgb> b(static_cast<size_t>(std::max(0, width)) * std::max(0, height));
    const Rgb topLeft{0.95f, 0.55f, 0.2f}, topRight{0.8f, 0.2f, 0.6f};
    const Rgb bottomLeft{0.7f, 0.12f, 0.2f}, bottomRight{0.95f, 0.85f, 0.35f};
    for (int y = 0; y < height; ++y) {
        const float v = height > 1 ? static_cast<float>(y) / (height - 1) : 0.0f;
        for (int x = 0; x < width; ++x) {
            const float u = width > 1 ? static_cast<float>(x) / (width - 1) : 0.0f;
            Rgb c = mixRgb(mixRgb(topLeft, topRight, u), mixRgb(bottomLeft, bottomRight, u), v);
            // A slow wave, so that the background is not a plain bilinear ramp.
            const float wave = 0.06f * std::sin(9.0f * u + 5.0f * v);
            c = Rgb{std::clamp(c.r + wave, 0.0f, 1.0f), std::clamp(c.g - wave, 0.0f, 1.0f), std::clamp(c.b + wave, 0.0f, 1.0f)};
            b[static_cast<size_t>(y) * width + x] = c;
        }
    }
    return b;
}

std::vector<std::uint8_t> edgeBand(const TrueMatte& truth, int radius)
{
    const int w = truth.width, h = truth.height;
    std::vector<std::uint8_t> band(truth.alpha.size(), 0);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const float a = truth.alphaAt(x, y);
            if (!(a > 0.0f && a < 1.0f))
                continue;
            for (int dy = -radius; dy <= radius; ++dy) {
                const int yy = y + dy;
                if (yy < 0 || yy >= h)
                    continue;
                for (int dx = -radius; dx <= radius; ++dx) {
                    const int xx = x + dx;
                    if (xx >= 0 && xx < w && dx * dx + dy * dy <= radius * radius)
                        band[static_cast<size_t>(yy) * w + xx] = 1;
                }
            }
        }
    }
    return band;
}

MatteJudge::MatteJudge(const TrueMatte& truth)
    : m_truth(truth), m_band(edgeBand(truth)), m_background(judgingBackground(truth.width, truth.height))
{
    m_composite.resize(m_background.size());
    for (size_t i = 0; i < m_composite.size(); ++i)
        m_composite[i] = mixRgb(m_background[i], truth.foreground[i], truth.alpha[i]);
}

std::optional<MatteScores> MatteJudge::score(const KeyedMatte& keyed) const
{
    if (keyed.width != m_truth.width || keyed.height != m_truth.height || keyed.alpha.size() != m_truth.alpha.size()
        || keyed.colour.size() != m_truth.alpha.size())
        return std::nullopt;
    double sad = 0, bandSum = 0, compSum = 0;
    size_t bandCount = 0;
    for (size_t i = 0; i < keyed.alpha.size(); ++i) {
        const double a = std::clamp(keyed.alpha[i], 0.0f, 1.0f);
        const double e = a - m_truth.alpha[i];
        sad += std::abs(e);
        if (m_band[i]) {
            bandSum += e * e;
            ++bandCount;
        }
        const Rgb& f = keyed.colour[i];
        const Rgb& b = m_background[i];
        const Rgb& t = m_composite[i];
        const double r = a * f.r + (1 - a) * b.r - t.r;
        const double g = a * f.g + (1 - a) * b.g - t.g;
        const double bl = a * f.b + (1 - a) * b.b - t.b;
        compSum += r * r + g * g + bl * bl;
    }
    MatteScores s;
    s.sad = sad / 1000.0;
    s.edgeMse = bandCount ? bandSum / static_cast<double>(bandCount) * 1e3 : 0.0;
    s.compositeMse = keyed.alpha.empty() ? 0.0 : compSum / (3.0 * static_cast<double>(keyed.alpha.size())) * 1e3;
    return s;
}

std::optional<QPoint> keyPointFor(const TrueMatte& truth)
{
    constexpr int kClear = 4; // the click's neighbourhood that must be backdrop
    const int w = truth.width, h = truth.height;
    auto clear = [&](int cx, int cy) {
        for (int y = cy - kClear; y <= cy + kClear; ++y)
            for (int x = cx - kClear; x <= cx + kClear; ++x)
                if (x < 0 || y < 0 || x >= w || y >= h || truth.alphaAt(x, y) != 0.0f)
                    return false;
        return true;
    };
    // Step along each corner's diagonal, a few pixels in from the frame.
    for (int d = 8; d < std::min(w, h) / 2; ++d) {
        const QPoint corners[] = {{d, d}, {w - 1 - d, d}, {d, h - 1 - d}, {w - 1 - d, h - 1 - d}};
        for (const QPoint& p : corners)
            if (clear(p.x(), p.y()))
                return p;
    }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (clear(x, y))
                return QPoint(x, y);
    return std::nullopt;
}

std::optional<TrueMatte> loadMatte(const QString& foregroundPath, const QString& alphaPath)
{
    const QImage fg = QImage(foregroundPath).convertToFormat(QImage::Format_RGB32);
    const QImage al = QImage(alphaPath).convertToFormat(QImage::Format_Grayscale8);
    if (fg.isNull() || al.isNull() || fg.size() != al.size())
        return std::nullopt;
    TrueMatte m;
    m.width = fg.width();
    m.height = fg.height();
    m.alpha.resize(static_cast<size_t>(m.width) * m.height);
    m.foreground.resize(m.alpha.size());
    for (int y = 0; y < m.height; ++y) {
        const QRgb* f = reinterpret_cast<const QRgb*>(fg.constScanLine(y));
        const uchar* a = al.constScanLine(y);
        for (int x = 0; x < m.width; ++x) {
            const size_t i = static_cast<size_t>(y) * m.width + x;
            m.alpha[i] = a[x] / 255.0f;
            m.foreground[i] = Rgb{qRed(f[x]) / 255.0f, qGreen(f[x]) / 255.0f, qBlue(f[x]) / 255.0f};
        }
    }
    return m;
}

} // namespace groundtruth
