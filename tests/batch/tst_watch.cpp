// SPDX-License-Identifier: MIT
// plendra-batch --watch on real files: a photo written slowly, one written
// under a temporary name and renamed, one deleted before it settles, a
// restart over composites already made, and a stop by signal.
#include "keying/pipeline.h"
#include "tests/batch/batchtooltest.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>

namespace {

const int kSettleMs = 400;

QByteArray jpegBytes(int w, int h, quint32 seed)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.jpg"));
    if (!testsupport::writeImage(testsupport::studioShot(w, h, QColor(40, 180, 60), seed), path))
        return QByteArray();
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// The watch running as a child; its output lines gathered as they come.
class Watch
{
public:
    Watch(const QStringList& args)
    {
        m_process.start(batchtest::toolPath(), args);
    }
    ~Watch()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    bool started() { return m_process.waitForStarted(30000); }
    QStringList lines()
    {
        m_out += m_process.readAllStandardOutput();
        m_err += m_process.readAllStandardError();
        return QString::fromUtf8(m_out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    QString errors()
    {
        lines();
        return QString::fromUtf8(m_err);
    }
    // Waits until some output line contains `text`.
    bool waitForLine(const QString& text, int ms = 20000)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms) {
            for (const QString& l : lines())
                if (l.contains(text))
                    return true;
            m_process.waitForReadyRead(100);
        }
        return false;
    }
    // Waits until standard error holds `text`.
    bool waitForError(const QString& text, int ms = 20000)
    {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms) {
            if (errors().contains(text))
                return true;
            m_process.waitForReadyRead(100);
        }
        return false;
    }
    int count(const QString& text)
    {
        int n = 0;
        for (const QString& l : lines())
            n += l.contains(text) ? 1 : 0;
        return n;
    }
    // Stops the watch with `sig`; its exit status, or -1 when it did not end.
    int stop(int sig)
    {
        ::kill(pid_t(m_process.processId()), sig);
        if (!m_process.waitForFinished(30000) || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        lines();
        return m_process.exitCode();
    }

private:
    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

} // namespace

class TestWatch : public batchtest::ToolTestCase
{
    Q_OBJECT

private:
    QStringList watchArgs(const QString& in, const QString& out) const
    {
        return {QStringLiteral("--watch"), QStringLiteral("--settle"), QString::number(kSettleMs), QStringLiteral("-b"),
                m_background, QStringLiteral("-k"), QStringLiteral("4,4"), QStringLiteral("-o"), out, in};
    }

    // What the window's pipeline writes for the complete photo file, read back.
    QImage expectedComposite(const QString& photo)
    {
        const QImage p = keying::photoAsKeyed(photo, 0);
        const QString saved = m_dir.filePath(QStringLiteral("expected-") + QFileInfo(photo).fileName());
        if (!keying::saveComposite(keying::composite(p, keying::fittedBackground(QImage(m_background), p.size()), QPoint(4, 4)), saved))
            return QImage();
        return QImage(saved);
    }

    QImage background() const override { return testsupport::backgroundPicture(120, 80, 3); }

private slots:
    // Written in pieces with pauses longer than the settle time: the JPEG's
    // missing end keeps it waiting; it is keyed once, whole, after the end.
    void slowWriterIsKeyedOnceWhenComplete()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        Watch watch(watchArgs(in, out));
        QVERIFY(watch.started());
        const QByteArray bytes = jpegBytes(320, 240, 11);
        QVERIFY(bytes.size() > 4000);
        const QString photo = in + QStringLiteral("/slow.jpg");
        QFile f(photo);
        QVERIFY(f.open(QIODevice::WriteOnly));
        const int piece = bytes.size() / 4;
        for (int i = 0; i < 3; ++i) {
            QVERIFY(f.write(bytes.mid(i * piece, piece)) == piece);
            f.flush();
            QThread::msleep(i == 1 ? kSettleMs * 2 : kSettleMs / 3);
            QVERIFY2(!QFileInfo::exists(out + QStringLiteral("/slow.jpg")), "keyed while still being written");
        }
        QVERIFY(watch.waitForError(QStringLiteral("slow.jpg: waiting: the JPEG is cut short"), 2000));
        QVERIFY(f.write(bytes.mid(3 * piece)) == bytes.size() - 3 * piece);
        f.close();
        QVERIFY(watch.waitForLine(QStringLiteral("keyed ") + photo));
        QCOMPARE(QImage(out + QStringLiteral("/slow.jpg")), expectedComposite(photo));
        QThread::msleep(kSettleMs * 2);
        QCOMPARE(watch.count(QStringLiteral("slow.jpg")), 1);
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // A camera tool's temporary names are never keyed; the final name is.
    void renamedPhotoIsKeyedUnderItsFinalName()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        Watch watch(watchArgs(in, out));
        QVERIFY(watch.started());
        const QByteArray bytes = jpegBytes(200, 150, 12);
        QVERIFY(writeAll(in + QStringLiteral("/.shot.jpg.tmp"), bytes));
        QVERIFY(writeAll(in + QStringLiteral("/shot2.jpg.part"), bytes));
        QThread::msleep(kSettleMs * 2);
        QCOMPARE(batchtest::entriesOf(out), QStringList());
        QVERIFY(QFile::rename(in + QStringLiteral("/.shot.jpg.tmp"), in + QStringLiteral("/shot.jpg")));
        QVERIFY(QFile::rename(in + QStringLiteral("/shot2.jpg.part"), in + QStringLiteral("/shot2.jpg")));
        QVERIFY(watch.waitForLine(QStringLiteral("shot.jpg ->")));
        QVERIFY(watch.waitForLine(QStringLiteral("shot2.jpg ->")));
        QCOMPARE(batchtest::entriesOf(out), QStringList({QStringLiteral("shot.jpg"), QStringLiteral("shot2.jpg")}));
        QCOMPARE(watch.stop(SIGTERM), 0);
    }

