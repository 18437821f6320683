// SPDX-License-Identifier: MIT
// A booth's finishing of a composite: the print size (cover and crop, for
// landscape, portrait and square photos into landscape and portrait sizes),
// the overlay (transparent, half and opaque pixels), and the composite made
// from a photo keyed once, byte for byte the composite of keying it onto that
// background.
#include "keying/backdropmask.h"
#include "keying/cutout.h"
#include "keying/finishing.h"
#include "keying/pipeline.h"
#include "tests/keying/keyingoracle.h"
#include "tests/support/testsupport.h"

#include <QTest>

#include <cmath>

namespace {

// Red tells the column, green the row, each across the whole photo: where an
// output pixel came from can be read back from its colour.
QImage coordinatePicture(const QSize& size)
{
    QImage img(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(img.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            row[x] = qRgb(x * 255 / (size.width() - 1), y * 255 / (size.height() - 1), 128);
    }
    return img;
}

QImage withFormat(const QImage& img, QImage::Format f)
{
    return img.format() == f ? img : img.convertToFormat(f);
}

} // namespace

class TestFinishing : public QObject
{
    Q_OBJECT

private slots:
    void coverCropRectKeepsTheMiddle_data()
    {
        QTest::addColumn<QSize>("from");
        QTest::addColumn<QSize>("to");
        QTest::addColumn<QRect>("rect");
        QTest::newRow("3:2 into 6x4") << QSize(3000, 2000) << QSize(1800, 1200) << QRect(0, 0, 3000, 2000);
        QTest::newRow("portrait into landscape") << QSize(2000, 3000) << QSize(1800, 1200) << QRect(0, 833, 2000, 1333);
        QTest::newRow("square into landscape") << QSize(2000, 2000) << QSize(1800, 1200) << QRect(0, 333, 2000, 1333);
        QTest::newRow("landscape into portrait") << QSize(3000, 2000) << QSize(1200, 1800) << QRect(833, 0, 1333, 2000);
        QTest::newRow("square into portrait") << QSize(2000, 2000) << QSize(1200, 1800) << QRect(333, 0, 1333, 2000);
        QTest::newRow("16:9 into 6x4") << QSize(1920, 1080) << QSize(1800, 1200) << QRect(150, 0, 1620, 1080);
        QTest::newRow("small photo, large print") << QSize(300, 200) << QSize(1800, 1200) << QRect(0, 0, 300, 200);
    }

    void coverCropRectKeepsTheMiddle()
    {
        QFETCH(QSize, from);
        QFETCH(QSize, to);
        QFETCH(QRect, rect);
        QCOMPARE(keying::coverCropRect(from, to), rect);
    }

    void coverAndCropFillsTheSizeFromTheMiddle_data()
    {
        QTest::addColumn<QSize>("from");
        QTest::addColumn<QSize>("to");
        for (const QSize from : {QSize(300, 200), QSize(200, 300), QSize(250, 250)}) {
            for (const QSize to : {QSize(180, 120), QSize(120, 180), QSize(450, 300)}) {
                QTest::addRow("%dx%d into %dx%d", from.width(), from.height(), to.width(), to.height()) << from << to;
            }
        }
    }

    void coverAndCropFillsTheSizeFromTheMiddle()
    {
        QFETCH(QSize, from);
        QFETCH(QSize, to);
        const QImage source = coordinatePicture(from);
        const QImage out = keying::coverAndCrop(source, to);
        QCOMPARE(out.size(), to);
        const QRect part = keying::coverCropRect(from, to);
        // Each output pixel shows the source where the covered part maps it:
        // no bars, no stretch, centred. Smoothing blurs a level or two.
        for (const QPoint at : {QPoint(2, 2), QPoint(to.width() - 3, 2), QPoint(to.width() / 2, to.height() / 2),
                                QPoint(2, to.height() - 3), QPoint(to.width() - 3, to.height() - 3)}) {
            const double sx = part.x() + (at.x() + 0.5) * part.width() / to.width() - 0.5;
            const double sy = part.y() + (at.y() + 0.5) * part.height() / to.height() - 0.5;
            const QRgb got = out.pixel(at);
            const double wantRed = sx * 255 / (from.width() - 1), wantGreen = sy * 255 / (from.height() - 1);
            QVERIFY2(std::fabs(qRed(got) - wantRed) <= 4 && std::fabs(qGreen(got) - wantGreen) <= 4,
                     qPrintable(QStringLiteral("at %1,%2: %3,%4 wanted %5,%6").arg(at.x()).arg(at.y()).arg(qRed(got))
                                    .arg(qGreen(got)).arg(wantRed).arg(wantGreen)));
        }
    }

