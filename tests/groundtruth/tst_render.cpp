// SPDX-License-Identifier: MIT
// The made ground truth: coverage at 8x8 samples gives the areas geometry
// says, layers composite as "over", a strand never darkens itself, motion
// keeps the coverage, the photo is the exact mix, and all of it is a pure
// function of the seed.
#include "tools/groundtruth/shooting.h"
#include "tools/groundtruth/subjects.h"

#include <QtTest>

#include <cmath>

using namespace groundtruth;

namespace {

Region halfPlane(std::function<bool(float, float)> inside, QSize size, float opacity = 1, Rgb colour = {1, 1, 1})
{
    Region r;
    r.box = QRectF(0, 0, size.width(), size.height());
    r.at = [inside, opacity, colour](float x, float y, Paint& p) {
        if (!inside(x, y))
            return false;
        p.opacity = opacity;
        p.colour = colour;
        return true;
    };
    return r;
}

double sum(const std::vector<float>& v)
{
    double s = 0;
    for (float f : v)
        s += f;
    return s;
}

// The area of the unit pixel [px, px+1) x [py, py+1) below the line
// y = m*x + c (y grows downwards), integrated finely along x.
double areaBelowLine(int px, int py, double m, double c)
{
    constexpr int kSteps = 20000;
    double area = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double x = px + (i + 0.5) / kSteps;
        area += std::clamp(py + 1 - (m * x + c), 0.0, 1.0);
    }
    return area / kSteps;
}

} // namespace

