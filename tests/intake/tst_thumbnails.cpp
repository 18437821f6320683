// SPDX-License-Identifier: MIT
// Thumbnails made off the GUI thread: pixel for pixel the icons the lists have
// always shown, for every kind of picture file, and a loader that delivers
// each one, empty ones included, and ends cleanly when dropped mid-way.
#include "intake/thumbnail.h"
#include "intake/thumbnailloader.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

namespace {

// A picture with smooth colour, hard edges and (in formats that have one)
// an alpha channel that is transparent in one corner only.
QImage picture(int width, int height, QImage::Format format, bool transparentCorner, quint32 seed)
{
    QImage img = testsupport::studioShot(width, height, QColor(40, 180, 60), seed).convertToFormat(QImage::Format_ARGB32);
    if (transparentCorner) {
        for (int y = 0; y < height / 4; ++y)
            for (int x = 0; x < width / 4; ++x)
                img.setPixel(x, y, qRgba(x % 256, y % 256, 90, (x * 7 + y * 3) % 256));
    }
    return img.convertToFormat(format);
}

// A 16-bit picture that is opaque but for one pixel a hair short of it: a
// pixmap counts it as transparent.
QImage nearlyOpaque16Bit(int width, int height)
{
    QImage img = picture(width, height, QImage::Format_RGBA64, false, 21);
    QRgba64* row = reinterpret_cast<QRgba64*>(img.scanLine(height / 2));
    row[width / 3].setAlpha(65534);
    return img;
}

// A paletted picture whose colour table has a transparent entry it never uses.
QImage palettedWithUnusedTransparency(int width, int height)
{
    QImage img = picture(width, height, QImage::Format_Indexed8, false, 22);
    QList<QRgb> table = img.colorTable();
    table.append(qRgba(0, 0, 0, 0));
    img.setColorTable(table);
    return img;
}

QImage icon64(const QIcon& icon, const QSize& size)
{
    return icon.isNull() ? QImage() : icon.pixmap(size).toImage();
}

} // namespace

class TestThumbnails : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString write(const QString& name, const QImage& img, const char* format = nullptr)
    {
        const QString path = m_dir.path() + QLatin1Char('/') + name;
        return img.save(path, format, 90) ? path : QString();
    }

    // The picture written, then cut off after `keptPercent` of its bytes, as a
    // copy stopped half-way leaves it.
    QString writeCutShort(const QString& name, const QImage& img, int keptPercent)
    {
        const QString path = write(name, img);
        QFile file(path);
        if (path.isEmpty() || !file.open(QIODevice::ReadWrite) || !file.resize(file.size() * keptPercent / 100))
            return QString();
        return path;
    }

