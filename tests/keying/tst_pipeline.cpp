// SPDX-License-Identifier: MIT
// The photo pipeline on its own, without a window: the steps the window and
// the batch tool share, and the save that never leaves part of a file.
#include "keying/keymask.h"
#include "keying/pipeline.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTransform>


namespace {

// Channels spread over 0..255 so that keys, alpha and rounding all show.
QImage noise(int width, int height, QImage::Format format, quint32 seed)
{
    return testsupport::randomImage(width, height, format, seed);
}

// A green backdrop with a grey square in the middle.
QImage greenShot(int width, int height)
{
    QImage img(width, height, QImage::Format_RGB32);
    img.fill(qRgb(40, 200, 60));
    for (int y = height / 4; y < 3 * height / 4; ++y) {
        for (int x = width / 4; x < 3 * width / 4; ++x)
            img.setPixel(x, y, qRgb(120, 110, 100));
    }
    return img;
}

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

class PipelineTest : public QObject
{
    Q_OBJECT

private slots:
    void photoAsKeyedIsTheFileAsStoredAtNoTurn();
    void photoAsKeyedTurnsTheBoundingBox();
    void photoAsKeyedOfAnUnreadableFileIsNull();
    void fittedBackgroundStretchesIgnoringShape();
    void fittedBackgroundToItsOwnSizeChangesNothing();
    void sampledPixel_data();
    void sampledPixel();
    void compositeKeysACopyWithTheSampledColour();
    void compositeOfAGreyKeyIsThePhoto();
    void savedFormIsWhatAPixmapGivesBack_data();
    void savedFormIsWhatAPixmapGivesBack();
    void savedFileHasTheWritersBytes_data();
    void savedFileHasTheWritersBytes();
    void saveOfAnUnknownFormatLeavesNothing();
    void saveIntoAMissingFolderLeavesNothing();
    void saveOnAFullDiskLeavesNoFile();
    void failedResaveOnAFullDiskKeepsTheEarlierFile();
};

void PipelineTest::photoAsKeyedIsTheFileAsStoredAtNoTurn()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shot.png"));
    const QImage stored = noise(37, 21, QImage::Format_RGB32, 1);
    QVERIFY(stored.save(path));
    const QImage photo = keying::photoAsKeyed(path, 0);
    QCOMPARE(photo, QImage(path));
    QCOMPARE(photo.format(), QImage(path).format());
}

void PipelineTest::photoAsKeyedTurnsTheBoundingBox()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("shot.png"));
    QVERIFY(noise(400, 300, QImage::Format_RGB32, 2).save(path));
    const QImage turned = keying::photoAsKeyed(path, 90);
    QCOMPARE(turned.size(), QSize(300, 400));
    QTransform turn;
    turn.rotate(90);
    QCOMPARE(turned, QImage(path).transformed(turn, Qt::FastTransformation));
}

void PipelineTest::photoAsKeyedOfAnUnreadableFileIsNull()
{
    QTemporaryDir dir;
    QVERIFY(keying::photoAsKeyed(dir.filePath(QStringLiteral("missing.jpg")), 0).isNull());
    const QString text = dir.filePath(QStringLiteral("notes.png"));
    QFile f(text);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("not a picture");
    f.close();
    QVERIFY(keying::photoAsKeyed(text, 0).isNull());
}

