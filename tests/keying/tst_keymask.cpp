// SPDX-License-Identifier: MIT
// The key mask against the plain per-pixel oracle: the rule's own cases, every
// pixel format a photo can load in, boundary values, odd widths and padded rows,
// on the baseline and the wide vector path, on one thread and on several.
#include "keying/keymask.h"
#include "keying/keymask_tuning.h"
#include "tests/keying/keyingoracle.h"
#include "tests/keying/keyingtestdata.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QtTest>

#include <thread>
#include <vector>

using keying::MaskOutOptions;
using keying::VectorPath;

Q_DECLARE_METATYPE(QImage::Format)

namespace {

struct Variant
{
    const char* name;
    MaskOutOptions options;
};

// Every way the fast routine can run: each vector path, one and three threads
// (three bands on two cores leaves uneven bands), and the automatic choice.
QList<Variant> variants()
{
    return {
        {"automatic", {VectorPath::Automatic, 0}},
        {"baseline, 1 thread", {VectorPath::Baseline, 1}},
        {"baseline, 3 threads", {VectorPath::Baseline, 3}},
        {"wide, 1 thread", {VectorPath::Wide, 1}},
        {"wide, 3 threads", {VectorPath::Wide, 3}},
    };
}

QRgb rgb(int r, int g, int b) { return qRgb(r, g, b); }

// Keys a one-pixel photo against a one-pixel background.
bool replacedAlone(QRgb key, QRgb pixel, const MaskOutOptions& options)
{
    QImage img(1, 1, QImage::Format_RGB32);
    img.setPixel(0, 0, pixel);
    QImage bkg(1, 1, QImage::Format_RGB32);
    bkg.setPixel(0, 0, qRgb(1, 2, 3));
    keying::maskOut(img, bkg, key, options);
    return img.pixel(0, 0) == qRgb(1, 2, 3);
}

} // namespace

class TestKeyMask : public QObject
{
    Q_OBJECT

private slots:
    void ruleCases_data();
    void ruleCases();
    void pureGreenKeyReplacesBrightGreenPixel();
    void ratioJustBelowLowerLimitKeepsPixel();
    void darkPixelNeedsClearlyDominantGreen();
    void greyRedAndTiedKeysReplaceNothing_data();
    void greyRedAndTiedKeysReplaceNothing();
    void zeroKeyChannelAndPixelChannelOneCountAlike();
    void replacedPixelTakesBackgroundAlpha_data();
    void replacedPixelTakesBackgroundAlpha();
    void keyingTwiceRepeatsTheSameReplacements();
    void emptyImageIsLeftAlone();
    void matchesOracleInEveryFormat_data();
    void matchesOracleInEveryFormat();
    void matchesOracleOnBoundaryValues_data();
    void matchesOracleOnBoundaryValues();
    void matchesOracleOnOddWidthsAndPaddedRows_data();
    void matchesOracleOnOddWidthsAndPaddedRows();
    void matchesOracleOnStudioShot();
    void indexedPhotosAreKeyedAs32Bit();
    void unkeyableKeyLeavesSharedImageShared();
    void automaticPlanSplitsOnlyLargePhotos();
};

