// SPDX-License-Identifier: MIT
// The parts of plendra-batch on their own: its command line, which photos it
// takes and in what order, the shares, output names and the guard for photos,
// and how it tells a photo cut short.
#include "batch/batchoptions.h"
#include "batch/outputnaming.h"
#include "batch/photocheck.h"
#include "batch/photolist.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

namespace {

batch::ParsedCommandLine parse(QStringList args)
{
    args.prepend(QStringLiteral("plendra-batch"));
    return batch::parseCommandLine(args);
}

bool touch(const QString& path, const QByteArray& bytes = "x")
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace

class TestParts : public QObject
{
    Q_OBJECT

private slots:
    void commandLineIsRead()
    {
        const auto p = parse({"-b", "bg.jpg", "-k", "12,34", "-o", "out", "-f", "JPEG", "-q", "80", "-j", "3",
                              "--shard", "2/5", "--json", "--settle", "250", "a.jpg", "folder"});
        QVERIFY(p.runs);
        QCOMPARE(p.options.backgrounds, QStringList({"bg.jpg"}));
        QVERIFY(!p.options.autoKey);
        QVERIFY(!p.options.printSize.isValid());
        QVERIFY(p.options.overlay.isEmpty());
        QCOMPARE(*p.options.keyPoint, QPoint(12, 34));
        QVERIFY(!p.options.keyColour);
        QCOMPARE(p.options.outputFolder, QStringLiteral("out"));
        QCOMPARE(p.options.format, QByteArray("jpg"));
        QCOMPARE(p.options.quality, 80);
        QCOMPARE(p.options.jobs, 3);
        QCOMPARE(p.options.shard, 2);
        QCOMPARE(p.options.shards, 5);
        QVERIFY(p.options.json);
        QCOMPARE(p.options.settleMs, 250);
        QCOMPARE(p.options.inputs, QStringList({"a.jpg", "folder"}));

        const auto c = parse({"--transparent", "-c", "#20c040", "--watch", "in"});
        QVERIFY(c.runs);
        QCOMPARE(*c.options.keyColour, qRgb(0x20, 0xC0, 0x40));
        QCOMPARE(c.options.format, QByteArray("png"));
        QVERIFY(c.options.watch);
        QCOMPARE(c.options.settleMs, 1000);
        QCOMPARE(c.options.quality, -1);
    }

    void boothOptionsAreRead()
    {
        const auto p = parse({"-b", "a/beach.jpg", "--background", "city.png", "-b", "stars.tif", "-c", "Auto",
                              "--overlay", "frame.png", "--size", "1800x1200", "in"});
        QVERIFY2(p.runs, qPrintable(p.standardError));
        QCOMPARE(p.options.backgrounds, QStringList({"a/beach.jpg", "city.png", "stars.tif"}));
        QVERIFY(p.options.autoKey);
        QVERIFY(!p.options.keyColour);
        QCOMPARE(p.options.overlay, QStringLiteral("frame.png"));
        QCOMPARE(p.options.printSize, QSize(1800, 1200));
        // A cut-out ignores the backgrounds, so their names may repeat.
        const auto c = parse({"--transparent", "-b", "x/a.jpg", "-b", "y/a.png", "-c", "auto", "--size", "600X400", "in"});
        QVERIFY2(c.runs, qPrintable(c.standardError));
        QCOMPARE(c.options.printSize, QSize(600, 400));
    }