void PipelineTest::fittedBackgroundStretchesIgnoringShape()
{
    const QImage bkg = noise(300, 100, QImage::Format_RGB32, 3);
    const QImage fitted = keying::fittedBackground(bkg, QSize(120, 160));
    QCOMPARE(fitted.size(), QSize(120, 160));
    QCOMPARE(fitted, bkg.scaled(120, 160, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    QVERIFY(keying::fittedBackground(QImage(), QSize(120, 160)).isNull());
}

void PipelineTest::fittedBackgroundToItsOwnSizeChangesNothing()
{
    const QImage bkg = noise(64, 48, QImage::Format_ARGB32, 4);
    QCOMPARE(keying::fittedBackground(bkg, bkg.size()), bkg);
}

void PipelineTest::sampledPixel_data()
{
    QTest::addColumn<QSize>("photo");
    QTest::addColumn<QPoint>("click");
    QTest::addColumn<QSize>("view");
    QTest::addColumn<QPoint>("pixel");
    QTest::newRow("mid backdrop") << QSize(1000, 800) << QPoint(210, 175) << QSize(421, 351) << QPoint(498, 398);
    QTest::newRow("origin") << QSize(1000, 800) << QPoint(0, 0) << QSize(421, 351) << QPoint(0, 0);
    // The viewport is smaller than the view used as divisor.
    QTest::newRow("last viewport pixel") << QSize(1000, 800) << QPoint(418, 348) << QSize(421, 351) << QPoint(992, 793);
    // A portrait photo is letterboxed in the preview; the band still maps.
    QTest::newRow("portrait band") << QSize(300, 400) << QPoint(400, 10) << QSize(421, 351) << QPoint(285, 11);
    QTest::newRow("tiny photo") << QSize(1, 1) << QPoint(420, 350) << QSize(421, 351) << QPoint(0, 0);
}

void PipelineTest::sampledPixel()
{
    QFETCH(QSize, photo);
    QFETCH(QPoint, click);
    QFETCH(QSize, view);
    QFETCH(QPoint, pixel);
    QCOMPARE(keying::sampledPixel(photo, click, view), pixel);
}

void PipelineTest::compositeKeysACopyWithTheSampledColour()
{
    const QImage photo = greenShot(80, 60);
    const QImage bkg = noise(80, 60, QImage::Format_RGB32, 5);
    const QImage result = keying::composite(photo, bkg, QPoint(3, 3));

    QImage expected = photo;
    keying::maskOut(expected, bkg, photo.pixel(3, 3));
    QCOMPARE(result, expected);
    QCOMPARE(result.pixel(0, 0), bkg.pixel(0, 0));        // backdrop replaced
    QCOMPARE(result.pixel(40, 30), qRgb(120, 110, 100));   // subject kept
    QCOMPARE(photo, greenShot(80, 60));                    // the photo given is untouched
}

void PipelineTest::compositeOfAGreyKeyIsThePhoto()
{
    const QImage photo = greenShot(80, 60);
    // The subject's grey neither green- nor blue-dominant: nothing is keyed.
    QCOMPARE(keying::composite(photo, noise(80, 60, QImage::Format_RGB32, 6), QPoint(40, 30)), photo);
}

void PipelineTest::savedFormIsWhatAPixmapGivesBack_data()
{
    QTest::addColumn<QImage>("composite");
    QTest::newRow("RGB32") << noise(33, 7, QImage::Format_RGB32, 10);
    QImage opaque = noise(33, 7, QImage::Format_RGB32, 11).convertToFormat(QImage::Format_ARGB32);
    QTest::newRow("ARGB32 opaque") << opaque;
    QTest::newRow("ARGB32 see-through") << noise(33, 7, QImage::Format_ARGB32, 12);
    QTest::newRow("ARGB32 premultiplied") << noise(33, 7, QImage::Format_ARGB32_Premultiplied, 13);
    QTest::newRow("premultiplied opaque") << opaque.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QTest::newRow("RGB888") << noise(33, 7, QImage::Format_RGB888, 14);
    QTest::newRow("Grayscale8") << noise(33, 7, QImage::Format_Grayscale8, 15);
    QTest::newRow("Indexed8") << noise(33, 7, QImage::Format_RGB32, 16).convertToFormat(QImage::Format_Indexed8);
    QTest::newRow("RGBA64 see-through") << noise(33, 7, QImage::Format_RGBA64, 17);
    QTest::newRow("RGBA64 opaque") << opaque.convertToFormat(QImage::Format_RGBA64);
    QTest::newRow("RGBX64") << noise(33, 7, QImage::Format_RGBX64, 18);
    QTest::newRow("Mono") << noise(33, 7, QImage::Format_RGB32, 19).convertToFormat(QImage::Format_Mono);
}

void PipelineTest::savedFormIsWhatAPixmapGivesBack()
{
    QFETCH(QImage, composite);
    const QImage viaPixmap = QPixmap::fromImage(composite).toImage();
    const QImage saved = keying::savedForm(composite);
    QCOMPARE(saved.format(), viaPixmap.format());
    QCOMPARE(saved, viaPixmap);
}

void PipelineTest::savedFileHasTheWritersBytes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QImage>("composite");
    const QImage photo = noise(64, 40, QImage::Format_RGB32, 20);
    QTest::newRow("jpg") << QStringLiteral("a.jpg") << photo;
    QTest::newRow("JPG in capitals") << QStringLiteral("b.JPG") << photo;
    QTest::newRow("jpeg") << QStringLiteral("c.jpeg") << photo;
    QTest::newRow("png") << QStringLiteral("d.png") << photo;
    QTest::newRow("png see-through") << QStringLiteral("e.png") << noise(64, 40, QImage::Format_ARGB32, 21);
    QTest::newRow("tif") << QStringLiteral("f.tif") << photo;
    QTest::newRow("tiff") << QStringLiteral("g.tiff") << photo;
    QTest::newRow("bmp") << QStringLiteral("h.bmp") << photo;
    QTest::newRow("xpm") << QStringLiteral("i.xpm") << noise(16, 8, QImage::Format_RGB32, 22);
    QTest::newRow("blank and quotes") << QStringLiteral("a \"b\\c.png") << photo;
}

void PipelineTest::savedFileHasTheWritersBytes()
{
    QFETCH(QString, name);
    QFETCH(QImage, composite);
    QTemporaryDir ours;
    QTemporaryDir direct;
    const QImage saved = keying::savedForm(composite);
    QVERIFY(keying::saveComposite(composite, ours.filePath(name)));
    // What writing the file straight to its name gives.
    QVERIFY(saved.save(direct.filePath(name), nullptr, -1));
    QCOMPARE(testsupport::fileBytes(ours.filePath(name)), testsupport::fileBytes(direct.filePath(name)));
    QCOMPARE(entriesOf(ours.path()), QStringList{name});
}

void PipelineTest::saveOfAnUnknownFormatLeavesNothing()
{
    QTemporaryDir dir;
    QVERIFY(!keying::saveComposite(greenShot(20, 10), dir.filePath(QStringLiteral("shot.xyz"))));
    QVERIFY(!keying::saveComposite(greenShot(20, 10), dir.filePath(QStringLiteral("noSuffix"))));
    // The target of an empty photo name is the folder itself followed by "/".
    QVERIFY(!keying::saveComposite(greenShot(20, 10), dir.path() + QStringLiteral("/")));
    QCOMPARE(entriesOf(dir.path()), QStringList());
}

void PipelineTest::saveIntoAMissingFolderLeavesNothing()
{
    QTemporaryDir dir;
    QVERIFY(!keying::saveComposite(greenShot(20, 10), dir.filePath(QStringLiteral("gone/shot.png"))));
    QCOMPARE(entriesOf(dir.path()), QStringList());
}

void PipelineTest::saveOnAFullDiskLeavesNoFile()
{
    testsupport::SmallDisk disk(256);
    if (!disk.mounted())
        QSKIP(qPrintable(QStringLiteral("no small filesystem to fill (%1)").arg(disk.why())));
    // Random pixels do not compress: about 1.2 MB of PNG on a 256 kB disk.
    const QString target = disk.path() + QStringLiteral("/shot.png");
    QVERIFY(!keying::saveComposite(noise(640, 480, QImage::Format_RGB32, 30), target));
    QCOMPARE(entriesOf(disk.path()), QStringList());
}

void PipelineTest::failedResaveOnAFullDiskKeepsTheEarlierFile()
{
    testsupport::SmallDisk disk(256);
    if (!disk.mounted())
        QSKIP(qPrintable(QStringLiteral("no small filesystem to fill (%1)").arg(disk.why())));
    const QString target = disk.path() + QStringLiteral("/shot.png");
    QVERIFY(keying::saveComposite(greenShot(160, 120), target));
    const QByteArray good = testsupport::fileBytes(target);
    QVERIFY(!good.isEmpty());

    QVERIFY(!keying::saveComposite(noise(640, 480, QImage::Format_RGB32, 31), target));
    QCOMPARE(testsupport::fileBytes(target), good);
    QCOMPARE(entriesOf(disk.path()), QStringList{QStringLiteral("shot.png")});
}

PLENDRA_TEST_MAIN(PipelineTest)
#include "tst_pipeline.moc"