void TestKeyMask::ruleCases_data()
{
    QTest::addColumn<QRgb>("key");
    QTest::addColumn<QRgb>("pixel");
    QTest::addColumn<bool>("replaced");
    QTest::newRow("pure green key, bright green") << rgb(0, 255, 0) << rgb(16, 240, 32) << true;
    QTest::newRow("ratio 116/100 falls short") << rgb(80, 160, 80) << rgb(80, 116, 100) << false;
    QTest::newRow("ratio 117/100 passes") << rgb(80, 160, 80) << rgb(80, 117, 100) << true;
    QTest::newRow("ratio 129/100 falls short of upper") << rgb(100, 160, 100) << rgb(100, 129, 129) << false;
    QTest::newRow("dark, green 30 above") << rgb(16, 48, 16) << rgb(10, 40, 10) << true;
    QTest::newRow("dark, green only 10 above") << rgb(16, 48, 16) << rgb(20, 30, 20) << false;
    QTest::newRow("dark sum 100, margins 16") << rgb(20, 60, 20) << rgb(22, 56, 22) << true;
    QTest::newRow("dark sum 101 is bright") << rgb(20, 60, 20) << rgb(30, 45, 26) << true;
    QTest::newRow("dark sum 100, margin 15 to blue") << rgb(20, 60, 20) << rgb(25, 45, 30) << false;
    QTest::newRow("closeness 89 passes") << rgb(100, 200, 100) << rgb(11, 200, 100) << true;
    QTest::newRow("closeness 90 fails") << rgb(100, 200, 100) << rgb(10, 200, 100) << false;
    QTest::newRow("blue key, bright blue") << rgb(20, 40, 230) << rgb(30, 60, 210) << true;
    QTest::newRow("blue key, dark blue 15 above") << rgb(10, 10, 60) << rgb(25, 25, 40) << false;
    QTest::newRow("blue key, dark blue 16 above") << rgb(10, 10, 60) << rgb(24, 24, 40) << true;
    QTest::newRow("blue key, green pixel") << rgb(20, 40, 230) << rgb(20, 200, 150) << false;
    QTest::newRow("grey key") << rgb(128, 128, 128) << rgb(100, 200, 100) << false;
    QTest::newRow("red key") << rgb(192, 48, 32) << rgb(192, 48, 32) << false;
    QTest::newRow("green equals blue key") << rgb(20, 150, 150) << rgb(20, 160, 90) << false;
    QTest::newRow("alpha of the key ignored") << qRgba(0, 255, 0, 0) << qRgba(16, 240, 32, 0) << true;
    // Below a dominant key channel of 147 the dark-pixel rule can still turn a
    // close, dominant pixel down; the fast loops test it only for such keys.
    QTest::newRow("dominant 146: dark, green 15 above red") << rgb(20, 146, 20) << rgb(42, 57, 1) << false;
    QTest::newRow("dominant 146: dark, green 16 above red") << rgb(20, 146, 20) << rgb(41, 57, 1) << true;
    QTest::newRow("dominant 146: dark, blue 15 above green") << rgb(20, 20, 146) << rgb(1, 42, 57) << false;
    QTest::newRow("dominant 146: dark, blue 16 above green") << rgb(20, 20, 146) << rgb(1, 41, 57) << true;
}

void TestKeyMask::ruleCases()
{
    QFETCH(QRgb, key);
    QFETCH(QRgb, pixel);
    QFETCH(bool, replaced);
    QCOMPARE(oracle::keyRule(key, pixel), replaced);
    QCOMPARE(keying::isBackdrop(keying::keyColourOf(key), pixel), replaced);
    for (const Variant& v : variants())
        QVERIFY2(replacedAlone(key, pixel, v.options) == replaced, v.name);
}

void TestKeyMask::pureGreenKeyReplacesBrightGreenPixel()
{
    const QRgb key = qRgb(0, 255, 0);
    QImage img(3, 1, QImage::Format_RGB32);
    img.setPixel(0, 0, qRgb(16, 240, 32));
    img.setPixel(1, 0, qRgb(200, 180, 170)); // skin: stays
    img.setPixel(2, 0, qRgb(16, 240, 32));
    QImage bkg(3, 1, QImage::Format_RGB32);
    bkg.fill(qRgb(9, 8, 7));
    keying::maskOut(img, bkg, key);
    QCOMPARE(img.pixel(0, 0), qRgb(9, 8, 7));
    QCOMPARE(img.pixel(1, 0), qRgb(200, 180, 170));
    QCOMPARE(img.pixel(2, 0), qRgb(9, 8, 7));
}