    // Deleted before it settled: never keyed, nothing reported, nothing left.
    void photoDeletedBeforeItSettlesIsForgotten()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        Watch watch(watchArgs(in, out));
        QVERIFY(watch.started());
        QVERIFY(writeAll(in + QStringLiteral("/brief.jpg"), jpegBytes(100, 80, 13)));
        QThread::msleep(kSettleMs / 4);
        QVERIFY(QFile::remove(in + QStringLiteral("/brief.jpg")));
        QVERIFY(writeAll(in + QStringLiteral("/kept.jpg"), jpegBytes(100, 80, 14)));
        QVERIFY(watch.waitForLine(QStringLiteral("kept.jpg ->")));
        QThread::msleep(kSettleMs);
        QCOMPARE(batchtest::entriesOf(out), QStringList{QStringLiteral("kept.jpg")});
        QVERIFY2(!watch.errors().contains(QStringLiteral("brief.jpg")), qPrintable(watch.errors()));
        QCOMPARE(watch.stop(SIGINT), 0);
    }

    // A restarted watch leaves photos whose composites are newer and keys
    // only what is new or changed since.
    void restartResumesWithoutDuplicates()
    {
        const QString in = folder(QStringLiteral("in"));
        const QString out = folder(QStringLiteral("out"));
        QVERIFY(writeAll(in + QStringLiteral("/one.jpg"), jpegBytes(120, 90, 15)));
        QVERIFY(writeAll(in + QStringLiteral("/two.jpg"), jpegBytes(120, 90, 16)));
        {
            Watch first(watchArgs(in, out));
            QVERIFY(first.started());
            QVERIFY(first.waitForLine(QStringLiteral("one.jpg ->")));
            QVERIFY(first.waitForLine(QStringLiteral("two.jpg ->")));
            QCOMPARE(first.stop(SIGTERM), 0);
        }
        const QDateTime madeAt = QFileInfo(out + QStringLiteral("/one.jpg")).lastModified();
        QThread::msleep(20);
        Watch second(watchArgs(in, out));
        QVERIFY(second.started());
        QVERIFY(second.waitForLine(QStringLiteral("skipped ") + in + QStringLiteral("/one.jpg")));
        QVERIFY(second.waitForLine(QStringLiteral("skipped ") + in + QStringLiteral("/two.jpg")));
        QVERIFY(writeAll(in + QStringLiteral("/three.jpg"), jpegBytes(120, 90, 17)));
        QVERIFY(second.waitForLine(QStringLiteral("three.jpg ->")));
        QCOMPARE(second.count(QStringLiteral("keyed ")), 1);
        QCOMPARE(QFileInfo(out + QStringLiteral("/one.jpg")).lastModified(), madeAt);
        QCOMPARE(second.stop(SIGINT), 0);
    }

    // The output folder may not be a watched one: its composites would come
    // back as new photos.
    void watchingTheOutputFolderIsRefused()
    {
        const QString in = folder(QStringLiteral("in"));
        const batchtest::ToolRun run = batchtest::runTool(watchArgs(in, in));
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.errorLines().value(0).contains(QStringLiteral("is watched")));
    }
};

PLENDRA_TEST_MAIN(TestWatch)
#include "tst_watch.moc"
