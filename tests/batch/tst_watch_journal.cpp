// SPDX-License-Identifier: MIT
// What plendra-batch --watch keys, decided by its journal and the photos
// themselves, and what it does when the output side fails: a restart keys
// only what is new or changed, whatever its settings; a shot replaced under
// its name with an older file time is keyed again; a full output disk and a
// removed output folder are tried again until the composites are written.
#include "tests/batch/batchtooltest.h"
#include "tests/batch/watchtest.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QThread>

#include <csignal>

using namespace batchtest;

namespace {

// Replaces the photo's content in place and sets its file time a day back,
// as `cp -p` of an earlier shot or a second camera's import does.
bool replaceWithOlderTime(const QString& photo, const QByteArray& bytes)
{
    QFile f(photo);
    if (!f.open(QIODevice::ReadWrite | QIODevice::Truncate) || f.write(bytes) != bytes.size() || !f.flush())
        return false;
    return f.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
}

// Fills the disk at `folder` with one file, leaving no room for a composite.
bool fillDisk(const QString& folder)
{
    QFile filler(folder + QStringLiteral("/filler"));
    if (!filler.open(QIODevice::WriteOnly))
        return false;
    const QByteArray block(4096, 'x');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
    return true;
}

} // namespace

class TestWatchJournal : public QObject
{
    Q_OBJECT

private:
    WatchSetup m_setup;

private slots:
    void initTestCase() { QVERIFY(m_setup.isValid()); }