void TestKeyMask::ratioJustBelowLowerLimitKeepsPixel()
{
    // 116/100 rounds to 1.1599999666 in single precision, under 1.16.
    QVERIFY(double(116.0f / 100.0f) < 1.16);
    for (const Variant& v : variants()) {
        QVERIFY2(!replacedAlone(qRgb(80, 160, 80), qRgb(80, 116, 100), v.options), v.name);
        QVERIFY2(replacedAlone(qRgb(80, 160, 80), qRgb(80, 117, 100), v.options), v.name);
    }
}

void TestKeyMask::darkPixelNeedsClearlyDominantGreen()
{
    for (const Variant& v : variants()) {
        QVERIFY2(replacedAlone(qRgb(16, 48, 16), qRgb(10, 40, 10), v.options), v.name);
        QVERIFY2(!replacedAlone(qRgb(16, 48, 16), qRgb(20, 30, 20), v.options), v.name);
    }
}

void TestKeyMask::greyRedAndTiedKeysReplaceNothing_data()
{
    QTest::addColumn<QRgb>("key");
    keyingdata::addKeyRows(keyingdata::kKeysWithoutBackdrop);
    QTest::newRow("black") << rgb(0, 0, 0);
}

void TestKeyMask::greyRedAndTiedKeysReplaceNothing()
{
    QFETCH(QRgb, key);
    const QImage original = keyingdata::mixedPicture(64, 48, qRgb(40, 180, 60), 5)
                                .convertToFormat(QImage::Format_RGB32);
    QImage bkg(64, 48, QImage::Format_RGB32);
    bkg.fill(qRgb(1, 2, 3));
    for (const Variant& v : variants()) {
        QImage img = original.copy();
        keying::maskOut(img, bkg, key, v.options);
        QVERIFY2(img == original, v.name);
    }
}

void TestKeyMask::zeroKeyChannelAndPixelChannelOneCountAlike()
{
    // Red 90 is 89 levels from a key red of 0 counted as 1: close enough.
    for (const Variant& v : variants()) {
        QVERIFY2(replacedAlone(qRgb(0, 200, 0), qRgb(90, 200, 10), v.options), v.name);
        QVERIFY2(!replacedAlone(qRgb(0, 200, 0), qRgb(91, 200, 10), v.options), v.name);
        // Pixel channels 0 and 1 decide alike for any key.
        for (QRgb key : {qRgb(0, 200, 0), qRgb(1, 200, 1), qRgb(0, 0, 200), qRgb(10, 60, 10)}) {
            for (QRgb p : {qRgb(0, 150, 20), qRgb(20, 150, 0), qRgb(0, 40, 0), qRgb(0, 0, 150), qRgb(0, 20, 40)}) {
                const QRgb withOnes = qRgb(qMax(1, qRed(p)), qMax(1, qGreen(p)), qMax(1, qBlue(p)));
                QCOMPARE(replacedAlone(key, p, v.options), replacedAlone(key, withOnes, v.options));
            }
        }
    }
    // And key channels 0 and 1 decide alike for every pixel of a mixed picture.
    const QImage mixed = keyingdata::mixedPicture(50, 40, qRgb(0, 200, 0), 17);
    for (int y = 0; y < mixed.height(); ++y)
        for (int x = 0; x < mixed.width(); ++x)
            QCOMPARE(oracle::keyRule(qRgb(0, 200, 0), mixed.pixel(x, y)), oracle::keyRule(qRgb(1, 200, 1), mixed.pixel(x, y)));
}

void TestKeyMask::replacedPixelTakesBackgroundAlpha_data()
{
    QTest::addColumn<QImage::Format>("photoFormat");
    QTest::addColumn<QImage::Format>("backgroundFormat");
    QTest::addColumn<QRgb>("expected");
    QTest::newRow("ARGB32 over ARGB32") << QImage::Format_ARGB32 << QImage::Format_ARGB32 << qRgba(9, 8, 7, 0x80);
    QTest::newRow("ARGB32 over RGB32") << QImage::Format_ARGB32 << QImage::Format_RGB32 << qRgba(9, 8, 7, 0xFF);
    QTest::newRow("RGB32 over ARGB32 stays opaque") << QImage::Format_RGB32 << QImage::Format_ARGB32 << qRgba(9, 8, 7, 0xFF);
    QTest::newRow("RGB32 over RGB32") << QImage::Format_RGB32 << QImage::Format_RGB32 << qRgba(9, 8, 7, 0xFF);
}

