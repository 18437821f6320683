// SPDX-License-Identifier: MIT
// The quality scores' arithmetic: a perfect keyer scores 0 on every count,
// known errors give the known SAD, edge-band MSE and composite MSE, the click
// lands on true backdrop, and a keyer's PNG is read as straight colour.
#include "tools/groundtruth/mattescore.h"
#include "tools/groundtruth/subjects.h"

#include <QtTest>

#include <cmath>

using namespace groundtruth;

namespace {

TrueMatte flat(int w, int h, float alpha, Rgb colour)
{
    TrueMatte m;
    m.width = w;
    m.height = h;
    m.alpha.assign(static_cast<size_t>(w) * h, alpha);
    m.foreground.assign(m.alpha.size(), colour);
    return m;
}

KeyedMatte keyedAs(const TrueMatte& t)
{
    return KeyedMatte{t.width, t.height, t.alpha, t.foreground};
}

} // namespace

class TestScores : public QObject
{
    Q_OBJECT

private slots:
    void perfectKeyerScoresZero()
    {
        const TrueMatte truth = makeSubject(SubjectKind::Glass, 3, QSize(160, 120));
        const MatteJudge judge(truth);
        const auto s = judge.score(keyedAs(truth));
        QVERIFY(s.has_value());
        QCOMPARE(s->sad, 0.0);
        QCOMPARE(s->edgeMse, 0.0);
        QCOMPARE(s->compositeMse, 0.0);
    }

    // An opaque subject keyed away entirely: SAD is the pixel count over 1000,
    // there is no edge band, and the composite shows the background instead.
    void wholeSubjectLost()
    {
        const Rgb colour{0.8f, 0.4f, 0.2f};
        const TrueMatte truth = flat(100, 50, 1.0f, colour);
        KeyedMatte keyed = keyedAs(truth);
        std::fill(keyed.alpha.begin(), keyed.alpha.end(), 0.0f);
        const auto s = MatteJudge(truth).score(keyed);
        QVERIFY(s.has_value());
        QCOMPARE(s->sad, 5.0);
        QCOMPARE(s->edgeMse, 0.0);
        const std::vector<Rgb> b = judgingBackground(100, 50);
        double sum = 0;
        for (const Rgb& c : b)
            sum += (c.r - colour.r) * (c.r - colour.r) + (c.g - colour.g) * (c.g - colour.g)
                + (c.b - colour.b) * (c.b - colour.b);
        // The scorer keeps colours as floats: equal to six figures.
        QVERIFY(std::abs(s->compositeMse - sum / (3.0 * 5000) * 1e3) < 1e-6 * s->compositeMse);
        QVERIFY(s->compositeMse > 10);
    }

    // One soft pixel: the band is the disc of radius 3 around it (29 pixels),
    // and an error of 0.25 there gives 0.25^2 / 29 x 1e3.
    void edgeBandAroundOneSoftPixel()
    {
        TrueMatte truth = flat(30, 30, 0.0f, {0.5f, 0.5f, 0.5f});
        truth.alpha[10 * 30 + 10] = 0.5f;
        const auto band = edgeBand(truth);
        int count = 0;
        for (auto b : band)
            count += b;
        QCOMPARE(count, 29);
        QCOMPARE(band[10 * 30 + 13], std::uint8_t(1));
        QCOMPARE(band[13 * 30 + 12], std::uint8_t(0));
        KeyedMatte keyed = keyedAs(truth);
        keyed.alpha[10 * 30 + 10] = 0.25f;
        // And an error outside the band counts for SAD only.
        keyed.alpha[25 * 30 + 25] = 0.1f;
        const auto s = MatteJudge(truth).score(keyed);
        QVERIFY(s.has_value());
        QVERIFY(std::abs(s->sad - 0.35 / 1000) < 1e-9);
        QVERIFY(std::abs(s->edgeMse - 0.0625 / 29 * 1e3) < 1e-6);
    }

    // The composite error of a wrong colour under half alpha: (a*dF)^2.
    void colourErrorWeighedByAlpha()
    {
        const TrueMatte truth = flat(8, 8, 0.5f, {0.2f, 0.4f, 0.6f});
        KeyedMatte keyed = keyedAs(truth);
        for (Rgb& c : keyed.colour)
            c.r += 0.2f;
        const auto s = MatteJudge(truth).score(keyed);
        QVERIFY(s.has_value());
        QCOMPARE(s->sad, 0.0);
        QVERIFY(std::abs(s->compositeMse - (0.1 * 0.1) / 3 * 1e3) < 1e-4);
    }

    void otherSizeIsNotScored()
    {
        const TrueMatte truth = flat(8, 8, 1.0f, {});
        const TrueMatte other = flat(8, 9, 1.0f, {});
        QVERIFY(!MatteJudge(truth).score(keyedAs(other)).has_value());
        QVERIFY(!MatteJudge(truth).score(KeyedMatte{}).has_value());
    }

    void keyedImageIsStraightColour()
    {
        QImage img(3, 2, QImage::Format_ARGB32);
        img.fill(qRgba(200, 100, 50, 128));
        const KeyedMatte k = keyedFromImage(img);
        QCOMPARE(k.width, 3);
        QCOMPARE(k.alpha[4], 128 / 255.0f);
        QCOMPARE(k.colour[4].r, 200 / 255.0f);
        QCOMPARE(k.colour[4].b, 50 / 255.0f);
        QVERIFY(keyedFromImage(QImage()).alpha.empty());
    }

    // The click: true backdrop all round, nearest a corner, top left first.
    void clickLandsOnBackdrop()
    {
        TrueMatte truth = flat(64, 48, 0.0f, {});
        QCOMPARE(keyPointFor(truth), std::optional<QPoint>(QPoint(8, 8)));
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 20; ++x)
                truth.alpha[static_cast<size_t>(y) * 64 + x] = 1.0f;
        QCOMPARE(keyPointFor(truth), std::optional<QPoint>(QPoint(64 - 1 - 8, 8)));
        std::fill(truth.alpha.begin(), truth.alpha.end(), 0.3f);
        QVERIFY(!keyPointFor(truth).has_value());
        for (SubjectKind kind : kAllSubjectKinds) {
            const TrueMatte m = makeSubject(kind, 11, QSize(160, 120));
            const auto p = keyPointFor(m);
            QVERIFY(p.has_value());
            QCOMPARE(m.alphaAt(p->x(), p->y()), 0.0f);
        }
    }

    void unreadableMatteIsEmpty()
    {
        QVERIFY(!loadMatte(QStringLiteral("/nonexistent/a.png"), QStringLiteral("/nonexistent/b.png")).has_value());
    }
};

QTEST_GUILESS_MAIN(TestScores)
#include "tst_scores.moc"
