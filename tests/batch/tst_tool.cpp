// SPDX-License-Identifier: MIT
// plendra-batch run as scripts run it: bad input of every kind named photo by
// photo while the rest is still written, formats and names, the cut-out, JSON,
// shares, jobs, and write failures (read-only folder, full disk).
#include "keying/atomicfile.h"
#include "keying/cutout.h"
#include "keying/pipeline.h"
#include "keying/softkey.h"
#include "tests/batch/batchtooltest.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using batchtest::entriesOf;
using batchtest::runTool;
using batchtest::ToolRun;

namespace {

const QString kKey = QStringLiteral("5,5");

// True when every file of `folder` is a complete image (no temporary or
// partial file left behind).
bool onlyWholeImages(const QString& folder)
{
    for (const QString& name : entriesOf(folder)) {
        if (QImage(folder + QLatin1Char('/') + name).isNull())
            return false;
    }
    return true;
}

QString errorLineFor(const ToolRun& run, const QString& photoName)
{
    for (const QString& line : run.errorLines()) {
        if (line.contains(photoName))
            return line;
    }
    return QString();
}

} // namespace

class TestTool : public batchtest::ToolTestCase
{
    Q_OBJECT

private:
    QStringList keyArgs(const QString& output) const
    {
        return {QStringLiteral("-b"), m_background, QStringLiteral("-k"), kKey, QStringLiteral("-o"), output};
    }

    static bool shot(const QString& path, int w = 160, int h = 120, quint32 seed = 1)
    {
        return testsupport::writeImage(testsupport::studioShot(w, h, QColor(40, 180, 60), seed), path);
    }

    QImage background() const override { return testsupport::backgroundPicture(90, 200, 7); }

private slots:
    // Every hostile file is named with its reason; every readable photo is
    // still keyed; nothing read is changed; nothing but whole images written.
    // The soft keyer meets the same files with the same outcomes.
    void hostileFolderIsKeyedAroundItsBadPhotos_data()
    {
        QTest::addColumn<QStringList>("keyer");
        QTest::newRow("hard key") << QStringList();
        QTest::newRow("soft key") << QStringList{QStringLiteral("--soft")};
    }
    void hostileFolderIsKeyedAroundItsBadPhotos()
    {
        QFETCH(QStringList, keyer);
        const QString in = folder(QStringLiteral("hostile"));
        const QString out = folder(QStringLiteral("out"));
        bool made = false;
        const QList<testsupport::HostileEntry> corpus = testsupport::makeHostileCorpus(in, &made);
        QVERIFY(made);
        QVERIFY(shot(in + QStringLiteral("/good.jpg")));
        const auto before = testsupport::snapshotTree(in);

        const ToolRun run = runTool(keyArgs(out) + keyer << in);
        QVERIFY(!run.crashed);
        QVERIFY(!run.sanitizerReported());
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(testsupport::treeDifferences(before, testsupport::snapshotTree(in)), QStringList());
        QVERIFY(onlyWholeImages(out));
        QVERIFY(QFileInfo::exists(out + QStringLiteral("/good.jpg")));

        for (const testsupport::HostileEntry& e : corpus) {
            const QString name = QFileInfo(e.path).fileName();
            const QString error = errorLineFor(run, name);
            const bool written = QFileInfo::exists(out + QLatin1Char('/') + name);
            if (e.kind == testsupport::HostileKind::Folder) {
                QVERIFY2(error.isEmpty() && !written, qPrintable(e.name)); // folders inside are not entered
            } else if (e.kind == testsupport::HostileKind::Unreadable || name.startsWith(QStringLiteral("truncated"))
                       || e.name.startsWith(QStringLiteral("truncated"))) {
                QVERIFY2(!error.isEmpty() && !written, qPrintable(e.name));
            } else if (e.name == QStringLiteral("1 x 1 photo")) {
                QVERIFY2(error.contains(QStringLiteral("outside the 1 x 1 photo")) && !written, qPrintable(error));
            } else {
                QVERIFY2(error.isEmpty() && written, qPrintable(e.name + QStringLiteral(": ") + error));
                QCOMPARE(QImage(out + QLatin1Char('/') + name).size(), QImage(e.path).size());
            }
        }
        QVERIFY(errorLineFor(run, QStringLiteral("huge.png")).contains(QStringLiteral("too large")));
        QVERIFY(errorLineFor(run, QStringLiteral("empty.jpg")).contains(QStringLiteral("empty")));
        QVERIFY(errorLineFor(run, QStringLiteral("photo.png")).contains(QStringLiteral("not an image")));
    }