void TestKeyMask::replacedPixelTakesBackgroundAlpha()
{
    QFETCH(QImage::Format, photoFormat);
    QFETCH(QImage::Format, backgroundFormat);
    QFETCH(QRgb, expected);
    for (const Variant& v : variants()) {
        QImage img(2, 1, QImage::Format_ARGB32);
        img.setPixel(0, 0, qRgba(16, 240, 32, 0)); // transparent backdrop: alpha is not tested
        img.setPixel(1, 0, qRgba(16, 240, 32, 0x33));
        img = img.convertToFormat(photoFormat);
        QImage bkg(2, 1, QImage::Format_ARGB32);
        bkg.fill(qRgba(9, 8, 7, 0x80));
        bkg = bkg.convertToFormat(backgroundFormat, Qt::NoOpaqueDetection);
        // The raw words, so that RGB32's undefined alpha byte shows too.
        const QRgb backgroundWord = reinterpret_cast<const QRgb*>(bkg.constScanLine(0))[0];
        QImage expectedImg = img.copy();
        oracle::maskOut(expectedImg, bkg, qRgb(0, 255, 0));
        keying::maskOut(img, bkg, qRgb(0, 255, 0), v.options);
        QCOMPARE(img.pixel(0, 0), expected);
        QCOMPARE(img.pixel(1, 0), expected);
        QVERIFY2(keyingdata::samePixels(img, expectedImg), v.name);
        Q_UNUSED(backgroundWord);
    }
}

void TestKeyMask::keyingTwiceRepeatsTheSameReplacements()
{
    // The background is itself green: after the first pass the replaced pixels
    // are backdrop again, and a second pass replaces them once more (with the
    // same background pixels, so the composite does not change).
    const QRgb key = qRgb(40, 180, 60);
    QImage img = testsupport::studioShot(80, 60, QColor(40, 180, 60), 3);
    QImage bkg = testsupport::studioShot(80, 60, QColor(50, 170, 70), 4);
    keying::maskOut(img, bkg, key);
    const QImage once = img.copy();
    int backdropAgain = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            backdropAgain += oracle::keyRule(key, img.pixel(x, y)) ? 1 : 0;
    QVERIFY(backdropAgain > 80 * 60 / 2);
    for (const Variant& v : variants()) {
        QImage twice = once.copy();
        keying::maskOut(twice, bkg, key, v.options);
        QImage expected = once.copy();
        oracle::maskOut(expected, bkg, key);
        QVERIFY2(keyingdata::samePixels(twice, expected), v.name);
    }
}

void TestKeyMask::emptyImageIsLeftAlone()
{
    const QImage bkg = testsupport::backgroundPicture(8, 8);
    for (const Variant& v : variants()) {
        QImage none;
        keying::maskOut(none, bkg, qRgb(0, 255, 0), v.options);
        QVERIFY(none.isNull());
        QImage noWidth(0, 5, QImage::Format_RGB32);
        keying::maskOut(noWidth, bkg, qRgb(0, 255, 0), v.options);
        QCOMPARE(noWidth.size(), QSize(0, 0)); // the image class holds no pixels for it
        QImage noBackground(4, 4, QImage::Format_RGB32);
        noBackground.fill(qRgb(200, 100, 50));
        const QImage before = noBackground.copy();
        keying::maskOut(noBackground, bkg, qRgb(200, 100, 50), v.options); // red key: nothing
        QCOMPARE(noBackground, before);
    }
}

void TestKeyMask::matchesOracleInEveryFormat_data()
{
    keyingdata::addFormatPairRows(keyingdata::kPhotoFormats);
}