    void coverAndCropOfTheSameSizeChangesNothing()
    {
        const QImage source = coordinatePicture(QSize(64, 48));
        QVERIFY(testsupport::samePixels(keying::coverAndCrop(source, QSize(64, 48)), source));
        QVERIFY(keying::coverAndCrop(QImage(), QSize(10, 10)).isNull());
        QVERIFY(keying::coverAndCrop(source, QSize(0, 10)).isNull());
    }

    // Transparent overlay pixels leave the composite exactly, opaque ones are
    // written exactly, half ones blend; the overlay is stretched to the
    // composite as a background is.
    void overlayTransparentHalfAndOpaque_data()
    {
        QTest::addColumn<QImage::Format>("format");
        QTest::newRow("rgb32 composite") << QImage::Format_RGB32;
        QTest::newRow("premultiplied composite") << QImage::Format_ARGB32_Premultiplied;
        QTest::newRow("straight cut-out") << QImage::Format_ARGB32;
        QTest::newRow("rgb888 composite") << QImage::Format_RGB888;
    }

    void overlayTransparentHalfAndOpaque()
    {
        QFETCH(QImage::Format, format);
        const QImage before = withFormat(testsupport::randomImage(60, 30, QImage::Format_RGB32, 5), format);
        // Three bands of 10 columns: transparent (with colour left in it),
        // half red, opaque blue.
        QImage overlay(30, 10, QImage::Format_ARGB32);
        for (int y = 0; y < 10; ++y) {
            for (int x = 0; x < 30; ++x)
                overlay.setPixel(x, y, x < 10 ? qRgba(255, 0, 255, 0) : x < 20 ? qRgba(255, 0, 0, 128) : qRgba(0, 0, 255, 255));
        }
        QImage composite = before;
        keying::drawOverlay(composite, overlay);
        QCOMPARE(composite.size(), before.size());
        const QImage want = before.convertToFormat(QImage::Format_ARGB32);
        const QImage got = composite.convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 60; ++x) {
                const QRgb b = want.pixel(x, y), c = got.pixel(x, y);
                if (x < 20) {
                    QCOMPARE(c, b);
                } else if (x >= 40) {
                    QCOMPARE(c, qRgba(0, 0, 255, 255));
                } else {
                    // Half red over an opaque pixel.
                    const double a = 128 / 255.0;
                    QVERIFY(std::abs(qRed(c) - int(255 * a + qRed(b) * (1 - a) + 0.5)) <= 2);
                    QVERIFY(std::abs(qGreen(c) - int(qGreen(b) * (1 - a) + 0.5)) <= 2);
                    QVERIFY(std::abs(qBlue(c) - int(qBlue(b) * (1 - a) + 0.5)) <= 2);
                    QCOMPARE(qAlpha(c), 255);
                }
            }
        }
    }

    void overlayOnACutOutKeepsItsTransparencyWhereTheOverlayIsClear()
    {
        QImage cut(20, 10, QImage::Format_ARGB32);
        cut.fill(0u);
        cut.setPixel(3, 3, qRgba(10, 200, 30, 77));
        QImage overlay(20, 10, QImage::Format_ARGB32);
        overlay.fill(0u);
        overlay.setPixel(15, 5, qRgba(1, 2, 3, 255));
        overlay.setPixel(16, 5, qRgba(200, 100, 50, 128));
        keying::drawOverlay(cut, overlay);
        QCOMPARE(cut.pixel(3, 3), qRgba(10, 200, 30, 77));
        QCOMPARE(cut.pixel(0, 0), 0u);
        QCOMPARE(cut.pixel(15, 5), qRgba(1, 2, 3, 255));
        QVERIFY(std::abs(qAlpha(cut.pixel(16, 5)) - 128) <= 1);
        QVERIFY(std::abs(qRed(cut.pixel(16, 5)) - 200) <= 2);
    }

    // Keyed once into a mask, laid on a background: byte for byte the
    // composite of keying onto that background, for every photo and
    // background format the key mask treats its own way.
    void compositeWithMaskEqualsKeying_data()
    {
        QTest::addColumn<QImage::Format>("photoFormat");
        QTest::addColumn<QImage::Format>("backgroundFormat");
        QTest::addColumn<QRgb>("key");
        const QImage::Format photos[] = {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGB888,
                                         QImage::Format_Indexed8, QImage::Format_ARGB32_Premultiplied};
        const QImage::Format backgrounds[] = {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGB888};
        for (const QImage::Format p : photos) {
            for (const QImage::Format b : backgrounds) {
                QTest::addRow("photo %d on background %d, green", int(p), int(b)) << p << b << qRgb(40, 180, 60);
                QTest::addRow("photo %d on background %d, blue", int(p), int(b)) << p << b << qRgb(30, 60, 200);
            }
            QTest::addRow("photo %d, a grey key", int(p)) << p << QImage::Format_RGB32 << qRgb(120, 120, 120);
        }
    }

    void compositeWithMaskEqualsKeying()
    {
        QFETCH(QImage::Format, photoFormat);
        QFETCH(QImage::Format, backgroundFormat);
        QFETCH(QRgb, key);
        // A shot on the key's backdrop with random pixels over part of it
        // (transparent ones and black ones among them).
        QImage shot = testsupport::studioShot(48, 40, QColor(key), 3).convertToFormat(QImage::Format_ARGB32);
        const QImage noise = testsupport::randomImage(48, 12, QImage::Format_ARGB32, 9);
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 48; ++x)
                shot.setPixel(x, y + 20, noise.pixel(x, y));
        shot.setPixel(0, 0, 0u);
        shot.setPixel(1, 0, qRgba(0, 0, 0, 255));
        shot.setPixel(2, 0, qRgba(40, 180, 60, 0));
        const QImage photo = withFormat(photoFormat == QImage::Format_ARGB32 || photoFormat == QImage::Format_ARGB32_Premultiplied
                                            ? shot : shot.convertToFormat(QImage::Format_RGB32),
                                        photoFormat);
        const QImage background = withFormat(testsupport::randomImage(48, 40, QImage::Format_ARGB32, 11), backgroundFormat);
        const QImage keyed = keying::compositeWithKey(photo, background, key);
        const keying::BackdropMask mask = keying::backdropMask(photo, key);
        QCOMPARE(mask.valid, photoFormat == QImage::Format_RGB32 || photoFormat == QImage::Format_ARGB32);
        QImage buffer;
        const QImage fromCut = keying::compositeWithMask(photo, mask, background, buffer);
        QCOMPARE(fromCut.format(), keyed.format());
        QCOMPARE(fromCut.size(), keyed.size());
        for (int y = 0; y < keyed.height(); ++y)
            QVERIFY2(std::memcmp(fromCut.constScanLine(y), keyed.constScanLine(y), size_t(keyed.bytesPerLine())) == 0,
                     qPrintable(QStringLiteral("row %1").arg(y)));
        // And both say what the plain rule says, pixel by pixel.
        QImage plain = keyed.format() == photo.format() ? photo : photo.convertToFormat(keyed.format());
        oracle::maskOut(plain, background, key);
        QCOMPARE(fromCut.convertToFormat(QImage::Format_ARGB32), plain.convertToFormat(QImage::Format_ARGB32));
        // Again into the buffer's memory, now in use: the same bytes, no new
        // image.
        if (mask.valid) {
            QImage reused;
            static_cast<void>(keying::compositeWithMask(photo, mask, background, reused)); // let go at once
            const uchar* memory = reused.constBits();
            const QImage again = keying::compositeWithMask(photo, mask, testsupport::randomImage(48, 40, QImage::Format_RGB32, 12), reused);
            QCOMPARE(again.constBits(), memory);
            QImage other = photo;
            oracle::maskOut(other, testsupport::randomImage(48, 40, QImage::Format_RGB32, 12), key);
            QCOMPARE(again.convertToFormat(QImage::Format_ARGB32), other.convertToFormat(QImage::Format_ARGB32));
        }
    }

    // A large photo's mask is worked out over the pool's threads: the same
    // composite as keying it.
    void largePhotoMaskEqualsKeying()
    {
        QImage photo = testsupport::studioShot(1600, 1000, QColor(40, 180, 60), 4);
        // What the encoders write besides pixels goes with the composite.
        photo.setDotsPerMeterX(11811);
        photo.setDotsPerMeterY(5905);
        photo.setText(QStringLiteral("Author"), QStringLiteral("booth"));
        const QImage background = testsupport::backgroundPicture(1600, 1000, 5).convertToFormat(QImage::Format_RGB32);
        const QRgb key = keying::keyColourAt(photo, QPoint(3, 3));
        QImage buffer;
        const QImage viaMask = keying::compositeWithMask(photo, keying::backdropMask(photo, key), background, buffer);
        QVERIFY(testsupport::samePixels(viaMask, keying::compositeWithKey(photo, background, key)));
        QCOMPARE(viaMask.format(), keying::compositeWithKey(photo, background, key).format());
        QCOMPARE(viaMask.dotsPerMeterX(), 11811);
        QCOMPARE(viaMask.dotsPerMeterY(), 5905);
        QCOMPARE(viaMask.text(QStringLiteral("Author")), QStringLiteral("booth"));
    }
};

QTEST_APPLESS_MAIN(TestFinishing)
#include "tst_finishing.moc"