class TestRender : public QObject
{
    Q_OBJECT

private slots:
    void axisAlignedEdgeIsExact_data()
    {
        QTest::addColumn<double>("edge");
        QTest::addColumn<double>("coverage");
        QTest::newRow("3/8") << 10.375 << 0.375;
        QTest::newRow("1/8") << 10.125 << 0.125;
        QTest::newRow("7/8") << 10.875 << 0.875;
        QTest::newRow("on the pixel's border") << 10.0 << 0.0;
    }
    void axisAlignedEdgeIsExact()
    {
        QFETCH(double, edge);
        QFETCH(double, coverage);
        const QSize size(20, 6);
        Scene s{size, {halfPlane([edge](float x, float) { return x < edge; }, size)}};
        const TrueMatte m = render(s);
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < 10; ++x)
                QCOMPARE(m.alphaAt(x, y), 1.0f);
            QCOMPARE(m.alphaAt(10, y), static_cast<float>(coverage));
            for (int x = 11; x < size.width(); ++x)
                QCOMPARE(m.alphaAt(x, y), 0.0f);
        }
    }

    // A slanted edge: each pixel's coverage is the area under the line to
    // within the samples' step, and the errors cancel along the edge.
    void slantedEdgeGivesTheArea_data()
    {
        QTest::addColumn<double>("slope");
        QTest::addColumn<double>("offset");
        QTest::newRow("gentle") << 0.23 << 7.31;
        QTest::newRow("steep") << 3.7 << -40.2;
        QTest::newRow("falling") << -0.61 << 30.05;
    }
    void slantedEdgeGivesTheArea()
    {
        QFETCH(double, slope);
        QFETCH(double, offset);
        const QSize size(40, 40);
        Scene s{size, {halfPlane([=](float x, float y) { return y > slope * x + offset; }, size)}};
        const TrueMatte m = render(s);
        double worst = 0, total = 0, exactTotal = 0;
        int edgePixels = 0;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const double exact = areaBelowLine(x, y, slope, offset);
                const double got = m.alphaAt(x, y);
                worst = std::max(worst, std::abs(got - exact));
                total += got;
                exactTotal += exact;
                edgePixels += exact > 0 && exact < 1;
            }
        }
        QVERIFY(edgePixels > 20);
        QVERIFY2(worst <= 1.0 / 8 + 1e-6, qPrintable(QStringLiteral("worst pixel off by %1").arg(worst)));
        QVERIFY2(std::abs(total - exactTotal) / edgePixels < 1.0 / 64,
                 qPrintable(QStringLiteral("mean error %1").arg((total - exactTotal) / edgePixels)));
    }

    void discAreaAndMotionKeepsIt()
    {
        const QSize size(80, 60);
        const double r = 12.3;
        for (const QPointF motion : {QPointF(), QPointF(21.5, -7.0)}) {
            Region disc;
            disc.box = QRectF(40 - r, 30 - r, 2 * r, 2 * r);
            disc.motion = motion;
            disc.at = [r](float x, float y, Paint& p) {
                p = Paint{1, {0.9f, 0.5f, 0.2f}};
                return (x - 40) * (x - 40) + (y - 30) * (y - 30) <= r * r;
            };
            const TrueMatte m = render(Scene{size, {disc}});
            const double area = 3.14159265358979 * r * r;
            QVERIFY2(std::abs(sum(m.alpha) - area) / area < 2e-3,
                     qPrintable(QStringLiteral("area %1 against %2").arg(sum(m.alpha)).arg(area)));
            if (!motion.isNull()) {
                // The trail is as long as the motion: a pixel on its row is
                // partly covered where a still disc would leave it clear.
                QVERIFY(m.alphaAt(40 + 12 + 8, 30) > 0.0f);
                QVERIFY(m.alphaAt(40 + 12 + 8, 30) < 1.0f);
            }
        }
    }

    // Two half-opaque layers: alpha 0.75, and the colour of white over red.
    void layersCompositeOver()
    {
        const QSize size(4, 4);
        Scene s{size,
                {halfPlane([](float, float) { return true; }, size, 0.5f, {1, 0, 0}),
                 halfPlane([](float, float) { return true; }, size, 0.5f, {1, 1, 1})}};
        const TrueMatte m = render(s);
        QCOMPARE(m.alphaAt(2, 2), 0.75f);
        const Rgb f = m.foreground[2 * 4 + 2];
        QVERIFY(std::abs(f.r - 1.0f) < 1e-5f);
        QVERIFY(std::abs(f.g - 2.0f / 3) < 1e-5f);
        QVERIFY(std::abs(f.b - 2.0f / 3) < 1e-5f);
    }

    void strandCrossingItselfIsDrawnOnce()
    {
        Strand loop;
        loop.points = {{2, 10}, {30, 10}, {30, 12}, {2, 12}, {2, 10.2}, {30, 10.2}};
        loop.rootWidth = loop.tipWidth = 3;
        loop.opacity = 0.5f;
        loop.colour = {0.3f, 0.2f, 0.1f};
        const TrueMatte m = render(Scene{QSize(32, 24), {loop}});
        float most = 0;
        for (float a : m.alpha)
            most = std::max(most, a);
        QCOMPARE(most, 0.5f);
    }

    void sameSeedSameSubject()
    {
        for (SubjectKind kind : kAllSubjectKinds) {
            const TrueMatte a = makeSubject(kind, 42, QSize(160, 120));
            const TrueMatte b = makeSubject(kind, 42, QSize(160, 120));
            const TrueMatte c = makeSubject(kind, 43, QSize(160, 120));
            QVERIFY(a.alpha == b.alpha);
            QVERIFY(std::equal(a.foreground.begin(), a.foreground.end(), b.foreground.begin(),
                               [](const Rgb& p, const Rgb& q) { return p.r == q.r && p.g == q.g && p.b == q.b; }));
            QVERIFY(a.alpha != c.alpha);
            // A subject with soft fringes, and backdrop around it.
            int soft = 0, clear = 0;
            for (float v : a.alpha) {
                soft += v > 0 && v < 1;
                clear += v == 0;
            }
            QVERIFY2(soft > 300, qPrintable(subjectKindName(kind)));
            QVERIFY2(clear > 2000, qPrintable(subjectKindName(kind)));
        }
        for (const Condition& c : allConditions())
            QVERIFY(shoot(makeSubject(SubjectKind::Veil, 7, QSize(96, 72)), c, 7)
                    == shoot(makeSubject(SubjectKind::Veil, 7, QSize(96, 72)), c, 7));
    }

    // The clean photo is the exact mix a*F + (1-a)*S, rounded to 8 bits.
    void cleanPhotoIsTheMix()
    {
        const TrueMatte m = makeSubject(SubjectKind::Hair, 9, QSize(120, 90));
        for (Screen screen : {Screen::Green, Screen::Blue}) {
            const QImage photo = shoot(m, Condition{screen, Shooting::Clean}, 9);
            const Rgb s = backdropShade(screen, 9);
            QCOMPARE(photo.size(), QSize(120, 90));
            for (int y = 0; y < m.height; ++y) {
                for (int x = 0; x < m.width; ++x) {
                    const float a = m.alphaAt(x, y);
                    const Rgb f = m.foreground[static_cast<size_t>(y) * m.width + x];
                    auto byte = [](double v) { return std::clamp(static_cast<int>(std::lround(v * 255)), 0, 255); };
                    const QRgb want = qRgb(byte(a * f.r + (1 - a) * s.r), byte(a * f.g + (1 - a) * s.g),
                                           byte(a * f.b + (1 - a) * s.b));
                    QCOMPARE(photo.pixel(x, y), want);
                }
            }
        }
    }

    // Dark and bright backdrops both occur, and stay green or blue.
    void backdropShadesVary()
    {
        float darkest = 1, brightest = 0;
        for (std::uint64_t seed = 0; seed < 40; ++seed) {
            const Rgb g = backdropShade(Screen::Green, seed);
            const Rgb b = backdropShade(Screen::Blue, seed);
            QVERIFY(g.g > g.r + 0.15f && g.g > g.b + 0.15f);
            QVERIFY(b.b > b.r + 0.2f && b.b > b.g + 0.2f);
            darkest = std::min(darkest, g.g);
            brightest = std::max(brightest, g.g);
        }
        QVERIFY(darkest < 0.5f);
        QVERIFY(brightest > 0.75f);
    }
};

QTEST_GUILESS_MAIN(TestRender)
#include "tst_render.moc"