    // A restarted watch, even with another background, leaves the photos it
    // keyed (by its journal), keys one replaced while it was stopped and one
    // that is new, and writes nothing else.
    void restartKeysOnlyWhatIsNewOrChanged()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        QVERIFY(writeAll(in + QStringLiteral("/one.jpg"), jpegBytes(120, 90, 15)));
        QVERIFY(writeAll(in + QStringLiteral("/two.jpg"), jpegBytes(120, 90, 16)));
        {
            RunningTool first(m_setup.watchArgs(in, out));
            QVERIFY(first.started());
            QVERIFY(first.waitForLine(QStringLiteral("one.jpg ->")));
            QVERIFY(first.waitForLine(QStringLiteral("two.jpg ->")));
            QCOMPARE(first.stop(SIGTERM), 0);
        }
        const QByteArray one = testsupport::fileBytes(out + QStringLiteral("/one.jpg"));
        QVERIFY(replaceWithOlderTime(in + QStringLiteral("/two.jpg"), jpegBytes(120, 90, 18)));
        const QString otherBackground = m_setup.folder(QStringLiteral("bg")) + QStringLiteral("/beach.png");
        QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(120, 80, 9), otherBackground));
        QStringList args = m_setup.watchArgs(in, out);
        args[args.indexOf(QStringLiteral("-b")) + 1] = otherBackground;
        RunningTool second(args);
        QVERIFY(second.started());
        QVERIFY(second.waitForLine(QStringLiteral("skipped ") + in + QStringLiteral("/one.jpg: already keyed")));
        QVERIFY(second.waitForLine(QStringLiteral("keyed ") + in + QStringLiteral("/two.jpg")));
        QVERIFY(writeAll(in + QStringLiteral("/three.jpg"), jpegBytes(120, 90, 17)));
        QVERIFY(second.waitForLine(QStringLiteral("three.jpg ->")));
        QCOMPARE(second.count(QStringLiteral(" -> ")), 2);
        QCOMPARE(testsupport::fileBytes(out + QStringLiteral("/one.jpg")), one);
        QCOMPARE(QImage(out + QStringLiteral("/two.jpg")),
                 m_setup.expectedComposite(in + QStringLiteral("/two.jpg"), otherBackground));
        QCOMPARE(second.stop(SIGINT), 0);
    }

    // A new shot under a name already keyed, its file time older than the
    // composite: keyed again, so the print shows the new guest.
    void replacedShotWithAnOlderTimeIsKeyedAgain_data()
    {
        QTest::addColumn<QStringList>("mode");
        QTest::newRow("events") << QStringList();
        QTest::newRow("polling") << QStringList{QStringLiteral("--poll")};
    }
    void replacedShotWithAnOlderTimeIsKeyedAgain()
    {
        QFETCH(QStringList, mode);
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        const QString photo = in + QStringLiteral("/IMG_0001.jpg");
        QVERIFY(writeAll(photo, jpegBytes(160, 120, 31)));
        RunningTool watch(m_setup.watchArgs(in, out, mode));
        QVERIFY(watch.started());
        QVERIFY(watch.waitForLine(QStringLiteral("keyed ") + photo));
        QVERIFY(replaceWithOlderTime(photo, jpegBytes(160, 120, 32)));
        QVERIFY(QFileInfo(photo).lastModified() < QFileInfo(out + QStringLiteral("/IMG_0001.jpg")).lastModified());
        for (int waited = 0; watch.count(QStringLiteral("keyed ") + photo) < 2 && waited < 200; ++waited)
            watch.waitForLine(QStringLiteral("no such line"), 100);
        QCOMPARE(watch.count(QStringLiteral("keyed ") + photo), 2);
        QCOMPARE(QImage(out + QStringLiteral("/IMG_0001.jpg")), m_setup.expectedComposite(photo));
        QVERIFY2(!watch.lines().join(QLatin1Char('\n')).contains(QStringLiteral("skipped")), qPrintable(watch.lines().join('\n')));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // The output disk fills: each try is told, on stderr and in JSON; once
    // there is room again the waiting shot is written without a restart.
    void fullOutputDiskIsTriedAgainUntilThereIsRoom()
    {
        testsupport::SmallDisk disk(400);
        if (!disk.mounted())
            QSKIP(qPrintable(disk.why() + QStringLiteral(" (CI runs as root)")));
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = disk.path();
        RunningTool watch(m_setup.watchArgs(in, out, {QStringLiteral("--json")}));
        QVERIFY(watch.started());
        QThread::msleep(300);
        QVERIFY(fillDisk(out));
        const QString photo = in + QStringLiteral("/noise.png");
        QVERIFY(testsupport::writeImage(testsupport::randomImage(300, 200, QImage::Format_RGB32, 41), photo));
        QVERIFY2(watch.waitForError(QStringLiteral("trying again in 1 s (try 1 failed)")), qPrintable(watch.errors()));
        QVERIFY(watch.waitForError(QStringLiteral("trying again in 2 s (try 2 failed)")));
        QVERIFY(QFile::remove(out + QStringLiteral("/filler")));
        QVERIFY2(watch.waitForError(QStringLiteral("noise.png: written on try 3: the output works again"), 30000),
                 qPrintable(watch.errors()));
        QVERIFY(!QImage(out + QStringLiteral("/noise.png")).isNull());
        QStringList attempts;
        for (const QString& line : watch.lines()) {
            const QJsonObject o = QJsonDocument::fromJson(line.toUtf8()).object();
            if (o.value(QStringLiteral("name")) == QStringLiteral("noise.png"))
                attempts << QStringLiteral("%1:%2").arg(o.value(QStringLiteral("attempt")).toInt())
                                .arg(o.value(QStringLiteral("error")).isNull() ? QStringLiteral("written") : QStringLiteral("failed"));
        }
        QCOMPARE(attempts, QStringList({QStringLiteral("1:failed"), QStringLiteral("2:failed"), QStringLiteral("3:written")}));
        QCOMPARE(compositesIn(out), QStringList{QStringLiteral("noise.png")});
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // The output folder is removed while the watch runs (a pulled stick, a
    // tidy-up): it is made again and the next shot written into it.
    void removedOutputFolderIsMadeAgain()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out")) + QStringLiteral("/booth");
        RunningTool watch(m_setup.watchArgs(in, out));
        QVERIFY(watch.started());
        QVERIFY(writeAll(in + QStringLiteral("/first.jpg"), jpegBytes(100, 80, 51)));
        QVERIFY(watch.waitForLine(QStringLiteral("first.jpg ->")));
        QVERIFY(QDir(out).removeRecursively());
        QVERIFY(writeAll(in + QStringLiteral("/second.jpg"), jpegBytes(100, 80, 52)));
        QVERIFY2(watch.waitForError(QStringLiteral("the output folder ") + out + QStringLiteral(" was gone: made it again")),
                 qPrintable(watch.errors()));
        QVERIFY2(watch.waitForLine(QStringLiteral("second.jpg ->")), qPrintable(watch.errors()));
        QVERIFY(!QImage(out + QStringLiteral("/second.jpg")).isNull());
        QCOMPARE(watch.stop(SIGINT), 0);
    }
};

PLENDRA_TEST_MAIN(TestWatchJournal)
#include "tst_watch_journal.moc"