void TestKeyMask::matchesOracleInEveryFormat()
{
    QFETCH(QImage::Format, photoFormat);
    QFETCH(QImage::Format, backgroundFormat);
    QRandomGenerator rng(quint32(photoFormat) * 131 + quint32(backgroundFormat));
    // Random green, blue, grey and red keys, and the usual backdrops.
    QList<QRgb> keys = {qRgb(40, 180, 60), qRgb(40, 70, 200), qRgb(0, 255, 0), qRgb(16, 48, 16)};
    keys << qRgb(int(rng.bounded(100)), 100 + int(rng.bounded(156)), int(rng.bounded(100)));
    keys << qRgb(int(rng.bounded(100)), int(rng.bounded(100)), 100 + int(rng.bounded(156)));
    const int grey = int(rng.bounded(256));
    keys << qRgb(grey, grey, grey);
    keys << qRgb(100 + int(rng.bounded(156)), int(rng.bounded(100)), int(rng.bounded(100)));

    for (QRgb key : keys) {
        const quint32 seed = rng.generate();
        const QImage photo = keyingdata::mixedPicture(37, 23, key, seed).convertToFormat(photoFormat);
        const QImage bkg = testsupport::randomImage(37, 23, QImage::Format_ARGB32, seed + 1).convertToFormat(backgroundFormat);

        // Palette photos are keyed as 32-bit images, like the program does.
        QImage expected = photo;
        if (expected.format() == QImage::Format_Indexed8)
            expected = expected.convertToFormat(expected.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        else
            expected = expected.copy();
        oracle::maskOut(expected, bkg, key);

        for (const Variant& v : variants()) {
            QImage img = photo.copy();
            keying::maskOut(img, bkg, key, v.options);
            QString where;
            QVERIFY2(keyingdata::samePixels(img, expected, &where),
                     qPrintable(QStringLiteral("key %1, %2: %3").arg(key, 8, 16).arg(QLatin1String(v.name), where)));
        }
    }
}

void TestKeyMask::matchesOracleOnBoundaryValues_data()
{
    QTest::addColumn<QRgb>("key");
    QTest::newRow("pure green") << rgb(0, 255, 0);
    QTest::newRow("studio green") << rgb(40, 180, 60);
    QTest::newRow("green 160 over 80") << rgb(80, 160, 80);
    QTest::newRow("green 129 over 100") << rgb(100, 129, 100);
    QTest::newRow("dark green") << rgb(16, 48, 16);
    QTest::newRow("near-black green") << rgb(1, 3, 2);
    QTest::newRow("pure blue") << rgb(0, 0, 255);
    QTest::newRow("studio blue") << rgb(40, 70, 200);
    QTest::newRow("dark blue") << rgb(10, 10, 60);
    QTest::newRow("green 146, last key with the dark test") << rgb(20, 146, 20);
    QTest::newRow("green 147, first key without it") << rgb(20, 147, 20);
    QTest::newRow("blue 146, last key with the dark test") << rgb(20, 20, 146);
    QTest::newRow("blue 147, first key without it") << rgb(20, 20, 147);
    keyingdata::addKeyRows(keyingdata::kKeysWithoutBackdrop);
}

void TestKeyMask::matchesOracleOnBoundaryValues()
{
    QFETCH(QRgb, key);
    const QList<QRgb> pixels = keyingdata::boundaryPixels(key);
    QImage expected = keyingdata::pictureOf(pixels, 61);
    const QImage photo = expected.copy();
    const QImage bkg = testsupport::randomImage(photo.width(), photo.height(), QImage::Format_ARGB32, 99);
    oracle::maskOut(expected, bkg, key);
    int replaced = 0;
    for (int y = 0; y < photo.height(); ++y)
        for (int x = 0; x < photo.width(); ++x)
            replaced += photo.pixel(x, y) != expected.pixel(x, y) ? 1 : 0;
    const keying::KeyColour k = keying::keyColourOf(key);
    if (k.greenKey || k.blueKey)
        QVERIFY2(replaced > 0 && replaced < photo.width() * photo.height(), "the boundary set decides both ways");
    else
        QCOMPARE(replaced, 0);

    for (QImage::Format photoFormat : {QImage::Format_RGB32, QImage::Format_ARGB32}) {
        for (QImage::Format bkgFormat : {QImage::Format_RGB32, QImage::Format_ARGB32}) {
            const QImage p = photo.convertToFormat(photoFormat);
            const QImage b = bkg.convertToFormat(bkgFormat);
            QImage e = p.copy();
            oracle::maskOut(e, b, key);
            for (const Variant& v : variants()) {
                QImage img = p.copy();
                keying::maskOut(img, b, key, v.options);
                QString where;
                QVERIFY2(keyingdata::samePixels(img, e, &where), qPrintable(QLatin1String(v.name) + QLatin1String(": ") + where));
            }
        }
    }
}

void TestKeyMask::matchesOracleOnOddWidthsAndPaddedRows_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("padding"); // extra bytes at the end of each row
    QTest::addColumn<QRgb>("key");
    QTest::addColumn<int>("format");
    // A bright key and a dark one: the loops leave out the dark-pixel test for
    // the first only, so each form of the loop meets the row ends.
    const struct { const char* name; QRgb key; } keys[] = {{"bright", qRgb(40, 180, 60)}, {"dark", qRgb(16, 48, 16)}};
    const struct { const char* name; QImage::Format format; } formats[] = {{"RGB32", QImage::Format_RGB32},
                                                                          {"ARGB32", QImage::Format_ARGB32}};
    for (int width : {1, 3, 7, 12, 33}) {
        for (int padding : {0, 4, 12, 36}) {
            for (const auto& k : keys) {
                for (const auto& f : formats)
                    QTest::addRow("%d wide, %d bytes of padding, %s key, %s", width, padding, k.name, f.name)
                        << width << padding << k.key << int(f.format);
            }
        }
    }
}