    void keyPointOutsideAPhotoFailsThatPhotoOnly()
    {
        const QString in = folder(QStringLiteral("sizes"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(shot(in + QStringLiteral("/big.jpg"), 200, 150));
        QVERIFY(shot(in + QStringLiteral("/small.jpg"), 40, 30));
        const ToolRun run = runTool({QStringLiteral("-b"), m_background, QStringLiteral("-k"), QStringLiteral("100,100"),
                                     QStringLiteral("-o"), out, in});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(errorLineFor(run, QStringLiteral("small.jpg")).contains(QStringLiteral("outside the 40 x 30 photo")));
        QCOMPARE(entriesOf(out), QStringList{QStringLiteral("big.jpg")});
    }

    void unreadablePhotoIsNamedAndTheRestWritten()
    {
        const QString in = folder(QStringLiteral("locked"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        QVERIFY(shot(in + QStringLiteral("/b.jpg")));
        QVERIFY(QFile::setPermissions(in + QStringLiteral("/a.jpg"), QFileDevice::Permissions()));
        const ToolRun run = runTool(keyArgs(out) << in, true);
        QFile::setPermissions(in + QStringLiteral("/a.jpg"), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(errorLineFor(run, QStringLiteral("a.jpg")).contains(QStringLiteral("Permission denied")));
        QCOMPARE(entriesOf(out), QStringList{QStringLiteral("b.jpg")});
    }

    void backgroundMissingOrUnreadableIsAUsageError()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        const QString locked = m_dir.filePath(QStringLiteral("locked-background.png"));
        QVERIFY(QFile::copy(m_background, locked));
        QVERIFY(QFile::setPermissions(locked, QFileDevice::Permissions()));
        const QString text = m_dir.filePath(QStringLiteral("text-background.png"));
        QFile f(text);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write("no picture\n") > 0);
        f.close();
        for (const QString& bg : {m_dir.filePath(QStringLiteral("missing.png")), locked, text}) {
            const ToolRun run = runTool({QStringLiteral("-b"), bg, QStringLiteral("-k"), kKey, QStringLiteral("-o"), out, in}, true);
            QCOMPARE(run.exitCode, 2);
            QCOMPARE(run.errorLines().size(), 2);
            QVERIFY2(run.errorLines()[0].contains(QStringLiteral("cannot read the background")), run.standardError.constData());
            QVERIFY(run.errorLines()[1].startsWith(QStringLiteral("Usage: plendra-batch")));
        }
        QCOMPARE(entriesOf(out), QStringList());
    }

    void outputFolderThatCannotBeMadeIsAUsageError()
    {
        const QString in = folder(QStringLiteral("in"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        const QString file = m_dir.filePath(QStringLiteral("plain-file"));
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write("x") == 1);
        f.close();
        const ToolRun run = runTool(keyArgs(file + QStringLiteral("/out")) << in);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.errorLines().value(0).contains(QStringLiteral("cannot create the output folder")));
    }

    void readOnlyOutputFolderFailsEachPhotoCleanly()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("readonly"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        QVERIFY(shot(in + QStringLiteral("/b.png")));
        QVERIFY(QFile::setPermissions(out, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        const ToolRun run = runTool(keyArgs(out) << in, true);
        QFile::setPermissions(out, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.sanitizerReported());
        for (const char* name : {"a.jpg", "b.png"})
            QVERIFY2(errorLineFor(run, QLatin1String(name)).contains(QStringLiteral("cannot write")), run.standardError.constData());
        QCOMPARE(entriesOf(out), QStringList());
    }

    // A small file system that fills up: the photo that does not fit is named
    // with the reason, nothing partial is left, and the others are written.
    void fullDiskLeavesOnlyWholeComposites()
    {
        const QString in = folder(QStringLiteral("in"));
        testsupport::SmallDisk disk(300);
        if (!disk.mounted())
            QSKIP(qPrintable(disk.why() + QStringLiteral(" (CI runs as root); the read-only folder case covers write failures")));
        const QString out = disk.path();
        // Noise does not compress: each PNG composite takes about 260 kB.
        for (int i = 0; i < 3; ++i) {
            QImage noise = testsupport::randomImage(300, 290, QImage::Format_RGB32, quint32(40 + i));
            QVERIFY(testsupport::writeImage(noise, in + QStringLiteral("/n%1.png").arg(i)));
        }
        const ToolRun run = runTool(keyArgs(out) << QStringLiteral("-j") << QStringLiteral("1") << in);
        const QStringList written = entriesOf(out);
        const bool whole = onlyWholeImages(out);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.sanitizerReported());
        QVERIFY2(run.standardError.contains("no space left on the output disk"), run.standardError.constData());
        QCOMPARE(written.size(), 1);
        QVERIFY(whole);
    }

    void photoDeletedWhileQueuedIsNamed()
    {
        const QString in = folder(QStringLiteral("queue"));
        const QString out = folder(QStringLiteral("out"));
        for (int i = 0; i < 24; ++i)
            QVERIFY(shot(in + QStringLiteral("/p%1.png").arg(i, 2, 10, QLatin1Char('0')), 700, 500, quint32(i)));
        const QString last = in + QStringLiteral("/p23.png");
        QProcess tool;
        tool.start(batchtest::toolPath(), keyArgs(out) << QStringLiteral("-j") << QStringLiteral("1") << in);
        QVERIFY(tool.waitForStarted());
        QVERIFY(tool.waitForReadyRead(60000)); // the first photo is done
        QVERIFY(QFile::remove(last));
        QVERIFY(tool.waitForFinished(120000));
        const QByteArray err = tool.readAllStandardError();
        QCOMPARE(tool.exitCode(), 1);
        QVERIFY2(err.contains("p23.png: the photo is gone"), err.constData());
        QCOMPARE(entriesOf(out).size(), 23);
    }

    void toolNeverWritesOverAPhoto()
    {
        const QString in = folder(QStringLiteral("same"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        const auto before = testsupport::snapshotTree(in);
        const ToolRun run = runTool(keyArgs(in) << in);
        QCOMPARE(run.exitCode, 1);
        QVERIFY(errorLineFor(run, QStringLiteral("a.jpg")).contains(QStringLiteral("is the photo itself")));
        QCOMPARE(testsupport::treeDifferences(before, testsupport::snapshotTree(in)), QStringList());
        // Another format makes another name beside it, which is allowed.
        const ToolRun png = runTool(keyArgs(in) << QStringLiteral("-f") << QStringLiteral("png") << in + QStringLiteral("/a.jpg"));
        QCOMPARE(png.exitCode, 0);
        QVERIFY(!QImage(in + QStringLiteral("/a.png")).isNull());
    }

    void formatsQualityAndJobs()
    {
        const QString in = folder(QStringLiteral("in"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg"), 200, 150, 3));
        QVERIFY(shot(in + QStringLiteral("/b.png"), 200, 150, 4));
        for (const char* fmt : {"png", "tif", "bmp", "jpg"}) {
            const QString out = folder(QStringLiteral("fmt"));
            const ToolRun run = runTool(keyArgs(out) << QStringLiteral("-f") << QLatin1String(fmt) << in);
            QCOMPARE(run.exitCode, 0);
            for (const QString& name : entriesOf(out))
                QCOMPARE(QFileInfo(name).suffix(), QString::fromLatin1(fmt) == "jpg" && name.startsWith('a') ? QStringLiteral("jpg") : QString::fromLatin1(fmt));
            QCOMPARE(entriesOf(out).size(), 2);
            QVERIFY(onlyWholeImages(out));
        }
        const QString one = folder(QStringLiteral("j1"));
        const QString three = folder(QStringLiteral("j3"));
        const QString low = folder(QStringLiteral("q20"));
        QCOMPARE(runTool(keyArgs(one) << QStringLiteral("-j") << QStringLiteral("1") << in).exitCode, 0);
        QCOMPARE(runTool(keyArgs(three) << QStringLiteral("-j") << QStringLiteral("3") << in).exitCode, 0);
        QCOMPARE(runTool(keyArgs(low) << QStringLiteral("-q") << QStringLiteral("20") << in).exitCode, 0);
        for (const char* name : {"/a.jpg", "/b.png"}) {
            QFile a(one + QLatin1String(name)), b(three + QLatin1String(name));
            QVERIFY(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
            QCOMPARE(a.readAll(), b.readAll());
        }
        QVERIFY(QFileInfo(low + QStringLiteral("/a.jpg")).size() < QFileInfo(one + QStringLiteral("/a.jpg")).size());
    }

    void transparentCutOutAndJson()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("cut"));
        const QString photo = in + QStringLiteral("/shot.jpg");
        QVERIFY(shot(photo, 200, 150, 5));
        const ToolRun run = runTool({QStringLiteral("--transparent"), QStringLiteral("-k"), kKey, QStringLiteral("-o"), out,
                                     QStringLiteral("--json"), photo});
        QCOMPARE(run.exitCode, 0);
        const QImage cut(out + QStringLiteral("/shot.png"));
        QVERIFY(cut.hasAlphaChannel());
        const QImage source(photo);
        QCOMPARE(cut.convertToFormat(QImage::Format_ARGB32), keying::cutOut(source, source.pixel(5, 5)));
        QVERIFY(qAlpha(cut.pixel(5, 5)) == 0 && qAlpha(cut.pixel(100, 100)) == 255);

        QCOMPARE(run.outputLines().size(), 1);
        const QJsonObject o = QJsonDocument::fromJson(run.outputLines()[0].toUtf8()).object();
        QCOMPARE(o.value(QStringLiteral("name")).toString(), QStringLiteral("shot.jpg"));
        QCOMPARE(o.value(QStringLiteral("output")).toString(), out + QStringLiteral("/shot.png"));
        QCOMPARE(o.value(QStringLiteral("keyColour")).toString(),
                 QStringLiteral("#%1").arg(source.pixel(5, 5) & 0xFFFFFF, 6, 16, QLatin1Char('0')).toUpper());
        QCOMPARE(o.value(QStringLiteral("replacedShare")).toDouble(), keying::backdropShare(source, source.pixel(5, 5)));
        QVERIFY(o.value(QStringLiteral("ms")).isDouble());
        QVERIFY(o.value(QStringLiteral("error")).isNull());
    }

    // --soft: the composite is the soft keyer's over the fitted background,
    // and with --transparent the PNG holds its straight (not premultiplied)
    // cut-out, soft alpha and recovered colour, byte for byte.
    void softCompositeAndStraightCutOut()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("soft"));
        const QString cutFolder = folder(QStringLiteral("softcut"));
        const QString photo = in + QStringLiteral("/shot.jpg");
        QVERIFY(shot(photo, 200, 150, 9));
        const QImage source = keying::photoAsKeyed(photo, 0);
        const QRgb key = source.pixel(5, 5);

        const ToolRun run = runTool(keyArgs(out) << QStringLiteral("--soft") << QStringLiteral("-f") << QStringLiteral("png") << photo);
        QCOMPARE(run.exitCode, 0);
        const QImage expected = keying::softComposite(keying::softCutOut(source, key),
                                                      keying::fittedBackground(QImage(m_background), source.size()));
        const QImage written(out + QStringLiteral("/shot.png"));
        QCOMPARE(written.convertToFormat(QImage::Format_RGB32), expected);
        // Not the hard key's composite.
        const QImage hard = keying::compositeWithKey(source, keying::fittedBackground(QImage(m_background), source.size()), key);
        QVERIFY(written.convertToFormat(QImage::Format_RGB32) != hard.convertToFormat(QImage::Format_RGB32));

        const ToolRun cutRun = runTool({QStringLiteral("--transparent"), QStringLiteral("--soft"), QStringLiteral("-k"), kKey,
                                        QStringLiteral("-o"), cutFolder, photo});
        QCOMPARE(cutRun.exitCode, 0);
        const QImage cut(cutFolder + QStringLiteral("/shot.png"));
        QVERIFY(cut.hasAlphaChannel());
        // Qt reads a PNG with alpha as straight ARGB32: what was written.
        QCOMPARE(cut.format(), QImage::Format_ARGB32);
        const QImage softCut = keying::softCutOut(source, key);
        QCOMPARE(cut, softCut);
        // Soft pixels whose colour is their own, not scaled down by alpha.
        int soft = 0;
        for (int y = 0; y < cut.height(); ++y) {
            for (int x = 0; x < cut.width(); ++x) {
                const QRgb c = cut.pixel(x, y);
                if (qAlpha(c) > 0 && qAlpha(c) < 255)
                    ++soft;
            }
        }
        QVERIFY(soft > 0);
        QCOMPARE(qAlpha(cut.pixel(5, 5)), 0);
        QCOMPARE(qAlpha(cut.pixel(100, 110)), 255);
        QCOMPARE(cut.pixel(100, 110) & 0xFFFFFFu, source.pixel(100, 110) & 0xFFFFFFu);
    }

    // A photo that is all backdrop comes out as the background, soft or not.
    void softKeyOfBackdropOnlyIsTheBackground()
    {
        const QString in = folder(QStringLiteral("plain"));
        const QString out = folder(QStringLiteral("plainout"));
        QImage plain(120, 90, QImage::Format_RGB32);
        plain.fill(qRgb(40, 180, 60));
        QVERIFY(plain.save(in + QStringLiteral("/plain.png")));
        const ToolRun run = runTool(keyArgs(out) << QStringLiteral("--soft") << in);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(QImage(out + QStringLiteral("/plain.png")).convertToFormat(QImage::Format_RGB32),
                 keying::fittedBackground(QImage(m_background), plain.size()).convertToFormat(QImage::Format_RGB32));
    }

    void sharesSplitAFolderAcrossRuns()
    {
        const QString in = folder(QStringLiteral("shoot"));
        for (int i = 0; i < 7; ++i)
            QVERIFY(shot(in + QStringLiteral("/s%1.jpg").arg(i), 48, 36, quint32(i)));
        QSet<QString> all;
        int total = 0;
        for (int k = 1; k <= 3; ++k) {
            const QString out = folder(QStringLiteral("share"));
            QCOMPARE(runTool(keyArgs(out) << QStringLiteral("--shard") << QStringLiteral("%1/3").arg(k) << in).exitCode, 0);
            const QStringList names = entriesOf(out);
            QCOMPARE(names.size(), k == 1 ? 3 : 2);
            total += names.size();
            for (const QString& n : names)
                all.insert(n);
        }
        QCOMPARE(total, 7);
        QCOMPARE(all.size(), 7);
    }

    // A FIFO named like a photo, named on the command line or found in a
    // folder, would hold an open for ever: each is named with the reason,
    // and the run ends with the other photos written.
    void fifoNamedLikeAPhotoIsRefusedWithoutWaiting()
    {
        const QString in = folder(QStringLiteral("fifo"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(shot(in + QStringLiteral("/good.jpg")));
        QCOMPARE(::mkfifo(QFile::encodeName(in + QStringLiteral("/x.jpg")).constData(), 0644), 0);
        const QString alone = m_dir.filePath(QStringLiteral("alone.png"));
        QCOMPARE(::mkfifo(QFile::encodeName(alone).constData(), 0644), 0);
        const ToolRun run = runTool(keyArgs(out) << alone << in, false, 30000);
        QVERIFY2(!run.crashed, "the run hung and was killed");
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(errorLineFor(run, QStringLiteral("x.jpg")).contains(QStringLiteral("not a regular file (a FIFO)")),
                 run.standardError.constData());
        QVERIFY(errorLineFor(run, QStringLiteral("alone.png")).contains(QStringLiteral("not a regular file (a FIFO)")));
        QCOMPARE(entriesOf(out), QStringList{QStringLiteral("good.jpg")});
    }

    // Cut short, a BMP or TIFF decodes with black rows where its end is
    // missing: refused like a JPEG or PNG cut short, nothing written.
    void bmpAndTiffCutShortAreRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("BMP") << QStringLiteral("half.bmp");
        QTest::newRow("TIFF") << QStringLiteral("half.tif");
    }
    void bmpAndTiffCutShortAreRefused()
    {
        QFETCH(QString, name);
        const QString in = folder(QStringLiteral("cut"));
        const QString out = folder(QStringLiteral("out"));
        const QString whole = in + QStringLiteral("/whole.") + QFileInfo(name).suffix();
        QVERIFY(shot(whole, 200, 150, 8));
        const QByteArray bytes = testsupport::fileBytes(whole);
        QFile half(in + QLatin1Char('/') + name);
        QVERIFY(half.open(QIODevice::WriteOnly) && half.write(bytes.left(bytes.size() / 2)) == bytes.size() / 2);
        half.close();
        const ToolRun run = runTool(keyArgs(out) << in);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(errorLineFor(run, name).contains(QStringLiteral("is cut short")), run.standardError.constData());
        QCOMPARE(entriesOf(out), QStringList{QFileInfo(whole).fileName()});
    }

    // A name of 250 bytes (the file system allows 255) keyed again into the
    // same folder: the temporary name beside it stays short.
    void longestNamesAreKeyedAgain()
    {
        const QString in = folder(QStringLiteral("long"));
        const QString out = folder(QStringLiteral("out"));
        const QString name = QString(246, QLatin1Char('L')) + QStringLiteral(".jpg");
        QVERIFY(shot(in + QLatin1Char('/') + name));
        for (int round = 0; round < 2; ++round) {
            const ToolRun run = runTool(keyArgs(out) << in);
            QVERIFY2(run.exitCode == 0, run.standardError.constData());
            QCOMPARE(entriesOf(out), QStringList{name});
            QVERIFY(!QImage(out + QLatin1Char('/') + name).isNull());
        }
    }

    // A run killed mid-write on a file system without unnamed temporary
    // files leaves its temporary file; the next run removes those of its own
    // pattern whose writer is gone, and nothing else.
    void temporaryFilesOfAStoppedRunAreRemovedAtStart()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(shot(in + QStringLiteral("/a.jpg")));
        QProcess ended;
        ended.start(QStringLiteral("true"), QStringList());
        QVERIFY(ended.waitForFinished());
        const QString ours = keying::temporaryName(); // this machine, this (live) process
        const QString dead = QString(ours).replace(QStringLiteral("-%1-").arg(::getpid()),
                                                   QStringLiteral("-%1-").arg(ended.processId()));
        const QString foreignOld = QStringLiteral(".plendra-00000000-77-abcdef.tmp");
        const QString foreignNew = QStringLiteral(".plendra-00000000-78-abcdef.tmp");
        const QStringList kept{ours, foreignNew, QStringLiteral("notes.tmp"), QStringLiteral("shot.jpg.Ab12Cd"),
                               QStringLiteral(".plendra-unrelated.tmp")};
        for (const QString& name : kept + QStringList{dead, foreignOld}) {
            QFile f(out + QLatin1Char('/') + name);
            QVERIFY(f.open(QIODevice::WriteOnly) && f.write("partial") == 7);
        }
        QFile old(out + QLatin1Char('/') + foreignOld);
        QVERIFY(old.open(QIODevice::ReadWrite));
        QVERIFY(old.setFileTime(QDateTime::currentDateTime().addSecs(-7200), QFileDevice::FileModificationTime));
        old.close();
        const ToolRun run = runTool(keyArgs(out) << in);
        QCOMPARE(run.exitCode, 0);
        QStringList expected = kept + QStringList{QStringLiteral("a.jpg")};
        expected.sort();
        QStringList left = entriesOf(out);
        left.sort();
        QCOMPARE(left, expected);
        QVERIFY(run.standardError.contains("removed 2 temporary files"));
    }
};

PLENDRA_TEST_MAIN(TestTool)
#include "tst_tool.moc"
