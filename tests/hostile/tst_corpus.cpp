// SPDX-License-Identifier: MIT
// What the image loader makes of each hostile file: the ground truth the
// entry-point tests build on.
#include "state/imagelimits.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QPixmap>
#include <QTemporaryDir>
#include <QTest>

class TestHostileCorpus : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QList<testsupport::HostileEntry> m_corpus;

private slots:
    void initTestCase()
    {
        allowLargePhotos();
        bool ok = false;
        m_corpus = testsupport::makeHostileCorpus(m_dir.path() + "/corpus", &ok);
        QVERIFY(ok);
        QVERIFY(m_corpus.size() >= 20);
    }

    void eachEntryLoadsAsItsKindSays_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < m_corpus.size(); ++i)
            QTest::newRow(qPrintable(m_corpus[i].name)) << i;
    }

    void eachEntryLoadsAsItsKindSays()
    {
        QFETCH(int, index);
        const testsupport::HostileEntry& entry = m_corpus.at(index);
        const QFileInfo info(entry.path);
        QVERIFY(info.exists());
        const QMap<QString, QByteArray> before = testsupport::snapshotTree(m_dir.path());
        const QImage image(entry.path);
        const QPixmap pixmap(entry.path);
        switch (entry.kind) {
        case testsupport::HostileKind::Unreadable:
            QVERIFY(info.isFile());
            QVERIFY(image.isNull());
            QVERIFY(pixmap.isNull());
            break;
        case testsupport::HostileKind::Image:
            QVERIFY(info.isFile());
            QVERIFY2(!image.isNull(), qPrintable(entry.path));
            QVERIFY(!pixmap.isNull());
            break;
        case testsupport::HostileKind::Folder:
            QVERIFY(info.isDir());
            QVERIFY(image.isNull());
            break;
        }
        // Reading never changes a file.
        QCOMPARE(testsupport::snapshotTree(m_dir.path()), before);
    }

    void oddFormatsLoadAsExpected()
    {
        const QString dir = m_dir.path() + "/corpus/";
        QCOMPARE(QImage(dir + "one.png").size(), QSize(1, 1));
        QCOMPARE(QImage(dir + "palette.png").format(), QImage::Format_Indexed8);
        QVERIFY(QImage(dir + "picture.xpm").colorCount() > 0 || QImage(dir + "picture.xpm").format() != QImage::Format_RGB32);
        QVERIFY(QImage(dir + "alpha.png").hasAlphaChannel());
        QCOMPARE(QImage(dir + "gray.jpg").format(), QImage::Format_Grayscale8);
        QImageReader pages(dir + "pages.tif");
        QCOMPARE(pages.imageCount(), 2);
        QImageReader cmyk(dir + "cmyk.jpg");
        QVERIFY(cmyk.canRead());
        QImageReader huge(dir + "huge.png");
        QCOMPARE(huge.size(), QSize(100000, 100000));
        QVERIFY(huge.read().isNull());
    }

    void snapshotsSeeEveryChange()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(10, 10), dir.path() + "/a.png"));
        const auto before = testsupport::snapshotTree(dir.path());
        QFile f(dir.path() + "/a.png");
        QVERIFY(f.open(QIODevice::ReadWrite));
        f.seek(20);
        f.write("x");
        f.close();
        QVERIFY(QDir().mkpath(dir.path() + "/new"));
        QCOMPARE(testsupport::treeDifferences(before, testsupport::snapshotTree(dir.path())), QStringList({"a.png", "new"}));
    }
};

PLENDRA_TEST_MAIN(TestHostileCorpus)
#include "tst_corpus.moc"