void TestKeyMask::matchesOracleOnOddWidthsAndPaddedRows()
{
    QFETCH(int, width);
    QFETCH(int, padding);
    QFETCH(QRgb, key);
    QFETCH(int, format);
    const int height = 9;
    const qsizetype stride = qsizetype(width) * 4 + padding;
    const QImage bkgSource = testsupport::randomImage(width, height, QImage::Format_ARGB32, 1234);
    const QImage source = keyingdata::mixedPicture(width, height, key, quint32(width * 7 + padding));
    for (const Variant& v : variants()) {
        // Images over buffers of our own, with marked padding that must survive.
        std::vector<uchar> photoBytes(size_t(stride * height), 0xA5);
        std::vector<uchar> bkgBytes(size_t(stride * height), 0x5A);
        QImage img(photoBytes.data(), width, height, stride, QImage::Format(format));
        QImage bkg(bkgBytes.data(), width, height, stride, QImage::Format(format));
        for (int y = 0; y < height; ++y) {
            std::memcpy(img.scanLine(y), source.constScanLine(y), size_t(width) * 4);
            std::memcpy(bkg.scanLine(y), bkgSource.constScanLine(y), size_t(width) * 4);
        }
        QImage expected = img.copy();
        oracle::maskOut(expected, bkg, key);
        keying::maskOut(img, bkg, key, v.options);
        QCOMPARE(img.constBits(), photoBytes.data()); // keyed in place
        QString where;
        QVERIFY2(keyingdata::samePixels(img, expected, &where), qPrintable(QLatin1String(v.name) + QLatin1String(": ") + where));
        for (int y = 0; y < height; ++y) {
            for (int i = 0; i < padding; ++i) {
                QCOMPARE(photoBytes[size_t(y * stride + width * 4 + i)], uchar(0xA5));
                QCOMPARE(bkgBytes[size_t(y * stride + width * 4 + i)], uchar(0x5A));
            }
        }
    }
}