    void usageErrorsEndWithTheHelpsFirstLine_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("no key") << QStringList{"-b", "bg.jpg", "a.jpg"};
        QTest::newRow("both keys") << QStringList{"-b", "bg.jpg", "-k", "1,2", "-c", "#00ff00", "a.jpg"};
        QTest::newRow("key point form") << QStringList{"-b", "bg.jpg", "-k", "1;2", "a.jpg"};
        QTest::newRow("negative key point") << QStringList{"-b", "bg.jpg", "-k", "-1,2", "a.jpg"};
        QTest::newRow("colour form") << QStringList{"-b", "bg.jpg", "-c", "green", "a.jpg"};
        QTest::newRow("no background") << QStringList{"-k", "1,2", "a.jpg"};
        QTest::newRow("format") << QStringList{"-b", "bg.jpg", "-k", "1,2", "-f", "gif", "a.jpg"};
        QTest::newRow("quality") << QStringList{"-b", "bg.jpg", "-k", "1,2", "-q", "101", "a.jpg"};
        QTest::newRow("jobs") << QStringList{"-b", "bg.jpg", "-k", "1,2", "-j", "0", "a.jpg"};
        QTest::newRow("shard 0") << QStringList{"-b", "bg.jpg", "-k", "1,2", "--shard", "0/2", "a.jpg"};
        QTest::newRow("shard past its count") << QStringList{"-b", "bg.jpg", "-k", "1,2", "--shard", "3/2", "a.jpg"};
        QTest::newRow("transparent as JPEG") << QStringList{"--transparent", "-k", "1,2", "-f", "jpg", "a.jpg"};
        QTest::newRow("unknown option") << QStringList{"-b", "bg.jpg", "-k", "1,2", "--frobnicate", "a.jpg"};
        QTest::newRow("no photo") << QStringList{"-b", "bg.jpg", "-k", "1,2"};
        QTest::newRow("auto and a key point") << QStringList{"-b", "bg.jpg", "-k", "1,2", "-c", "auto", "a.jpg"};
        QTest::newRow("colour neither hex nor auto") << QStringList{"-b", "bg.jpg", "-c", "autom", "a.jpg"};
        QTest::newRow("two backgrounds of one name") << QStringList{"-b", "x/bg.jpg", "-b", "y/bg.png", "-c", "auto", "a.jpg"};
        QTest::newRow("size without height") << QStringList{"-b", "bg.jpg", "-c", "auto", "--size", "1800", "a.jpg"};
        QTest::newRow("size zero") << QStringList{"-b", "bg.jpg", "-c", "auto", "--size", "0x1200", "a.jpg"};
        QTest::newRow("size too large") << QStringList{"-b", "bg.jpg", "-c", "auto", "--size", "20000x10000", "a.jpg"};
        QTest::newRow("size with a unit") << QStringList{"-b", "bg.jpg", "-c", "auto", "--size", "6x4in", "a.jpg"};
        QTest::newRow("overlay empty") << QStringList{"-b", "bg.jpg", "-c", "auto", "--overlay", "", "a.jpg"};
    }

