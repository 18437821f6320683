// SPDX-License-Identifier: MIT
// The folder listings on their own: the "Bkg" library (its endings, its order
// without regard to letter case) and the watched folder (oldest first, the
// newest photo, the endings it takes, what it leaves out).

#include "intake/folderscan.h"
#include "tests/support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Writes an empty file (the listings read names and times, not contents).
bool touch(const QString& path, const QDateTime& modified = QDateTime())
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // Written out before the time is set, so that closing does not touch it again.
    if (file.write("x") != 1 || !file.flush())
        return false;
    return !modified.isValid() || file.setFileTime(modified, QFileDevice::FileModificationTime);
}

QDateTime minute(int n)
{
    return QDateTime(QDate(2022, 3, 1), QTime(10, 0)).addSecs(60 * n);
}

QStringList fileNames(const QStringList& paths)
{
    QStringList names;
    for (const QString& path : paths)
        names << path.section(QLatin1Char('/'), -1);
    return names;
}

} // namespace

class TestFolderScan : public QObject
{
    Q_OBJECT

private slots:
    void backgroundLibraryListsPngAndJpegByNameIgnoringCase_data();
    void backgroundLibraryListsPngAndJpegByNameIgnoringCase();
    void backgroundLibraryGivesFullPaths();
    void backgroundLibraryOfAMissingFolderIsEmpty();

    void watchedFolderListsPhotosOldestFirst_data();
    void watchedFolderListsPhotosOldestFirst();
    void watchedFolderPathsAreTheFolderAsGivenAndTheName();
    void newestOfAMissingOrEmptyFolderIsNone_data();
    void newestOfAMissingOrEmptyFolderIsNone();
};

void TestFolderScan::backgroundLibraryListsPngAndJpegByNameIgnoringCase_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("listed");

    QTest::newRow("name order without regard to case")
        << QStringList{"b.png", "A.jpg", "c.PNG", "D.JPG"} << QStringList{"A.jpg", "b.png", "c.PNG", "D.JPG"};
    QTest::newRow("endings in mixed case") << QStringList{"m.Png", "n.jPg"} << QStringList{"m.Png", "n.jPg"};
    QTest::newRow("jpeg, bmp, tif and text not taken")
        << QStringList{"x.jpeg", "y.bmp", "z.tif", "w.png", "notes.txt", "v.xpm"} << QStringList{"w.png"};
    QTest::newRow("each file once, however many filters match") << QStringList{"one.JPG"} << QStringList{"one.JPG"};
    QTest::newRow("digits and blanks sort as text")
        << QStringList{"10 sky.jpg", "2 sea.jpg", "1 sand.png"} << QStringList{"1 sand.png", "10 sky.jpg", "2 sea.jpg"};
    QTest::newRow("no picture at all") << QStringList{"readme.md"} << QStringList{};
}

void TestFolderScan::backgroundLibraryListsPngAndJpegByNameIgnoringCase()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, listed);
    QTemporaryDir app;
    QVERIFY(app.isValid());
    QVERIFY(QDir(app.path()).mkdir(QStringLiteral("Bkg")));
    for (const QString& name : files)
        QVERIFY(touch(app.path() + QStringLiteral("/Bkg/") + name));
    QCOMPARE(fileNames(backgroundLibraryPaths(app.path())), listed);
}

void TestFolderScan::backgroundLibraryGivesFullPaths()
{
    QTemporaryDir app;
    QVERIFY(app.isValid());
    QVERIFY(QDir(app.path()).mkdir(QStringLiteral("Bkg")));
    QVERIFY(touch(app.path() + QStringLiteral("/Bkg/sky.jpg")));
    const QString bkg = QDir(app.path() + QStringLiteral("/Bkg")).absolutePath();
    QCOMPARE(backgroundLibraryPaths(app.path()), QStringList{bkg + QStringLiteral("/sky.jpg")});
}

void TestFolderScan::backgroundLibraryOfAMissingFolderIsEmpty()
{
    QTemporaryDir app;
    QVERIFY(app.isValid());
    QVERIFY(backgroundLibraryPaths(app.path()).isEmpty());
    QVERIFY(touch(app.path() + QStringLiteral("/Bkg"))); // a file, not a folder
    QVERIFY(backgroundLibraryPaths(app.path()).isEmpty());
}

