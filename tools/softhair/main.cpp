// SPDX-License-Identifier: MIT
// Draws a head of fine hair in front of a green (or blue) backdrop, keys it
// with the window's hard key and with the soft keyer, and writes the README's
// picture: the same crop of the hair at 400 % from each, side by side, on a
// coloured background. Every pixel is made here (hair drawn at 8 x 8 samples
// per pixel and averaged, so the true alpha is known); it also prints how far
// each key is from that truth, as a quick check while working on the keyer.
//
//   plendra_softhair OUT.png            the README picture (green backdrop)
//   plendra_softhair --check            alpha SAD / composite MSE, both keys, green and blue
#include "keying/cutout.h"
#include "keying/keymask.h"
#include "keying/softkey.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <cstdio>
#include <cstdint>
#include <random>
#include <vector>

namespace {

constexpr int kWidth = 480;
constexpr int kHeight = 360;
constexpr int kSamples = 8;

struct Truth
{
    std::vector<float> alpha;   // true coverage per pixel
    std::vector<float> colour;  // true foreground colour, 3 per pixel, 0..255
};

// The subject at 8 x 8 samples per pixel, averaged: a head and a few hundred
// strands of blond, brown and auburn hair, some finer than a pixel.
Truth drawHair(unsigned seed)
{
    QImage fine(kWidth * kSamples, kHeight * kSamples, QImage::Format_ARGB32_Premultiplied);
    fine.fill(Qt::transparent);
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    {
        QPainter p(&fine);
        p.scale(kSamples, kSamples);
        p.setRenderHint(QPainter::Antialiasing, false);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(120, 78, 46));
        p.drawEllipse(QPointF(240, 330), 120, 130);
        const QColor tones[] = {QColor(226, 196, 120), QColor(196, 150, 80), QColor(120, 76, 42),
                                QColor(160, 84, 40), QColor(232, 214, 60)};
        for (int i = 0; i < 420; ++i) {
            const double angle = M_PI * (0.1 + 0.8 * u(rng));
            const QPointF root(240 + 110 * std::cos(angle) * 0.95, 330 - 125 * std::sin(angle) * 0.95);
            const double length = 90 + 120 * u(rng);
            const double bend = (u(rng) - 0.5) * 1.6;
            const QPointF dir(std::cos(angle), -std::sin(angle));
            const QPointF side(-dir.y(), dir.x());
            QPainterPath path(root);
            path.cubicTo(root + dir * length * 0.35 + side * bend * 30, root + dir * length * 0.7 - side * bend * 40,
                         root + dir * length + side * bend * 25);
            QColor c = tones[i % 5];
            QPen pen(c, 0.35 + 1.4 * u(rng) * u(rng));
            pen.setCapStyle(Qt::RoundCap);
            p.setPen(pen);
            p.setBrush(Qt::NoBrush);
            p.drawPath(path);
        }
    }
    Truth t;
    t.alpha.assign(std::size_t(kWidth) * kHeight, 0.0f);
    t.colour.assign(std::size_t(kWidth) * kHeight * 3, 0.0f);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            double a = 0, r = 0, g = 0, b = 0;
            for (int sy = 0; sy < kSamples; ++sy) {
                const auto* row = reinterpret_cast<const QRgb*>(fine.constScanLine(y * kSamples + sy));
                for (int sx = 0; sx < kSamples; ++sx) {
                    const QRgb s = row[x * kSamples + sx];
                    a += qAlpha(s);
                    r += qRed(s);
                    g += qGreen(s);
                    b += qBlue(s);
                }
            }
            const std::size_t i = std::size_t(y) * kWidth + x;
            t.alpha[i] = float(a / (255.0 * kSamples * kSamples));
            if (a > 0) {
                t.colour[i * 3] = float(255.0 * r / a);
                t.colour[i * 3 + 1] = float(255.0 * g / a);
                t.colour[i * 3 + 2] = float(255.0 * b / a);
            }
        }
    }
    return t;
}

// The backdrop: a studio green or blue, lit unevenly (brighter at the top
// left, falling off by about a third towards the bottom right).
void backdropAt(bool blue, int x, int y, float* s)
{
    const float fall = 1.0f - 0.32f * float(x + y) / float(kWidth + kHeight);
    const float base[3] = {blue ? 28.0f : 52.0f, blue ? 74.0f : 176.0f, blue ? 200.0f : 74.0f};
    for (int c = 0; c < 3; ++c)
        s[c] = base[c] * fall;
}

