// SPDX-License-Identifier: MIT
// plendra-batch --watch picking photos up on real files, with the kernel's
// change events and with polling (the fallback for network shares, forced
// with --poll): a photo closed is keyed without a settle wait, a photo
// written slowly is keyed once when whole, temporary names are never keyed,
// an idle watch does not wake up, names that are not UTF-8 are named once,
// and two shares never key the same photo.
#include "keying/pipeline.h"
#include "keying/softkey.h"
#include "tests/batch/batchtooltest.h"
#include "tests/batch/watchtest.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QThread>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace batchtest;

namespace {

const QStringList kEvents;
const QStringList kPolling{QStringLiteral("--poll")};

void addModes()
{
    QTest::addColumn<QStringList>("mode");
    QTest::newRow("events") << kEvents;
    QTest::newRow("polling") << kPolling;
}

} // namespace

class TestWatch : public QObject
{
    Q_OBJECT

private:
    WatchSetup m_setup;

private slots:
    void initTestCase() { QVERIFY(m_setup.isValid()); }

    // Closed and whole: keyed at once, though the settle time is a minute.
    void closedPhotoIsKeyedWithoutWaitingToSettle()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        QStringList args = m_setup.watchArgs(in, out);
        args[args.indexOf(QStringLiteral("--settle")) + 1] = QStringLiteral("60000");
        RunningTool watch(args);
        QVERIFY(watch.started());
        QThread::msleep(300); // the watch is listening
        const QString photo = in + QStringLiteral("/guest.jpg");
        QVERIFY(writeAll(photo, jpegBytes(320, 240, 21)));
        QVERIFY2(watch.waitForLine(QStringLiteral("keyed ") + photo, 30000), qPrintable(watch.errors()));
        QCOMPARE(QImage(out + QStringLiteral("/guest.jpg")), m_setup.expectedComposite(photo));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // A watch with --soft keys each new photo softly: the composite is the
    // soft keyer's, not the window's.
    void softWatchKeysNewPhotosSoftly()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool watch(m_setup.watchArgs(in, out, {QStringLiteral("--soft"), QStringLiteral("-f"), QStringLiteral("png")}));
        QVERIFY(watch.started());
        QThread::msleep(300); // the watch is listening
        const QString photo = in + QStringLiteral("/soft.jpg");
        QVERIFY(writeAll(photo, jpegBytes(320, 240, 23)));
        QVERIFY2(watch.waitForLine(QStringLiteral("keyed ") + photo, 30000), qPrintable(watch.errors()));
        const QImage p = keying::photoAsKeyed(photo, 0);
        const QImage expected = keying::softComposite(keying::softCutOut(p, keying::keyColourAt(p, QPoint(4, 4))),
                                                      keying::fittedBackground(QImage(m_setup.background()), p.size()));
        QCOMPARE(QImage(out + QStringLiteral("/soft.png")).convertToFormat(QImage::Format_RGB32), expected);
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // Written in pieces, held open, with pauses longer than the settle time:
    // the JPEG's missing end keeps it waiting; it is keyed once, whole.
    void slowWriterIsKeyedOnceWhenComplete_data() { addModes(); }
    void slowWriterIsKeyedOnceWhenComplete()
    {
        QFETCH(QStringList, mode);
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool watch(m_setup.watchArgs(in, out, mode));
        QVERIFY(watch.started());
        const QByteArray bytes = jpegBytes(320, 240, 11);
        QVERIFY(bytes.size() > 4000);
        const QString photo = in + QStringLiteral("/slow.jpg");
        QFile f(photo);
        QVERIFY(f.open(QIODevice::WriteOnly));
        const int piece = bytes.size() / 4;
        const int settle = WatchSetup::kSettleMs;
        for (int i = 0; i < 3; ++i) {
            QVERIFY(f.write(bytes.mid(i * piece, piece)) == piece);
            f.flush();
            QThread::msleep(i == 1 ? settle * 2 : settle / 3);
            QVERIFY2(!QFileInfo::exists(out + QStringLiteral("/slow.jpg")), "keyed while still being written");
        }
        QVERIFY(watch.waitForError(QStringLiteral("slow.jpg: waiting: the JPEG is cut short"), 2000 + settle));
        QVERIFY(f.write(bytes.mid(3 * piece)) == bytes.size() - 3 * piece);
        f.close();
        QVERIFY(watch.waitForLine(QStringLiteral("keyed ") + photo));
        QCOMPARE(QImage(out + QStringLiteral("/slow.jpg")), m_setup.expectedComposite(photo));
        QThread::msleep(settle * 2);
        QCOMPARE(watch.count(QStringLiteral("slow.jpg")), 1);
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // A camera tool's temporary names are never keyed; the final name is.
    void renamedPhotoIsKeyedUnderItsFinalName_data() { addModes(); }
    void renamedPhotoIsKeyedUnderItsFinalName()
    {
        QFETCH(QStringList, mode);
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool watch(m_setup.watchArgs(in, out, mode));
        QVERIFY(watch.started());
        const QByteArray bytes = jpegBytes(200, 150, 12);
        QVERIFY(writeAll(in + QStringLiteral("/.shot.jpg.tmp"), bytes));
        QVERIFY(writeAll(in + QStringLiteral("/shot2.jpg.part"), bytes));
        QThread::msleep(WatchSetup::kSettleMs * 2);
        QCOMPARE(compositesIn(out), QStringList());
        QVERIFY(QFile::rename(in + QStringLiteral("/.shot.jpg.tmp"), in + QStringLiteral("/shot.jpg")));
        QVERIFY(QFile::rename(in + QStringLiteral("/shot2.jpg.part"), in + QStringLiteral("/shot2.jpg")));
        QVERIFY(watch.waitForLine(QStringLiteral("shot.jpg ->")));
        QVERIFY(watch.waitForLine(QStringLiteral("shot2.jpg ->")));
        QCOMPARE(compositesIn(out), QStringList({QStringLiteral("shot.jpg"), QStringLiteral("shot2.jpg")}));
        QCOMPARE(watch.stop(SIGTERM), 0);
    }

    // Polled: deleted before it settled, never keyed, nothing reported.
    // (With events a photo closed whole is keyed at once, before any delete.)
    void polledPhotoDeletedBeforeItSettlesIsForgotten()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool watch(m_setup.watchArgs(in, out, kPolling));
        QVERIFY(watch.started());
        // Past the start, which takes the photos already there at once.
        QVERIFY(writeAll(in + QStringLiteral("/first.jpg"), jpegBytes(100, 80, 12)));
        QVERIFY(watch.waitForLine(QStringLiteral("first.jpg ->")));
        QVERIFY(writeAll(in + QStringLiteral("/brief.jpg"), jpegBytes(100, 80, 13)));
        QThread::msleep(WatchSetup::kSettleMs / 4);
        QVERIFY(QFile::remove(in + QStringLiteral("/brief.jpg")));
        QVERIFY(writeAll(in + QStringLiteral("/kept.jpg"), jpegBytes(100, 80, 14)));
        QVERIFY(watch.waitForLine(QStringLiteral("kept.jpg ->")));
        QThread::msleep(WatchSetup::kSettleMs);
        QCOMPARE(compositesIn(out), QStringList({QStringLiteral("first.jpg"), QStringLiteral("kept.jpg")}));
        QVERIFY2(!watch.errors().contains(QStringLiteral("brief.jpg")), qPrintable(watch.errors()));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // 150 photos keyed, nothing arriving: the watch's main thread
    // sleeps until the kernel has something to say (no timer, no listing).
    void idleWatchDoesNotWakeUp()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        const QByteArray bytes = jpegBytes(48, 32, 15);
        for (int i = 0; i < 150; ++i)
            QVERIFY(writeAll(in + QStringLiteral("/p%1.jpg").arg(i, 3, 10, QLatin1Char('0')), bytes));
        RunningTool watch(m_setup.watchArgs(in, out) << QStringLiteral("-j") << QStringLiteral("1"));
        QVERIFY(watch.started());
        for (int waited = 0; watch.count(QStringLiteral(" -> ")) < 150 && waited < 600; ++waited)
            watch.waitForLine(QStringLiteral("no such line"), 100);
        QCOMPARE(watch.count(QStringLiteral(" -> ")), 150);
        QThread::msleep(500); // the last journal lines
        const qint64 before = watch.mainThreadWakeUps();
        if (before < 0)
            QSKIP("the system does not tell a thread's context switches");
        QThread::msleep(2500);
        const qint64 wakeUps = watch.mainThreadWakeUps() - before;
        QVERIFY2(wakeUps <= 2, qPrintable(QStringLiteral("%1 wake-ups in 2.5 s of nothing").arg(wakeUps)));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // A name Qt cannot open is named once with the reason; the rest is keyed.
    void nameThatIsNotUtf8IsToldOnce()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool watch(m_setup.watchArgs(in, out));
        QVERIFY(watch.started());
        QThread::msleep(300);
        const QByteArray raw = QFile::encodeName(in) + "/caf\xe9-shot.jpg"; // Latin-1, as an old camera tool names it
        const QByteArray bytes = jpegBytes(100, 80, 16);
        for (int i = 0; i < 2; ++i) {
            const int fd = ::open(raw.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            QVERIFY(fd >= 0);
            QCOMPARE(::write(fd, bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
            ::close(fd);
        }
        QVERIFY(writeAll(in + QStringLiteral("/plain.jpg"), bytes));
        QVERIFY(watch.waitForLine(QStringLiteral("plain.jpg ->")));
        QVERIFY(watch.waitForError(QStringLiteral("caf\\xe9-shot.jpg: not keyed: its name is not valid UTF-8")));
        QThread::msleep(WatchSetup::kSettleMs);
        QVERIFY2(watch.errors().count(QStringLiteral("caf\\xe9-shot.jpg")) == 1, qPrintable(watch.errors()));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // Two machines' shares of one hot folder: each photo keyed exactly once.
    void twoSharesNeverKeyTheSamePhoto()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const QString out = m_setup.folder(QStringLiteral("out"));
        RunningTool first(m_setup.watchArgs(in, out, {QStringLiteral("--shard"), QStringLiteral("1/2")}));
        RunningTool second(m_setup.watchArgs(in, out, {QStringLiteral("--shard"), QStringLiteral("2/2")}));
        QVERIFY(first.started() && second.started());
        QThread::msleep(300);
        const QByteArray bytes = jpegBytes(64, 48, 17);
        for (int i = 0; i < 10; ++i)
            QVERIFY(writeAll(in + QStringLiteral("/s%1.jpg").arg(i), bytes));
        const auto keyed = [&] { return first.count(QStringLiteral(" -> ")) + second.count(QStringLiteral(" -> ")); };
        for (int waited = 0; keyed() < 10 && waited < 300; ++waited) {
            first.waitForLine(QStringLiteral("no such line"), 50);
            second.waitForLine(QStringLiteral("no such line"), 50);
        }
        QThread::msleep(WatchSetup::kSettleMs);
        QCOMPARE(keyed(), 10);
        QVERIFY(first.count(QStringLiteral(" -> ")) > 0 && second.count(QStringLiteral(" -> ")) > 0);
        QCOMPARE(compositesIn(out).size(), 10);
        QCOMPARE(first.stop(SIGINT), 0);
        QCOMPARE(second.stop(SIGINT), 0);
    }

    // The output folder may not be a watched one: its composites would come
    // back as new photos.
    void watchingTheOutputFolderIsRefused()
    {
        const QString in = m_setup.folder(QStringLiteral("in"));
        const batchtest::ToolRun run = batchtest::runTool(m_setup.watchArgs(in, in));
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.errorLines().value(0).contains(QStringLiteral("is watched")));
    }
};

PLENDRA_TEST_MAIN(TestWatch)
#include "tst_watch.moc"
