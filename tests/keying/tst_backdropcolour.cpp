// SPDX-License-Identifier: MIT
// The backdrop colour found in each photo: on the hard cases of a booth (the
// subject on the border, in a corner, filling 80 % of the frame; dark and
// bright, green and blue backdrops with falloff and grain) it keys as a
// well-placed click keys, and a photo with no backdrop is refused.
#include "keying/backdropcolour.h"
#include "keying/pipeline.h"
#include "tests/support/boothscenes.h"

#include <QTest>

using boothscenes::Placement;

Q_DECLARE_METATYPE(Placement)
Q_DECLARE_METATYPE(boothscenes::NoBackdrop)

class TestBackdropColour : public QObject
{
    Q_OBJECT

private slots:
    void keysAsAWellPlacedClick_data()
    {
        QTest::addColumn<Placement>("placement");
        QTest::addColumn<bool>("blue");
        QTest::addColumn<bool>("dark");
        QTest::addColumn<double>("falloff");
        QTest::addColumn<double>("noise");
        quint32 seed = 100;
        for (const Placement p : {Placement::Middle, Placement::Side, Placement::Corner, Placement::Fills80}) {
            for (const bool blue : {false, true}) {
                for (const bool dark : {false, true}) {
                    const QByteArray name = boothscenes::placementName(p).toLatin1() + (blue ? " blue" : " green")
                        + (dark ? " dark" : " bright");
                    QTest::newRow(name + " soft light") << p << blue << dark << 0.1 << 2.0;
                    QTest::newRow(name + " falloff grain") << p << blue << dark << 0.3 << 7.0;
                    ++seed;
                }
            }
        }
    }

    void keysAsAWellPlacedClick()
    {
        QFETCH(Placement, placement);
        QFETCH(bool, blue);
        QFETCH(bool, dark);
        QFETCH(double, falloff);
        QFETCH(double, noise);
        boothscenes::SceneRecipe recipe;
        recipe.placement = placement;
        recipe.blue = blue;
        recipe.dark = dark;
        recipe.falloff = falloff;
        recipe.noise = noise;
        recipe.seed = quint32(qHash(QByteArray(QTest::currentDataTag())));
        const boothscenes::Scene scene = boothscenes::makeScene(recipe);
        const keying::BackdropEstimate found = keying::estimateBackdrop(scene.photo);
        QVERIFY2(found.found, qPrintable(found.whyNot));
        QCOMPARE(qAlpha(found.colour), 255);
        const QRgb click = keying::keyColourAt(scene.photo, scene.click);
        const double alike = boothscenes::alikeShare(scene.photo, found.colour, click);
        QVERIFY2(alike >= 0.99, qPrintable(QStringLiteral("alike %1 (auto #%2, click #%3)")
                                                .arg(alike).arg(found.colour & 0xFFFFFF, 6, 16, QLatin1Char('0'))
                                                .arg(click & 0xFFFFFF, 6, 16, QLatin1Char('0'))));
        // And at least as close to the truth as the click, give or take the
        // subject's soft edge.
        const double autoWrong = boothscenes::truthMismatch(scene.photo, found.colour, scene.truth);
        const double clickWrong = boothscenes::truthMismatch(scene.photo, click, scene.truth);
        QVERIFY2(autoWrong <= clickWrong + 0.002, qPrintable(QStringLiteral("auto %1, click %2").arg(autoWrong).arg(clickWrong)));
        QVERIFY(found.edgeShare >= 0.2);
        QVERIFY(found.frameShare >= 0.05);
    }

    void photoWithoutBackdropIsRefused_data()
    {
        QTest::addColumn<boothscenes::NoBackdrop>("kind");
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 3; ++seed) {
            QTest::addRow("indoor with a green shirt %u", seed) << boothscenes::NoBackdrop::Indoor << seed;
            QTest::addRow("grey wall %u", seed) << boothscenes::NoBackdrop::GreyWall << seed;
            QTest::addRow("foliage %u", seed) << boothscenes::NoBackdrop::Foliage << seed;
        }
    }

    void photoWithoutBackdropIsRefused()
    {
        QFETCH(boothscenes::NoBackdrop, kind);
        QFETCH(quint32, seed);
        const QImage photo = boothscenes::noBackdropPhoto(kind, 480, 320, seed);
        const keying::BackdropEstimate found = keying::estimateBackdrop(photo);
        QVERIFY2(!found.found, qPrintable(QStringLiteral("found #%1").arg(found.colour & 0xFFFFFF, 6, 16, QLatin1Char('0'))));
        QCOMPARE(found.whyNot, QStringLiteral("no green or blue backdrop found"));
    }

    void emptyPhotoIsRefused()
    {
        const keying::BackdropEstimate found = keying::estimateBackdrop(QImage());
        QVERIFY(!found.found);
        QVERIFY(!found.whyNot.isEmpty());
    }

    // A plain backdrop with nothing before it: its own colour, whatever the
    // photo's size or format.
    void plainBackdropGivesItsColour_data()
    {
        QTest::addColumn<QImage::Format>("format");
        QTest::addColumn<QSize>("size");
        QTest::newRow("rgb32 tiny") << QImage::Format_RGB32 << QSize(3, 2);
        QTest::newRow("argb32") << QImage::Format_ARGB32 << QSize(200, 100);
        QTest::newRow("rgb888 tall") << QImage::Format_RGB888 << QSize(40, 900);
        QTest::newRow("indexed") << QImage::Format_Indexed8 << QSize(64, 64);
    }

    void plainBackdropGivesItsColour()
    {
        QFETCH(QImage::Format, format);
        QFETCH(QSize, size);
        QImage plain(size, QImage::Format_RGB32);
        plain.fill(qRgb(40, 190, 70));
        plain = plain.convertToFormat(format);
        const keying::BackdropEstimate found = keying::estimateBackdrop(plain);
        QVERIFY(found.found);
        QCOMPARE(found.colour, qRgb(40, 190, 70));
        QCOMPARE(found.edgeShare, 1.0);
    }

    void familyOfTellsGreenBlueAndNeither()
    {
        QCOMPARE(keying::familyOf(qRgb(40, 190, 70)), keying::BackdropFamily::Green);
        QCOMPARE(keying::familyOf(qRgb(30, 70, 200)), keying::BackdropFamily::Blue);
        QCOMPARE(keying::familyOf(qRgb(128, 128, 128)), keying::BackdropFamily::None);
        QCOMPARE(keying::familyOf(qRgb(120, 130, 110)), keying::BackdropFamily::None); // greenish grey
        QCOMPARE(keying::familyOf(qRgb(200, 60, 40)), keying::BackdropFamily::None);
    }
};

QTEST_APPLESS_MAIN(TestBackdropColour)
#include "tst_backdropcolour.moc"