    void usageErrorsEndWithTheHelpsFirstLine()
    {
        QFETCH(QStringList, args);
        const auto p = parse(args);
        QVERIFY(!p.runs);
        QCOMPARE(p.exitCode, 2);
        const QStringList lines = p.standardError.trimmed().split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].startsWith(QStringLiteral("plendra-batch: ")));
        QCOMPARE(lines[1], batch::usageLine());
    }

    void helpAndVersion()
    {
        const auto h = parse({"--help"});
        QVERIFY(!h.runs);
        QCOMPARE(h.exitCode, 0);
        QVERIFY(h.standardOutput.startsWith(batch::usageLine()));
        QVERIFY(h.standardOutput.contains(QStringLiteral("--shard K/N")));
        const auto v = parse({"--version"});
        QCOMPARE(v.exitCode, 0);
        QVERIFY(v.standardOutput.startsWith(QStringLiteral("plendra-batch 1.")));
    }

    void foldersListPhotosInAStableOrder()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        for (const char* name : {"b.JPG", "a.png", "C.tiff", "c.tif", "B.jpeg", "notes.txt", "x.bmp", "y.XPM", ".hidden.jpg", "raw.cr2"})
            QVERIFY(touch(dir.filePath(QString::fromLatin1(name))));
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("sub.jpg"))));
        QVERIFY(touch(dir.filePath(QStringLiteral("sub.jpg/inner.jpg"))));

        QStringList names;
        for (const QString& p : batch::photosOfFolder(dir.path()))
            names << QFileInfo(p).fileName();
        QCOMPARE(names, QStringList({"a.png", "B.jpeg", "b.JPG", "c.tif", "C.tiff", "x.bmp", "y.XPM"}));

        const batch::GatheredPhotos g = batch::gatherPhotos(
            {dir.filePath(QStringLiteral("notes.txt")), dir.path(), dir.filePath(QStringLiteral("gone.jpg")),
             dir.filePath(QStringLiteral("sub.jpg/inner.jpg"))});
        QCOMPARE(g.folders, QStringList({dir.path()}));
        QCOMPARE(g.photos.size(), 8);
        QCOMPARE(g.photos.last(), dir.filePath(QStringLiteral("sub.jpg/inner.jpg")));
        QCOMPARE(g.problems.size(), 2);
        QVERIFY(g.problems[0].contains(QStringLiteral("not a photo type")));
        QVERIFY(g.problems[1].contains(QStringLiteral("no such photo or folder")));
    }

    void sharesSplitEvenlyAndCoverEveryPhoto()
    {
        QStringList photos;
        for (int i = 0; i < 11; ++i)
            photos << QStringLiteral("/p/%1.jpg").arg(i, 2, 10, QLatin1Char('0'));
        QSet<QString> seen;
        for (int k = 1; k <= 4; ++k) {
            const QStringList share = batch::shareOf(photos, k, 4);
            QVERIFY(share.size() == 2 || share.size() == 3);
            for (const QString& p : share) {
                QVERIFY(!seen.contains(p));
                seen.insert(p);
            }
        }
        QCOMPARE(seen.size(), photos.size());

        // By name: each photo in exactly one share, the same from any folder.
        for (const QString& p : photos) {
            int owners = 0;
            for (int k = 1; k <= 3; ++k)
                owners += batch::inShareByName(p, k, 3) ? 1 : 0;
            QCOMPARE(owners, 1);
            for (int k = 1; k <= 3; ++k)
                QCOMPARE(batch::inShareByName(p, k, 3), batch::inShareByName(QStringLiteral("/elsewhere/") + QFileInfo(p).fileName(), k, 3));
        }
        QVERIFY(batch::inShareByName(QStringLiteral("a.jpg"), 1, 1));
    }

    void outputNamesFollowTheWindow_data()
    {
        QTest::addColumn<QString>("photo");
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<QString>("output");
        QTest::newRow("own suffix") << "/in/a b.JPG" << QByteArray() << "/out/a b.JPG";
        QTest::newRow("same format") << "/in/a.jpeg" << QByteArray("jpg") << "/out/a.jpeg";
        QTest::newRow("same format, other case") << "/in/a.JPG" << QByteArray("jpg") << "/out/a.JPG";
        QTest::newRow("tif for tiff") << "/in/a.tiff" << QByteArray("tif") << "/out/a.tiff";
        QTest::newRow("to png") << "/in/a.b.jpg" << QByteArray("png") << "/out/a.b.png";
        QTest::newRow("to bmp") << "/in/x.png" << QByteArray("bmp") << "/out/x.bmp";
        QTest::newRow("to tif") << "/in/x.png" << QByteArray("tif") << "/out/x.tif";
        QTest::newRow("to jpg") << "/in/x.png" << QByteArray("jpg") << "/out/x.jpg";
    }

    void outputNamesFollowTheWindow()
    {
        QFETCH(QString, photo);
        QFETCH(QByteArray, format);
        QFETCH(QString, output);
        QCOMPARE(batch::outputPathFor(QStringLiteral("/out"), photo, format), output);
    }

    // One background keeps the window's name; several name each composite
    // PHOTO_BACKGROUND.EXT with the suffix the single name would have.
    void outputNamesWithSeveralBackgrounds()
    {
        const QString out = QStringLiteral("/out");
        QCOMPARE(batch::outputPathsFor(out, QStringLiteral("/in/guest.JPG"), {}, {QStringLiteral("beach")}),
                 QStringList({"/out/guest.JPG"}));
        QCOMPARE(batch::outputPathsFor(out, QStringLiteral("/in/guest.JPG"), {}, {}), QStringList({"/out/guest.JPG"}));
        QCOMPARE(batch::outputPathsFor(out, QStringLiteral("/in/a.b.JPG"), {}, {QStringLiteral("beach"), QStringLiteral("city.night")}),
                 QStringList({"/out/a.b_beach.JPG", "/out/a.b_city.night.JPG"}));
        QCOMPARE(batch::outputPathsFor(out, QStringLiteral("/in/guest.png"), "jpg", {QStringLiteral("beach"), QStringLiteral("city")}),
                 QStringList({"/out/guest_beach.jpg", "/out/guest_city.jpg"}));
        QCOMPARE(batch::outputPathsFor(out, QStringLiteral("/in/guest"), {}, {QStringLiteral("beach"), QStringLiteral("city")}),
                 QStringList({"/out/guest_beach", "/out/guest_city"}));
    }

    void guardSeesThePhotoThroughFoldersAndLinks()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString photo = dir.filePath(QStringLiteral("in/a.jpg"));
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("in"))));
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("out"))));
        QVERIFY(touch(photo));
        QVERIFY(batch::wouldReplacePhoto(dir.filePath(QStringLiteral("in/../in/a.jpg")), photo));
        QVERIFY(!batch::wouldReplacePhoto(dir.filePath(QStringLiteral("out/a.jpg")), photo));
        QVERIFY(QFile::link(photo, dir.filePath(QStringLiteral("out/a.jpg"))));
        QVERIFY(batch::wouldReplacePhoto(dir.filePath(QStringLiteral("out/a.jpg")), photo));
        QVERIFY(QFile::link(dir.filePath(QStringLiteral("in")), dir.filePath(QStringLiteral("alias"))));
        QVERIFY(batch::sameFolder(dir.filePath(QStringLiteral("alias")), dir.filePath(QStringLiteral("in"))));
        QVERIFY(!batch::sameFolder(dir.filePath(QStringLiteral("out")), dir.filePath(QStringLiteral("in"))));
    }

    void photosCutShortAreTold()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QImage shot = testsupport::studioShot(200, 150, QColor(40, 180, 60), 3);
        const QString jpeg = dir.filePath(QStringLiteral("a.jpg"));
        const QString png = dir.filePath(QStringLiteral("a.png"));
        QVERIFY(testsupport::writeImage(shot, jpeg));
        QVERIFY(testsupport::writeImage(shot, png));
        QVERIFY(batch::cutShortReason(jpeg).isEmpty());
        QVERIFY(batch::cutShortReason(png).isEmpty());
        // Padding after the end marker, as some cameras write, is whole.
        QVERIFY(touch(dir.filePath(QStringLiteral("padded.jpg")), testsupport::fileBytes(jpeg) + QByteArray(16, '\0')));
        QVERIFY(batch::cutShortReason(dir.filePath(QStringLiteral("padded.jpg"))).isEmpty());

        const QByteArray whole = testsupport::fileBytes(jpeg);
        QVERIFY(touch(dir.filePath(QStringLiteral("half.jpg")), whole.left(whole.size() / 2)));
        QVERIFY(batch::cutShortReason(dir.filePath(QStringLiteral("half.jpg"))).contains(QStringLiteral("cut short")));
        // Qt decodes it without complaint: only the end marker tells.
        QVERIFY(!QImage(dir.filePath(QStringLiteral("half.jpg"))).isNull());
        const QByteArray wholePng = testsupport::fileBytes(png);
        QVERIFY(touch(dir.filePath(QStringLiteral("half.png")), wholePng.left(wholePng.size() - 5)));
        QVERIFY(batch::cutShortReason(dir.filePath(QStringLiteral("half.png"))).contains(QStringLiteral("cut short")));

        QVERIFY(touch(dir.filePath(QStringLiteral("empty.jpg")), QByteArray()));
        QCOMPARE(batch::unreadableReason(dir.filePath(QStringLiteral("empty.jpg"))), QStringLiteral("the file is empty"));
        QCOMPARE(batch::unreadableReason(dir.filePath(QStringLiteral("gone.jpg"))), QStringLiteral("no such file"));
        QVERIFY(touch(dir.filePath(QStringLiteral("notes.jpg")), "not a picture\n"));
        QVERIFY(batch::unreadableReason(dir.filePath(QStringLiteral("notes.jpg"))).contains(QStringLiteral("not an image")));
    }
};

PLENDRA_TEST_MAIN(TestParts)
#include "tst_parts.moc"