private slots:
    void identicalToTheSynchronousIcon_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("decodedAs"); // what the file reads back as, to show the row means what it says
        QTest::addColumn<QSize>("size");

        struct Row
        {
            const char* name;
            QString path;
        };
        const QList<Row> rows = {
            {"JPEG", write("photo.jpg", picture(301, 203, QImage::Format_RGB32, false, 1))},
            {"grey JPEG", write("grey.jpg", picture(301, 203, QImage::Format_Grayscale8, false, 2))},
            {"PNG with alpha", write("alpha.png", picture(301, 203, QImage::Format_ARGB32, true, 3))},
            {"PNG with an opaque alpha channel", write("opaque-alpha.png", picture(301, 203, QImage::Format_ARGB32, false, 4))},
            {"16-bit PNG", write("deep.png", picture(301, 203, QImage::Format_RGBX64, false, 5))},
            {"16-bit PNG with alpha", write("deep-alpha.png", picture(301, 203, QImage::Format_RGBA64, true, 6))},
            {"16-bit PNG nearly opaque", write("deep-nearly.png", nearlyOpaque16Bit(301, 203))},
            {"16-bit grey PNG", write("deep-grey.png", picture(301, 203, QImage::Format_Grayscale16, false, 7))},
            {"paletted PNG", write("paletted.png", picture(301, 203, QImage::Format_Indexed8, false, 8))},
            {"paletted PNG with transparency", write("paletted-alpha.png", picture(301, 203, QImage::Format_Indexed8, true, 9))},
            {"paletted PNG with an unused transparent entry", write("paletted-unused.png", palettedWithUnusedTransparency(301, 203))},
            {"TIFF", write("photo.tif", picture(301, 203, QImage::Format_RGB32, false, 10))},
            {"TIFF with alpha", write("alpha.tiff", picture(301, 203, QImage::Format_ARGB32, true, 11))},
            {"BMP", write("photo.bmp", picture(301, 203, QImage::Format_RGB888, false, 12))},
            {"two-colour BMP", write("mono.bmp", picture(301, 203, QImage::Format_Mono, false, 13))},
            {"XPM", write("picture.xpm", picture(61, 43, QImage::Format_ARGB32, true, 14).convertToFormat(QImage::Format_Indexed8), "XPM")},
            {"smaller than the thumbnail", write("small.png", picture(40, 30, QImage::Format_ARGB32, true, 15))},
            {"exactly the thumbnail's size", write("exact.jpg", picture(64, 64, QImage::Format_RGB32, false, 16))},
            {"JPEG cut short", writeCutShort("cut.jpg", picture(301, 203, QImage::Format_RGB32, false, 17), 40)},
            {"grey JPEG cut short", writeCutShort("cut-grey.jpg", picture(301, 203, QImage::Format_Grayscale8, false, 18), 55)},
        };
        for (const Row& row : rows) {
            QVERIFY2(!row.path.isEmpty(), row.name);
            const QString decodedAs = QString::number(QImage(row.path).format());
            QTest::addRow("%s, start-up size", row.name) << row.path << decodedAs << kStartupThumbnailSize;
            QTest::addRow("%s, added size", row.name) << row.path << decodedAs << kAddedThumbnailSize;
        }
        QFile broken(m_dir.path() + QStringLiteral("/broken.png"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("no picture at all");
        broken.close();
        QTest::addRow("unreadable file") << broken.fileName() << QStringLiteral("none") << kAddedThumbnailSize;
        QTest::addRow("missing file") << m_dir.path() + QStringLiteral("/gone.jpg") << QStringLiteral("none")
                                      << kAddedThumbnailSize;
        const QString cutPng = writeCutShort("cut.png", picture(301, 203, QImage::Format_RGB32, false, 19), 50);
        QVERIFY(!cutPng.isEmpty());
        QTest::addRow("PNG cut short") << cutPng << QStringLiteral("none") << kAddedThumbnailSize;
    }

    void identicalToTheSynchronousIcon()
    {
        QFETCH(QString, path);
        QFETCH(QString, decodedAs);
        QFETCH(QSize, size);
        const QImage decoded(path);
        QCOMPARE(decoded.isNull() ? QStringLiteral("none") : QString::number(decoded.format()), decodedAs);

        const QIcon oracle = thumbnailIcon(path, size);
        const PixmapFormats formats = PixmapFormats::ofThisScreen();
        const QImage offThread = thumbnailOfFile(path, size, formats);
        const QIcon icon = iconOfThumbnail(offThread);

        QCOMPARE(icon.isNull(), oracle.isNull());
        QCOMPARE(icon.availableSizes(), oracle.availableSizes());
        if (oracle.isNull())
            return;
        const QImage expected = icon64(oracle, size);
        const QImage actual = icon64(icon, size);
        QCOMPARE(actual.size(), size);
        QCOMPARE(actual.format(), expected.format());
        QCOMPARE(actual, expected);
        // The thumbnail made from an already decoded photo is the same again.
        QCOMPARE(icon64(iconOfThumbnail(thumbnailOf(decoded, size, formats)), size), expected);
    }

    // A worker decodes photo after photo into the same memory: whatever the
    // photo before left there never shows in the next one's thumbnail, a
    // damaged one included.
    void identicalWhenDecodedIntoAnEarlierPhoto_data() { identicalToTheSynchronousIcon_data(); }

    void identicalWhenDecodedIntoAnEarlierPhoto()
    {
        QFETCH(QString, path);
        QFETCH(QSize, size);
        const QImage decoded(path);
        const QIcon oracle = thumbnailIcon(path, size);
        const PixmapFormats formats = PixmapFormats::ofThisScreen();

        // An earlier photo of exactly this size and format, in loud magenta.
        QImage earlier = decoded.isNull() ? QImage(301, 203, QImage::Format_RGB32) : decoded.copy();
        if (earlier.format() == QImage::Format_Indexed8 || earlier.format() == QImage::Format_Mono)
            earlier.fill(0);
        else
            earlier.fill(QColor(255, 0, 255));
        QImage buffer = earlier;
        buffer.detach();

        const QImage thumbnail = thumbnailOfFile(path, size, formats, buffer);
        QCOMPARE(thumbnail.isNull(), oracle.isNull());
        if (oracle.isNull()) {
            // A failed read keeps no half-read picture.
            QVERIFY(buffer.isNull() || buffer == earlier);
            return;
        }
        QCOMPARE(icon64(iconOfThumbnail(thumbnail), size), icon64(oracle, size));
    }

    void pixmapFormIsWhatAPixmapHolds_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::newRow("RGB32") << picture(33, 21, QImage::Format_RGB32, false, 1);
        QTest::newRow("opaque ARGB32") << picture(33, 21, QImage::Format_ARGB32, false, 2);
        QTest::newRow("ARGB32 with alpha") << picture(33, 21, QImage::Format_ARGB32, true, 3);
        QTest::newRow("opaque premultiplied") << picture(33, 21, QImage::Format_ARGB32_Premultiplied, false, 4);
        QTest::newRow("RGB888") << picture(33, 21, QImage::Format_RGB888, false, 5);
        QTest::newRow("RGBA8888 with alpha") << picture(33, 21, QImage::Format_RGBA8888, true, 6);
        QTest::newRow("opaque RGBA8888") << picture(33, 21, QImage::Format_RGBA8888, false, 7);
        QTest::newRow("RGBA64 with alpha") << picture(33, 21, QImage::Format_RGBA64, true, 8);
        QTest::newRow("RGBA64 nearly opaque") << nearlyOpaque16Bit(33, 21);
        QTest::newRow("Grayscale16") << picture(33, 21, QImage::Format_Grayscale16, false, 9);
        QTest::newRow("Indexed8") << picture(33, 21, QImage::Format_Indexed8, false, 10);
        QTest::newRow("Indexed8, unused transparent entry") << palettedWithUnusedTransparency(33, 21);
        QTest::newRow("Mono") << picture(33, 21, QImage::Format_Mono, false, 11);
        QImage monoAlpha = picture(33, 21, QImage::Format_Mono, false, 12);
        monoAlpha.setColor(0, qRgba(0, 0, 0, 0));
        QTest::newRow("Mono with a transparent colour") << monoAlpha;
        QTest::newRow("RGB16") << picture(33, 21, QImage::Format_RGB16, false, 13);
    }

    void pixmapFormIsWhatAPixmapHolds()
    {
        QFETCH(QImage, image);
        const QImage held = QPixmap::fromImage(image).toImage();
        const QImage ours = inPixmapForm(image, PixmapFormats::ofThisScreen());
        QCOMPARE(ours.format(), held.format());
        QCOMPARE(ours, held);
    }

    void loaderDeliversEveryThumbnailAndEmptyOnes()
    {
        QStringList paths;
        for (int i = 0; i < 24; ++i)
            paths << write(QStringLiteral("many-%1.jpg").arg(i), picture(120 + i, 90, QImage::Format_RGB32, false, 40 + i));
        QFile broken(m_dir.path() + QStringLiteral("/many-broken.png"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("not a picture");
        broken.close();
        paths.insert(9, broken.fileName());

        ThumbnailLoader loader;
        QSignalSpy ready(&loader, &ThumbnailLoader::thumbnailReady);
        QHash<quint64, QString> asked;
        for (const QString& path : paths)
            asked.insert(loader.request(path, kAddedThumbnailSize), path);
        QCOMPARE(asked.size(), paths.size()); // one ticket each
        QCOMPARE(loader.pending(), int(paths.size()));
        QCOMPARE(ready.count(), 0); // nothing arrives before the event loop runs

        QTRY_COMPARE_WITH_TIMEOUT(loader.pending(), 0, 60000);
        QCOMPARE(ready.count(), int(paths.size()));
        for (const QList<QVariant>& args : std::as_const(ready)) {
            const QString path = asked.take(args.at(0).toULongLong());
            QVERIFY2(!path.isEmpty(), "a ticket delivered twice or never asked for");
            const QImage thumbnail = args.at(1).value<QImage>();
            QCOMPARE(icon64(iconOfThumbnail(thumbnail), kAddedThumbnailSize),
                     icon64(thumbnailIcon(path, kAddedThumbnailSize), kAddedThumbnailSize));
            QCOMPARE(thumbnail.isNull(), path == broken.fileName());
        }
        QVERIFY(asked.isEmpty());
    }

    void atMostOneDecodePerCore()
    {
        QCOMPARE(ThumbnailLoader::pool().maxThreadCount(), qMax(1, QThread::idealThreadCount()));
        QVERIFY(&ThumbnailLoader::pool() != QThreadPool::globalInstance());
    }

    void droppingTheLoaderMidWayDeliversNothingMore()
    {
        QStringList paths;
        for (int i = 0; i < 40; ++i)
            paths << write(QStringLiteral("drop-%1.png").arg(i), picture(900, 600, QImage::Format_RGB32, false, 80 + i));
        QEventLoop firstOne;
        int delivered = 0;
        auto* loader = new ThumbnailLoader;
        connect(loader, &ThumbnailLoader::thumbnailReady, &firstOne, [&] {
            ++delivered;
            firstOne.quit();
        });
        for (const QString& path : paths)
            loader->request(path, kAddedThumbnailSize);
        // Let the work start, then drop the loader while most of it waits.
        QTimer::singleShot(60000, &firstOne, &QEventLoop::quit);
        firstOne.exec();
        // Deliveries that were already queued arrive together; most are still to come.
        QVERIFY(delivered >= 1);
        QVERIFY(delivered < paths.size());
        delete loader;
        const int atDrop = delivered;
        QTest::qWait(300);
        QCOMPARE(delivered, atDrop);
        // The pool is left with nothing running for the dropped loader.
        QVERIFY(ThumbnailLoader::pool().waitForDone(60000));
    }
};

PLENDRA_TEST_MAIN(TestThumbnails)
#include "tst_thumbnails.moc"
