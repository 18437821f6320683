// SPDX-License-Identifier: MIT
// The transparent cut-out and the replaced share against a per-pixel reading
// of the key rule, and against the composite the window makes.
#include "keying/cutout.h"
#include "keying/keymask.h"
#include "keying/pipeline.h"
#include "tests/support/testsupport.h"

#include <QTest>

Q_DECLARE_METATYPE(QImage::Format)

namespace {

const QRgb kGreenKey = qRgb(40, 180, 60);
const QRgb kBlueKey = qRgb(40, 70, 200);

// A background no photo pixel can hold by chance: every replaced pixel of a
// composite against it shows as this colour with alpha 1.
QImage markerBackground(QSize size)
{
    QImage marker(size, QImage::Format_ARGB32);
    marker.fill(qRgba(1, 2, 3, 1));
    return marker;
}

} // namespace

class TestCutOut : public QObject
{
    Q_OBJECT

private slots:
    void cutOutClearsExactlyTheBackdrop_data()
    {
        QTest::addColumn<QImage::Format>("format");
        QTest::addColumn<QRgb>("key");
        QTest::addColumn<int>("seed");
        QTest::newRow("32-bit RGB, green") << QImage::Format_RGB32 << kGreenKey << 1;
        QTest::newRow("32-bit ARGB, green") << QImage::Format_ARGB32 << kGreenKey << 2;
        QTest::newRow("premultiplied, blue") << QImage::Format_ARGB32_Premultiplied << kBlueKey << 3;
        QTest::newRow("paletted, green") << QImage::Format_Indexed8 << kGreenKey << 4;
        QTest::newRow("16-bit, green") << QImage::Format_RGBX64 << kGreenKey << 5;
        QTest::newRow("24-bit, blue") << QImage::Format_RGB888 << kBlueKey << 6;
    }

    void cutOutClearsExactlyTheBackdrop()
    {
        QFETCH(QImage::Format, format);
        QFETCH(QRgb, key);
        QFETCH(int, seed);
        const QColor backdrop = key == kGreenKey ? QColor(40, 180, 60) : QColor(40, 70, 200);
        const QImage photo = testsupport::studioShot(123, 77, backdrop, quint32(seed)).convertToFormat(format);

        const QImage cut = keying::cutOut(photo, key);
        QCOMPARE(cut.format(), QImage::Format_ARGB32);
        QCOMPARE(cut.size(), photo.size());

        // The window's composite against a marker tells which pixels it replaces.
        const QImage composite = keying::compositeWithKey(photo, markerBackground(photo.size()), key)
                                     .convertToFormat(QImage::Format_ARGB32);
        const keying::KeyColour k = keying::keyColourOf(key);
        int cleared = 0;
        for (int y = 0; y < photo.height(); ++y) {
            for (int x = 0; x < photo.width(); ++x) {
                const QRgb own = photo.pixel(x, y);
                const bool backdrop = keying::isBackdrop(k, own);
                QCOMPARE(composite.pixel(x, y) != own, backdrop);
                if (backdrop) {
                    QCOMPARE(cut.pixel(x, y), QRgb(0));
                    ++cleared;
                } else {
                    QCOMPARE(cut.pixel(x, y), own);
                    QCOMPARE(qAlpha(cut.pixel(x, y)), 255);
                }
            }
        }
        // The studio shot is mostly backdrop, with a subject in the middle.
        QVERIFY(cleared > photo.width() * photo.height() / 2);
        QVERIFY(cleared < photo.width() * photo.height());
        QCOMPARE(keying::backdropShare(photo, key), double(cleared) / (photo.width() * photo.height()));
    }

    void keyOfNeitherGreenNorBlueClearsNothing()
    {
        const QImage photo = testsupport::studioShot(40, 30, QColor(40, 180, 60), 9);
        const QImage cut = keying::cutOut(photo, qRgb(128, 128, 128));
        QCOMPARE(cut, photo.convertToFormat(QImage::Format_ARGB32));
        QCOMPARE(keying::backdropShare(photo, qRgb(128, 128, 128)), 0.0);
    }

    void nullPhotoGivesNothing()
    {
        QVERIFY(keying::cutOut(QImage(), kGreenKey).isNull());
        QCOMPARE(keying::backdropShare(QImage(), kGreenKey), 0.0);
    }

    void compositeWithKeyEqualsCompositeAtThatPixel()
    {
        const QImage photo = testsupport::studioShot(64, 48, QColor(40, 180, 60), 12);
        const QImage bg = keying::fittedBackground(testsupport::backgroundPicture(30, 90, 13), photo.size());
        const QPoint at(3, 4);
        QCOMPARE(keying::compositeWithKey(photo, bg, photo.pixel(at)), keying::composite(photo, bg, at));
    }
};

PLENDRA_TEST_MAIN(TestCutOut)
#include "tst_cutout.moc"