void TestFolderScan::watchedFolderListsPhotosOldestFirst_data()
{
    // Each file with its minute of modification.
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QList<int>>("minutes");
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QString>("newest");

    QTest::newRow("oldest first, whatever the names")
        << QStringList{"a.jpg", "b.jpg", "c.jpg"} << QList<int>{3, 1, 2} << QStringList{"b.jpg", "c.jpg", "a.jpg"}
        << QStringLiteral("a.jpg");
    QTest::newRow("every photo ending")
        << QStringList{"1.jpeg", "2.jpg", "3.tiff", "4.tif", "5.bmp", "6.png", "7.xpm"} << QList<int>{1, 2, 3, 4, 5, 6, 7}
        << QStringList{"1.jpeg", "2.jpg", "3.tiff", "4.tif", "5.bmp", "6.png", "7.xpm"} << QStringLiteral("7.xpm");
    QTest::newRow("endings in any letter case")
        << QStringList{"A.JPG", "B.Tiff", "C.PnG"} << QList<int>{2, 3, 1} << QStringList{"C.PnG", "A.JPG", "B.Tiff"}
        << QStringLiteral("B.Tiff");
    QTest::newRow("other endings left out")
        << QStringList{"a.gif", "b.txt", "c.jpg", "d.webp"} << QList<int>{4, 3, 1, 2} << QStringList{"c.jpg"}
        << QStringLiteral("c.jpg");
    QTest::newRow("hidden files left out")
        << QStringList{".late.jpg", "early.jpg"} << QList<int>{9, 1} << QStringList{"early.jpg"}
        << QStringLiteral("early.jpg");
    QTest::newRow("no photo") << QStringList{"notes.txt"} << QList<int>{1} << QStringList{} << QString();
}

void TestFolderScan::watchedFolderListsPhotosOldestFirst()
{
    QFETCH(QStringList, files);
    QFETCH(QList<int>, minutes);
    QFETCH(QStringList, listed);
    QFETCH(QString, newest);
    QTemporaryDir hot;
    QVERIFY(hot.isValid());
    for (int i = 0; i < files.size(); ++i)
        QVERIFY(touch(hot.path() + QLatin1Char('/') + files.at(i), minute(minutes.at(i))));
    // A sub-folder with a photo's name, newer than everything: never listed.
    QVERIFY(QDir(hot.path()).mkdir(QStringLiteral("folder.jpg")));

    QCOMPARE(fileNames(watchedFolderPhotosOldestFirst(hot.path())), listed);
    QCOMPARE(newestWatchedFolderPhoto(hot.path()), newest);
}

void TestFolderScan::watchedFolderPathsAreTheFolderAsGivenAndTheName()
{
    QTemporaryDir hot;
    QVERIFY(hot.isValid());
    QVERIFY(touch(hot.path() + QStringLiteral("/a.png"), minute(1)));
    QVERIFY(touch(hot.path() + QStringLiteral("/b.png"), minute(2)));
    // The folder is not cleaned: a trailing separator stays and a second one follows.
    QCOMPARE(watchedFolderPhotosOldestFirst(hot.path() + QLatin1Char('/')),
             QStringList({hot.path() + QStringLiteral("//a.png"), hot.path() + QStringLiteral("//b.png")}));
    QCOMPARE(watchedFolderPhotosOldestFirst(hot.path()),
             QStringList({hot.path() + QStringLiteral("/a.png"), hot.path() + QStringLiteral("/b.png")}));
}

void TestFolderScan::newestOfAMissingOrEmptyFolderIsNone_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("missing folder") << false;
    QTest::newRow("empty folder") << true;
}

void TestFolderScan::newestOfAMissingOrEmptyFolderIsNone()
{
    QFETCH(bool, exists);
    QTemporaryDir parent;
    QVERIFY(parent.isValid());
    const QString hot = parent.path() + QStringLiteral("/hot");
    if (exists)
        QVERIFY(QDir().mkpath(hot));
    QCOMPARE(newestWatchedFolderPhoto(hot), QString());
    QVERIFY(watchedFolderPhotosOldestFirst(hot).isEmpty());
}

PLENDRA_TEST_MAIN(TestFolderScan)
#include "tst_folderscan.moc"