QImage viaJpeg(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return QImage::fromData(bytes, "JPEG").convertToFormat(QImage::Format_RGB32);
}

QImage photograph(const Truth& t, bool blue, unsigned seed)
{
    std::mt19937 rng(seed);
    std::normal_distribution<float> grain(0.0f, 2.5f);
    QImage photo(kWidth, kHeight, QImage::Format_RGB32);
    for (int y = 0; y < kHeight; ++y) {
        auto* row = reinterpret_cast<QRgb*>(photo.scanLine(y));
        for (int x = 0; x < kWidth; ++x) {
            const std::size_t i = std::size_t(y) * kWidth + x;
            float s[3];
            backdropAt(blue, x, y, s);
            int v[3];
            for (int c = 0; c < 3; ++c) {
                const float mixed = t.alpha[i] * t.colour[i * 3 + c] + (1 - t.alpha[i]) * s[c] + grain(rng);
                v[c] = std::clamp(int(std::lround(mixed)), 0, 255);
            }
            row[x] = qRgb(v[0], v[1], v[2]);
        }
    }
    return viaJpeg(photo, 90);
}

// A warm background the composites are laid on.
QImage background()
{
    QImage b(kWidth, kHeight, QImage::Format_RGB32);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x)
            b.setPixel(x, y, qRgb(200 - y / 4, 90 + x / 8, 120 + y / 5));
    }
    return b;
}

QImage hardComposite(const QImage& photo, const QImage& back, QRgb key)
{
    QImage keyed = photo;
    keying::maskOut(keyed, back, key);
    return keyed;
}

struct Score
{
    double sad = 0; // sum of |alpha error| / 1000
    double mse = 0; // composite squared error (0..1 levels), x 1000
};

Score score(const Truth& t, const QImage& cut, const QImage& composite, const QImage& back)
{
    Score s;
    double sq = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const std::size_t i = std::size_t(y) * kWidth + x;
            s.sad += std::fabs(qAlpha(cut.pixel(x, y)) / 255.0 - t.alpha[i]);
            const QRgb b = back.pixel(x, y);
            const QRgb c = composite.pixel(x, y);
            const float bc[3] = {float(qRed(b)), float(qGreen(b)), float(qBlue(b))};
            const float cc[3] = {float(qRed(c)), float(qGreen(c)), float(qBlue(c))};
            for (int k = 0; k < 3; ++k) {
                const double truth = t.alpha[i] * t.colour[i * 3 + k] + (1 - t.alpha[i]) * bc[k];
                sq += std::pow((cc[k] - truth) / 255.0, 2);
            }
        }
    }
    s.sad /= 1000.0;
    s.mse = 1000.0 * sq / (3.0 * kWidth * kHeight);
    return s;
}

QImage crop400(const QImage& image, const QRect& r)
{
    return image.copy(r).scaled(r.size() * 4, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const Truth truth = drawHair(7);
    const QImage back = background();
    if (argc == 2 && QByteArray(argv[1]) == "--check") {
        for (const bool blue : {false, true}) {
            const QImage photo = photograph(truth, blue, 11);
            const QRgb key = photo.pixel(6, 6);
            const Score hard = score(truth, keying::cutOut(photo, key), hardComposite(photo, back, key), back);
            const QImage cut = keying::softCutOut(photo, key);
            const Score soft = score(truth, cut, keying::softComposite(cut, back), back);
            std::printf("%-5s hard SAD %6.2f MSE %6.2f   soft SAD %6.2f MSE %6.2f\n", blue ? "blue" : "green",
                        hard.sad, hard.mse, soft.sad, soft.mse);
        }
        return 0;
    }
    if (argc != 2) {
        std::fprintf(stderr, "usage: plendra_softhair OUT.png | --check\n");
        return 2;
    }
    const QImage photo = photograph(truth, false, 11);
    const QRgb key = photo.pixel(6, 6);
    const QRect crop(300, 90, 100, 90);
    const QImage hard = crop400(hardComposite(photo, back, key), crop);
    const QImage soft = crop400(keying::softComposite(keying::softCutOut(photo, key), back), crop);
    QImage out(hard.width() * 2 + 8, hard.height(), QImage::Format_RGB32);
    out.fill(Qt::white);
    QPainter p(&out);
    p.drawImage(0, 0, hard);
    p.drawImage(hard.width() + 8, 0, soft);
    p.end();
    return out.save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}
