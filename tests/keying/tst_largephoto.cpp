// SPDX-License-Identifier: MIT
// A 100-megapixel photo (12000 x 8400, the size of a medium-format camera's
// files) loads once the program has raised the image reader's limit at start,
// and keys like any other photo.
#include "state/imagelimits.h"
#include "keying/keymask.h"
#include "tests/keying/keyingoracle.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

class TestLargePhoto : public QObject
{
    Q_OBJECT

private slots:
    void hundredMegapixelPhotoLoadsAndKeys();
};

void TestLargePhoto::hundredMegapixelPhotoLoadsAndKeys()
{
    const int width = 12000;
    const int height = 8400;
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("large.jpg"));
    {
        // A green backdrop with a subject; flat areas keep the encoding quick.
        QImage shot(width, height, QImage::Format_RGB32);
        shot.fill(QColor(40, 180, 60));
        QPainter p(&shot);
        p.fillRect(width * 3 / 8, height / 2, width / 4, height / 2, QColor(70, 45, 40));
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(215, 170, 140));
        p.drawEllipse(QPoint(width / 2, height * 3 / 8), width / 10, height / 8);
        p.end();
        QVERIFY(testsupport::writeImage(shot, path, 90));
    }

    const qint64 decodedBytes = qint64(width) * height * 4;
    if (qint64(QImageReader::allocationLimit()) * 1024 * 1024 < decodedBytes)
        QVERIFY2(QImage(path).isNull(), "the image reader's own limit refuses such a photo");

    allowLargePhotos();
    QImage photo(path);
    QCOMPARE(photo.size(), QSize(width, height));
    QCOMPARE(photo.format(), QImage::Format_RGB32);

    QImage bkg(width, height, QImage::Format_RGB32);
    bkg.fill(qRgb(30, 60, 200));
    const QRgb key = photo.pixel(100, 100);
    const QImage before = photo.copy(0, 0, width, 4);
    const QImage middleBefore = photo.copy(0, height * 3 / 4, width, 4);

    keying::maskOut(photo, bkg, key);

    QCOMPARE(photo.pixel(100, 100), qRgb(30, 60, 200));          // backdrop replaced
    QCOMPARE(photo.pixel(width - 1, height - 1), qRgb(30, 60, 200));
    QVERIFY(photo.pixel(width / 2, height * 3 / 4) != qRgb(30, 60, 200)); // subject kept
    // Rows at the top and through the subject, pixel for pixel against the oracle.
    QImage expectedTop = before;
    oracle::maskOut(expectedTop, bkg.copy(0, 0, width, 4), key);
    QCOMPARE(photo.copy(0, 0, width, 4), expectedTop);
    QImage expectedMiddle = middleBefore;
    oracle::maskOut(expectedMiddle, bkg.copy(0, height * 3 / 4, width, 4), key);
    QCOMPARE(photo.copy(0, height * 3 / 4, width, 4), expectedMiddle);
}

PLENDRA_TEST_MAIN(TestLargePhoto)
#include "tst_largephoto.moc"
