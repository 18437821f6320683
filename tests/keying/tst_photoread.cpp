// SPDX-License-Identifier: MIT
// Reading a photo into memory that held the one before: the same picture as a
// fresh read, for every kind of file, damaged ones included; the earlier
// pixels reused for JPEG and PNG; memory another image shares never written.
#include "keying/photoread.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>

class PhotoReadTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QImage shot(QImage::Format format, quint32 seed, int width = 301, int height = 203) const
    {
        return testsupport::studioShot(width, height, QColor(40, 180, 60), seed).convertToFormat(format);
    }

    QString write(const QString& name, const QImage& img, int keptPercent = 100)
    {
        const QString path = m_dir.path() + QLatin1Char('/') + name;
        if (!img.save(path, nullptr, 90))
            return QString();
        QFile file(path);
        if (keptPercent < 100 && (!file.open(QIODevice::ReadWrite) || !file.resize(file.size() * keptPercent / 100)))
            return QString();
        return path;
    }

    // Memory that held a picture of the size and format `like` decodes to,
    // every byte of it loud and wrong.
    static QImage dirtyLike(const QImage& like)
    {
        QImage dirty = like.isNull() ? QImage(301, 203, QImage::Format_RGB32) : like.copy();
        std::memset(dirty.bits(), 0xa5, size_t(dirty.sizeInBytes()));
        return dirty;
    }

private slots:
    void sameAsAFreshRead_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("readable");
        const auto row = [&](const char* name, const QString& path, bool readable) {
            QVERIFY2(!path.isEmpty(), name);
            QTest::newRow(name) << path << readable;
        };
        row("JPEG", write("a.jpg", shot(QImage::Format_RGB32, 1)), true);
        row("grey JPEG", write("grey.jpg", shot(QImage::Format_Grayscale8, 2)), true);
        row("JPEG cut short", write("cut.jpg", shot(QImage::Format_RGB32, 3), 40), true);
        row("PNG", write("a.png", shot(QImage::Format_RGB32, 4)), true);
        row("PNG with alpha", write("alpha.png", shot(QImage::Format_ARGB32, 5)), true);
        row("16-bit PNG", write("deep.png", shot(QImage::Format_RGBA64, 6)), true);
        row("paletted PNG", write("paletted.png", shot(QImage::Format_Indexed8, 7)), true);
        row("PNG cut short", write("cut.png", shot(QImage::Format_RGB32, 8), 50), false);
        // Pictures of several megabytes get memory of their own making.
        row("large JPEG", write("large.jpg", shot(QImage::Format_RGB32, 11, 1601, 1203)), true);
        row("large grey JPEG", write("large-grey.jpg", shot(QImage::Format_Grayscale8, 12, 2401, 2003)), true);
        row("large JPEG cut short", write("large-cut.jpg", shot(QImage::Format_RGB32, 13, 1601, 1203), 30), true);
        row("large PNG with alpha", write("large-alpha.png", shot(QImage::Format_ARGB32, 14, 1601, 1203)), true);
        row("large 16-bit PNG", write("large-deep.png", shot(QImage::Format_RGBA64, 15, 1201, 903)), true);
        row("large PNG cut short", write("large-cut.png", shot(QImage::Format_RGB32, 16, 1601, 1203), 60), false);
        row("TIFF", write("a.tif", shot(QImage::Format_RGB32, 9)), true);
        row("BMP", write("a.bmp", shot(QImage::Format_RGB888, 10)), true);
        QFile text(m_dir.path() + QStringLiteral("/text.jpg"));
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no picture at all") > 0);
        text.close();
        row("text named .jpg", text.fileName(), false);
        row("missing file", m_dir.path() + QStringLiteral("/gone.jpg"), false);
    }

    void sameAsAFreshRead()
    {
        QFETCH(QString, path);
        QFETCH(bool, readable);
        QImage fresh;
        QCOMPARE(fresh.load(path), readable);

        QImage photo = dirtyLike(fresh);
        QCOMPARE(keying::readPhotoInto(path, photo), readable);
        QCOMPARE(photo.isNull(), !readable);
        QCOMPARE(photo.format(), fresh.format());
        QCOMPARE(photo.colorTable(), fresh.colorTable());
        QCOMPARE(photo, fresh);

        QImage empty;
        QCOMPARE(keying::readPhotoInto(path, empty), readable);
        QCOMPARE(empty, fresh);
    }

    void jpegAndPngReuseTheEarlierPixels_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("two JPEGs") << write("same-a.jpg", shot(QImage::Format_RGB32, 20, 640, 480))
                                   << write("same-b.jpg", shot(QImage::Format_RGB32, 21, 640, 480));
        QTest::newRow("two PNGs") << write("same-a.png", shot(QImage::Format_RGB32, 22, 640, 480))
                                  << write("same-b.png", shot(QImage::Format_RGB32, 23, 640, 480));
    }

    void jpegAndPngReuseTheEarlierPixels()
    {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QImage photo;
        QVERIFY(keying::readPhotoInto(first, photo));
        const uchar* memory = photo.constBits();
        QVERIFY(keying::readPhotoInto(second, photo));
        QCOMPARE(photo.constBits(), memory);
        QCOMPARE(photo, QImage(second));
    }

    void sharedPixelsAreNeverWritten()
    {
        const QString first = write("shared-a.jpg", shot(QImage::Format_RGB32, 30, 640, 480));
        const QString second = write("shared-b.jpg", shot(QImage::Format_RGB32, 31, 640, 480));
        QImage photo;
        QVERIFY(keying::readPhotoInto(first, photo));
        const QImage held = photo; // a preview or a save still holding it
        QVERIFY(keying::readPhotoInto(second, photo));
        QCOMPARE(held, QImage(first));
        QCOMPARE(photo, QImage(second));
        QVERIFY(held.constBits() != photo.constBits());
    }
};

PLENDRA_TEST_MAIN(PhotoReadTest)
#include "tst_photoread.moc"
