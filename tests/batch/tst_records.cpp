// SPDX-License-Identifier: MIT
// The files plendra-batch trusts and writes on their own: whether a BMP or
// TIFF is whole, the watch's journal (torn lines, rewriting, other shares'
// journals), and the whole-or-nothing write with its short temporary names.
#include "batch/folderscan.h"
#include "batch/journal.h"
#include "batch/photocheck.h"
#include "batch/photolist.h"
#include "keying/atomicfile.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

batch::JournalEntry entryFor(qint64 size, char hash)
{
    batch::JournalEntry e;
    e.identity.device = 7;
    e.identity.inode = quint64(size) + 100;
    e.identity.size = size;
    e.identity.modifiedNs = 1000 + size;
    e.identity.changedNs = 2000 + size;
    e.contentHash = QByteArray(20, hash);
    e.output = QStringLiteral("/out/x %1.jpg").arg(size);
    return e;
}

bool everything(const QString&) { return true; }

} // namespace

class TestRecords : public QObject
{
    Q_OBJECT

private slots:
    // Every cut of a BMP or TIFF (one strip or many) is told; whole ones
    // and their padding are not.
    void bmpAndTiffCutShortAreTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("format");
        QTest::newRow("BMP 24-bit") << QStringLiteral("a.bmp") << QByteArray("bmp");
        QTest::newRow("TIFF") << QStringLiteral("a.tif") << QByteArray("tiff");
    }
    void bmpAndTiffCutShortAreTold()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, format);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        QVERIFY(testsupport::writeImage(testsupport::studioShot(301, 203, QColor(40, 180, 60), 4), path));
        const QByteArray whole = testsupport::fileBytes(path);
        QCOMPARE(batch::cutShortReason(path), QString());
        QCOMPARE(batch::cutShortReason(whole), QString());
        for (const double share : {0.1, 0.5, 0.9, 0.999}) {
            const QByteArray cut = whole.left(int(whole.size() * share));
            QVERIFY2(batch::cutShortReason(cut).contains(QStringLiteral("cut short")), qPrintable(QString::number(share)));
        }
        QVERIFY(writeBytes(path, whole.left(whole.size() - 1)));
        QVERIFY(batch::cutShortReason(path).contains(QStringLiteral("cut short")));
    }

    // A polled folder's names are judged as bytes, as the listing's are.
    void rawNamesAreJudgedAsTheListingJudgesThem()
    {
        for (const char* name : {"a.jpg", "B.JPEG", "c.Tif", "d.tiff", "e.bmp", "f.PNG", "g.xpm", "h.jpg.part", "i.txt",
                                 "j", "k.", ".hidden.jpg", "l.m.png", "caf\xe9.jpg", "n.jpgx"}) {
            const QByteArray raw(name);
            QCOMPARE(batch::looksLikePhotoName(raw), !raw.startsWith('.') && batch::isPhotoName(QString::fromUtf8(raw)));
        }
        QVERIFY(!batch::qtCanAddress("caf\xe9.jpg"));
        QVERIFY(batch::qtCanAddress("Gr\xc3\xb6\xc3\x9f" "e.jpg"));
        QCOMPARE(batch::printableName("caf\xe9 \xc3\xa9t\xc3\xa9.jpg"), QStringLiteral("caf\\xe9 \u00e9t\u00e9.jpg"));
    }

    void journalKeepsWhatWasRecordedAndIgnoresATornLine()
    {
        QTemporaryDir dir;
        {
            batch::Journal j(dir.path(), batch::Journal::fileNameFor(1, 1), everything);
            QString why;
            QVERIFY2(j.open(&why), qPrintable(why));
            QVERIFY(j.record(QStringLiteral("/in/a.jpg"), entryFor(10, 'a'), &why));
            QVERIFY(j.record(QStringLiteral("/in/b.jpg"), entryFor(20, 'b'), &why));
        }
        const QString file = dir.filePath(QStringLiteral(".plendra-journal"));
        QFile torn(file);
        QVERIFY(torn.open(QIODevice::Append) && torn.write("0badc0de J1 7 130 30 1030 2030 6363") > 0);
        torn.close();
        batch::Journal again(dir.path(), batch::Journal::fileNameFor(1, 1), everything);
        QString why;
        QVERIFY(again.open(&why));
        QCOMPARE(again.size(), 2);
        QVERIFY(again.entry(QStringLiteral("/in/a.jpg"))->identity == entryFor(10, 'a').identity);
        QCOMPARE(again.entry(QStringLiteral("/in/b.jpg"))->contentHash, QByteArray(20, 'b'));
        QCOMPARE(again.entry(QStringLiteral("/in/b.jpg"))->output, QStringLiteral("/out/x 20.jpg"));
        QVERIFY(!again.entry(QStringLiteral("/in/c.jpg")));
        // Rewritten whole at the start: the torn line is gone, later lines land.
        QVERIFY(testsupport::fileBytes(file).endsWith('\n'));
        QVERIFY(again.record(QStringLiteral("/in/c.jpg"), entryFor(30, 'c'), &why));
        batch::Journal third(dir.path(), batch::Journal::fileNameFor(1, 1), everything);
        QVERIFY(third.open(&why));
        QCOMPARE(third.size(), 3);
    }

    // Over a thousand records of one photo: the file is rewritten, not grown.
    void journalIsRewrittenWhenMostLinesAreSuperseded()
    {
        QTemporaryDir dir;
        batch::Journal j(dir.path(), batch::Journal::fileNameFor(1, 1), everything);
        QString why;
        QVERIFY(j.open(&why));
        for (int i = 0; i < 1200; ++i)
            QVERIFY(j.record(QStringLiteral("/in/same.jpg"), entryFor(i + 1, 's'), &why));
        const QByteArray bytes = testsupport::fileBytes(dir.filePath(QStringLiteral(".plendra-journal")));
        QVERIFY2(bytes.count('\n') < 1100, qPrintable(QString::number(bytes.count('\n'))));
        batch::Journal again(dir.path(), batch::Journal::fileNameFor(1, 1), everything);
        QVERIFY(again.open(&why));
        QCOMPARE(again.entry(QStringLiteral("/in/same.jpg"))->identity.size, 1200);
    }

    // Each share writes its own journal and reads the others'.
    void sharesReadEachOthersJournals()
    {
        QTemporaryDir dir;
        QString why;
        {
            batch::Journal first(dir.path(), batch::Journal::fileNameFor(1, 2), everything);
            QVERIFY(first.open(&why));
            QVERIFY(first.record(QStringLiteral("/in/a.jpg"), entryFor(10, 'a'), &why));
        }
        batch::Journal second(dir.path(), batch::Journal::fileNameFor(2, 2), everything);
        QVERIFY(second.open(&why));
        QVERIFY(second.entry(QStringLiteral("/in/a.jpg")));
        QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral(".plendra-journal-1-of-2"))));
        QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral(".plendra-journal-2-of-2"))));
    }

    // Named temporary files, as on network shares: a 250-byte name is
    // written again, permissions kept, links written through, and a failed
    // write leaves nothing.
    void wholeWritesKeepNamesPermissionsAndLinks_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("unnamed first") << int(keying::TemporaryFile::UnnamedFirst);
        QTest::newRow("named") << int(keying::TemporaryFile::NamedOnly);
    }
    void wholeWritesKeepNamesPermissionsAndLinks()
    {
        QFETCH(int, kind);
        const auto how = keying::TemporaryFile(kind);
        QTemporaryDir dir;
        const QString longest = dir.filePath(QString(251, QLatin1Char('n')) + QStringLiteral(".jpg"));
        QVERIFY(keying::writeFileWhole(longest, "first", nullptr, how));
        keying::WriteFailure failure;
        QVERIFY2(keying::writeFileWhole(longest, "second", &failure, how), qPrintable(failure.why));
        QCOMPARE(testsupport::fileBytes(longest), QByteArray("second"));

        const QString locked = dir.filePath(QStringLiteral("locked.png"));
        QVERIFY(writeBytes(locked, "old"));
        QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
        QVERIFY(keying::writeFileWhole(locked, "new", nullptr, how));
        QCOMPARE(QFile::permissions(locked), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadUser | QFileDevice::WriteUser);

        QVERIFY(QFile::link(locked, dir.filePath(QStringLiteral("link.png"))));
        QVERIFY(keying::writeFileWhole(dir.filePath(QStringLiteral("link.png")), "through", nullptr, how));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("link.png"))).isSymLink());
        QCOMPARE(testsupport::fileBytes(locked), QByteArray("through"));

        QVERIFY(!keying::writeFileWhole(dir.filePath(QStringLiteral("gone/x.png")), "x", &failure, how));
        QVERIFY(!failure.why.isEmpty());
        QStringList names = QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        QCOMPARE(names.size(), 3); // the long name, locked.png, link.png: no temporary file
        QVERIFY(!keying::isTemporaryName(QFileInfo(longest).fileName()));
        QVERIFY(keying::isTemporaryName(keying::temporaryName()));
        QVERIFY(keying::temporaryName().size() <= 40);
    }
};

PLENDRA_TEST_MAIN(TestRecords)
#include "tst_records.moc"