void TestKeyMask::matchesOracleOnStudioShot()
{
    const QImage photo = testsupport::studioShot(640, 480, QColor(40, 180, 60), 21);
    const QImage bkg = testsupport::backgroundPicture(640, 480, 22);
    const QRgb key = photo.pixel(10, 10);
    QImage expected = photo.copy();
    oracle::maskOut(expected, bkg, key);
    QVERIFY(expected != photo);
    for (const Variant& v : variants()) {
        QImage img = photo.copy();
        keying::maskOut(img, bkg, key, v.options);
        QVERIFY2(keyingdata::samePixels(img, expected), v.name);
    }
}

void TestKeyMask::indexedPhotosAreKeyedAs32Bit()
{
    QImage indexed(4, 1, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(16, 240, 32), qRgb(200, 180, 170)});
    indexed.setPixel(0, 0, 0);
    indexed.setPixel(1, 0, 1);
    indexed.setPixel(2, 0, 0);
    indexed.setPixel(3, 0, 1);
    QImage bkg(4, 1, QImage::Format_RGB32);
    bkg.fill(qRgb(9, 8, 7));
    keying::maskOut(indexed, bkg, qRgb(0, 255, 0));
    QCOMPARE(indexed.format(), QImage::Format_RGB32);
    QCOMPARE(indexed.pixel(0, 0), qRgb(9, 8, 7));
    QCOMPARE(indexed.pixel(1, 0), qRgb(200, 180, 170));

    QImage mono(9, 2, QImage::Format_Mono);
    mono.setColorTable({qRgb(16, 240, 32), qRgb(255, 255, 255)});
    mono.fill(0);
    mono.setPixel(4, 1, 1);
    keying::maskOut(mono, testsupport::backgroundPicture(9, 2), qRgb(0, 255, 0));
    QCOMPARE(mono.format(), QImage::Format_RGB32);
    QCOMPARE(mono.pixel(0, 0), testsupport::backgroundPicture(9, 2).pixel(0, 0));
    QCOMPARE(mono.pixel(4, 1), qRgb(255, 255, 255));
}

void TestKeyMask::unkeyableKeyLeavesSharedImageShared()
{
    const QImage photo = testsupport::studioShot(64, 64, QColor(40, 180, 60), 8);
    QImage img = photo;
    keying::maskOut(img, testsupport::backgroundPicture(64, 64), qRgb(128, 128, 128));
    QCOMPARE(img.constBits(), photo.constBits());
}

void TestKeyMask::automaticPlanSplitsOnlyLargePhotos()
{
    const QImage small(640, 480, QImage::Format_RGB32);
    QCOMPARE(keying::planMaskOut(small, small).threads, 1);
    const QImage large(1024, 1024, QImage::Format_RGB32);
    const int cores = qMax(1, int(std::thread::hardware_concurrency()));
    QCOMPARE(keying::planMaskOut(large, large).threads, cores);
    QCOMPARE(keying::planMaskOut(large, large, {VectorPath::Automatic, 1}).threads, 1);
    QCOMPARE(keying::planMaskOut(small, small, {VectorPath::Automatic, 3}).threads, 3);
    // One thread per row at most.
    const QImage thin(50, 2, QImage::Format_RGB32);
    QCOMPARE(keying::planMaskOut(thin, thin, {VectorPath::Automatic, 8}).threads, 2);
    // Other formats, and a background that does not cover the photo, go pixel by pixel.
    const QImage grey(64, 64, QImage::Format_Grayscale8);
    QCOMPARE(keying::planMaskOut(grey, small).threads, 0);
    QCOMPARE(keying::planMaskOut(large, small).threads, 0);
    // The wide path is used exactly where the processor has it.
    QCOMPARE(keying::planMaskOut(small, small).path,
             keying::wideVectorsAvailable() ? VectorPath::Wide : VectorPath::Baseline);
    QCOMPARE(keying::planMaskOut(small, small, {VectorPath::Baseline, 0}).path, VectorPath::Baseline);
}

PLENDRA_TEST_MAIN(TestKeyMask)
#include "tst_keymask.moc"
