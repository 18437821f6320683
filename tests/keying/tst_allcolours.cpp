// SPDX-License-Identifier: MIT
// Every one of the 16,777,216 colours, as one 4096 x 4096 photo, keyed with
// fourteen keys on each vector path and thread count: the result must equal the
// per-pixel decision byte for byte. The per-pixel decision itself is checked
// against the plainly written rule for every colour and key.
#include "keying/keymask.h"
#include "keying/keymask_tuning.h"
#include "tests/keying/keyingoracle.h"
#include "tests/keying/keyingtestdata.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QtTest>

#include <cstring>

using keying::MaskOutOptions;
using keying::VectorPath;

namespace {

constexpr int kSide = 4096; // 4096 x 4096 = every 24-bit colour once

// A kSide x kSide image of 32-bit pixels whose pixel number c (in row order)
// is pixel(c).
template <typename Pixel>
QImage byPixelNumber(QImage::Format format, Pixel pixel)
{
    QImage img(kSide, kSide, format);
    for (int y = 0; y < kSide; ++y) {
        auto* row = reinterpret_cast<quint32*>(img.scanLine(y));
        for (int x = 0; x < kSide; ++x)
            row[x] = pixel(quint32(y) * kSide + quint32(x));
    }
    return img;
}

// Colour i at pixel i; the ARGB32 variant carries a varying alpha as well.
QImage everyColour(QImage::Format format)
{
    return byPixelNumber(format, [format](quint32 c) {
        return format == QImage::Format_ARGB32 ? (((c * 7u) & 0xFFu) << 24) | c : 0xFF000000u | c;
    });
}

// A background unlike the photo, alpha included, so that a wrong source pixel
// or a wrong alpha shows.
QImage scrambledBackground(QImage::Format format)
{
    return byPixelNumber(format, [](quint32 c) { return c * 2654435761u; });
}

} // namespace

class TestAllColours : public QObject
{
    Q_OBJECT

private slots:
    void everyColourMatchesPerPixelDecision_data();
    void everyColourMatchesPerPixelDecision();
};

void TestAllColours::everyColourMatchesPerPixelDecision_data()
{
    QTest::addColumn<QRgb>("key");
    QTest::newRow("pure green") << qRgb(0, 255, 0);
    QTest::newRow("studio green") << qRgb(40, 180, 60);
    QTest::newRow("pale green") << qRgb(150, 210, 140);
    QTest::newRow("pure blue") << qRgb(0, 0, 255);
    QTest::newRow("studio blue") << qRgb(40, 70, 200);
    QTest::newRow("black") << qRgb(0, 0, 0);
    QTest::newRow("near-black green") << qRgb(2, 6, 3);
    QTest::newRow("dark blue") << qRgb(10, 10, 60);
    QTest::newRow("green 146, last key with the dark test") << qRgb(30, 146, 20);
    QTest::newRow("blue 147, first key without it") << qRgb(25, 40, 147);
    keyingdata::addKeyRows(keyingdata::kKeysWithoutBackdrop);
}

void TestAllColours::everyColourMatchesPerPixelDecision()
{
    QFETCH(QRgb, key);
    // Alternate the combinations of an opaque and an alpha photo and background.
    static int round = 0;
    const bool alphaPhoto = (round++ % 2) == 1;
    const QImage::Format photoFormat = alphaPhoto ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const QImage::Format bkgFormat = alphaPhoto ? QImage::Format_RGB32 : QImage::Format_ARGB32;
    static QImage photos[2];
    static QImage backgrounds[2];
    if (photos[alphaPhoto].isNull()) {
        photos[alphaPhoto] = everyColour(photoFormat);
        backgrounds[alphaPhoto] = scrambledBackground(bkgFormat);
    }
    const QImage& photo = photos[alphaPhoto];
    const QImage& bkg = backgrounds[alphaPhoto];

    // The expected composite from the per-pixel decision, which must agree with
    // the plainly written rule on every colour.
    const keying::KeyColour k = keying::keyColourOf(key);
    QImage expected = photo.copy();
    qint64 replaced = 0;
    qint64 disagreements = 0;
    for (int y = 0; y < kSide; ++y) {
        auto* row = reinterpret_cast<quint32*>(expected.scanLine(y));
        const auto* bkgRow = reinterpret_cast<const quint32*>(bkg.constScanLine(y));
        for (int x = 0; x < kSide; ++x) {
            const bool backdrop = keying::isBackdrop(k, row[x]);
            disagreements += backdrop != oracle::keyRule(key, row[x]) ? 1 : 0;
            if (backdrop) {
                row[x] = bkgRow[x] | 0xFF000000u; // one of the two has no alpha channel
                ++replaced;
            }
        }
    }
    QCOMPARE(disagreements, qint64(0));
    qInfo("key %06x replaces %lld colours", key & 0xFFFFFFu, replaced);

    const MaskOutOptions runs[] = {{VectorPath::Baseline, 1}, {VectorPath::Baseline, 2},
                                   {VectorPath::Wide, 1}, {VectorPath::Wide, 2}};
    for (const MaskOutOptions& options : runs) {
        QImage img = photo.copy();
        keying::maskOut(img, bkg, key, options);
        const bool same = std::memcmp(img.constBits(), expected.constBits(), size_t(img.sizeInBytes())) == 0;
        QVERIFY2(same, qPrintable(QStringLiteral("%1 path, %2 threads")
                                      .arg(options.path == VectorPath::Wide ? QStringLiteral("wide") : QStringLiteral("baseline"))
                                      .arg(options.threads)));
    }
}

PLENDRA_TEST_MAIN(TestAllColours)
#include "tst_allcolours.moc"
