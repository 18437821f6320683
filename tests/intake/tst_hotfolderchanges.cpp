// SPDX-License-Identifier: MIT
// The watched folder's change handling on its own: one log line per change,
// and the newest photo of the hot folder announced unless it was the last one.

#include "intake/hotfolder.h"
#include "tests/support/testsupport.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool touch(const QString& path, int minute)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // Written out before the time is set, so that closing does not touch it again.
    if (file.write("x") != 1 || !file.flush())
        return false;
    return file.setFileTime(QDateTime(QDate(2022, 3, 1), QTime(10, 0)).addSecs(60 * minute),
                            QFileDevice::FileModificationTime);
}

} // namespace

class TestHotFolderChanges : public QObject
{
    Q_OBJECT

private slots:
    void announcesTheNewestPhoto_data();
    void announcesTheNewestPhoto();
    void logsEveryChangeOnItsOwnLine();
    void announcesOnceForEachChange();
};

void TestHotFolderChanges::announcesTheNewestPhoto_data()
{
    // Files of the hot folder with their minutes; the last file taken.
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QList<int>>("minutes");
    QTest::addColumn<QString>("lastHotFile");
    QTest::addColumn<QString>("announced"); // a name in the hot folder, or empty for none

    QTest::newRow("newest of several") << QStringList{"a.jpg", "b.png", "c.tif"} << QList<int>{1, 3, 2} << QString()
                                       << QStringLiteral("b.png");
    QTest::newRow("newest was the last taken") << QStringList{"a.jpg", "b.png"} << QList<int>{1, 3}
                                               << QStringLiteral("b.png") << QString();
    QTest::newRow("an older one was the last taken") << QStringList{"a.jpg", "b.png"} << QList<int>{1, 3}
                                                     << QStringLiteral("a.jpg") << QStringLiteral("b.png");
    QTest::newRow("the last taken compared by name, not path")
        << QStringList{"a.jpg"} << QList<int>{1} << QStringLiteral("/elsewhere/a.jpg") << QStringLiteral("a.jpg");
    QTest::newRow("no photo, only other files") << QStringList{"notes.txt"} << QList<int>{1} << QString() << QString();
    QTest::newRow("empty folder") << QStringList{} << QList<int>{} << QString() << QString();
    QTest::newRow("suffix in capitals") << QStringList{"SHOT.JPG", "old.png"} << QList<int>{5, 1} << QString()
                                        << QStringLiteral("SHOT.JPG");
}

void TestHotFolderChanges::announcesTheNewestPhoto()
{
    QFETCH(QStringList, files);
    QFETCH(QList<int>, minutes);
    QFETCH(QString, lastHotFile);
    QFETCH(QString, announced);
    QTemporaryDir hot;
    QTemporaryDir elsewhere;
    QVERIFY(hot.isValid() && elsewhere.isValid());
    for (int i = 0; i < files.size(); ++i)
        QVERIFY(touch(hot.path() + QLatin1Char('/') + files.at(i), minutes.at(i)));

    QBuffer log;
    QVERIFY(log.open(QIODevice::WriteOnly));
    HotFolderChanges changes(&log, nullptr);
    QSignalSpy spy(&changes, &HotFolderChanges::newestPhoto);
    // The change may come from any watched path: the hot folder is read all the same.
    changes.folderChanged(elsewhere.path(), hot.path(), lastHotFile);

    if (announced.isEmpty()) {
        QCOMPARE(spy.count(), 0);
    } else {
        QCOMPARE(spy.count(), 1); // at once, on this thread
        QCOMPARE(spy.at(0).at(0).toString(), hot.path() + QDir::separator() + announced);
    }
}

void TestHotFolderChanges::logsEveryChangeOnItsOwnLine()
{
    QTemporaryDir hot;
    QVERIFY(hot.isValid());
    QBuffer log;
    QVERIFY(log.open(QIODevice::WriteOnly));
    HotFolderChanges changes(&log, nullptr);
    changes.folderChanged(QStringLiteral("/some/folder"), hot.path(), QString());
    changes.folderChanged(QStringLiteral("/some/file.jpg"), hot.path(), QString());
    QCOMPARE(log.data(), QByteArray("Directory Changed.../some/folder\nDirectory Changed.../some/file.jpg\n"));
}

void TestHotFolderChanges::announcesOnceForEachChange()
{
    QTemporaryDir hot;
    QVERIFY(hot.isValid());
    QVERIFY(touch(hot.path() + QStringLiteral("/a.jpg"), 1));
    QBuffer log;
    QVERIFY(log.open(QIODevice::WriteOnly));
    HotFolderChanges changes(&log, nullptr);
    QSignalSpy spy(&changes, &HotFolderChanges::newestPhoto);
    changes.folderChanged(hot.path(), hot.path(), QString());
    changes.folderChanged(hot.path(), hot.path(), QString());
    QCOMPARE(spy.count(), 2);
    QVERIFY(touch(hot.path() + QStringLiteral("/b.jpg"), 2));
    changes.folderChanged(hot.path(), hot.path(), QString());
    QCOMPARE(spy.count(), 3);
    QCOMPARE(spy.at(2).at(0).toString(), hot.path() + QDir::separator() + QStringLiteral("b.jpg"));
}

PLENDRA_TEST_MAIN(TestHotFolderChanges)
#include "tst_hotfolderchanges.moc"
