// SPDX-License-Identifier: MIT
// Hostile files through the watched folder: the Preset dialog's scan, the real
// watcher's notifications, a folder deleted while watched and a file that goes
// between the scan and its loading.

#include "tests/fixture/windowfixture.h"
#include "tests/hostile_intake/hostileintake.h"
#include "tests/hostile_intake/hostilewatch.h"

#include "dialogs/preset.h"
#include "mainwindow/dialog.h"
#include "state/globals.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QUrl>

#include <algorithm>

using namespace hostiletest;
using namespace widgettest;
using testsupport::HostileKind;
using widgettest::itemTexts;

// The hot folder's scan with a newest file that is no picture.
PLENDRA_CHILD_SCENARIO("scanNewestNoPicture")
{
    auto window = openChildWindow();
    if (!window)
        return;
    reportListedNames(*window);
    const bool chosen = choosePresetFolder(*window, qEnvironmentVariable(kPathVariable));
    childReport(chosen ? QStringLiteral("scan returned") : QStringLiteral("folder not chosen"));
}

// A file that is no picture moved into the watched folder.
PLENDRA_CHILD_SCENARIO("writtenWhileWatchedNoPicture")
{
    auto window = openChildWindow();
    if (!window)
        return;
    const QString hot = qEnvironmentVariable(kPathVariable);
    const QString staged = qEnvironmentVariable(kSecondPathVariable);
    if (!choosePresetFolder(*window, hot))
        return childReport(QStringLiteral("folder not chosen"));
    childReport(QStringLiteral("watching"));
    if (!QFile::rename(staged, hot + QLatin1Char('/') + QFileInfo(staged).fileName()))
        return childReport(QStringLiteral("not moved"));
    QTest::qWait(kWatchTimeoutMs);
    childReport(QStringLiteral("no notification"));
}

// The newest photo of the hot folder goes between its listing and its loading.
PLENDRA_CHILD_SCENARIO("scanFileGoneBeforeLoading")
{
    auto window = openChildWindow();
    if (!window)
        return;
    removeWhenListed(*window, qEnvironmentVariable(kSecondPathVariable));
    choosePresetFolder(*window, qEnvironmentVariable(kPathVariable));
    childReport(QStringLiteral("scan returned"));
}


class TestHostileWatch : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void hotFolderHoldingTheCorpus_data() { addCorpusRows(); }
    void hotFolderHoldingTheCorpus();
    void hostileFileWrittenWhileWatched_data() { addCorpusRows(); }
    void hostileFileWrittenWhileWatched();
    void hotFolderDeletedWhileWatched();
    void fileGoneBetweenTheScanAndLoading();
};

void TestHostileWatch::init()
{
    // main() opens the log in the real program; the change handler writes to it.
    MyGlobal::log.close();
    QVERIFY(MyGlobal::log.open(QIODevice::WriteOnly));
}

void TestHostileWatch::cleanup()
{
    MyGlobal::log.close();
    widgettest::resetGlobals();
}

void TestHostileWatch::hotFolderHoldingTheCorpus()
{
    QFETCH(int, index);
    QFETCH(int, kind);
    HostileCase c;
    QVERIFY(c.ok());
    const QString hot = c.corpusDir();
    bool ok = true;
    const QString newestName = QFileInfo(c.entry(index).path).fileName();
    const QStringList names = orderByTime(c, hot, newestName, &ok);
    QVERIFY(ok);
    QVERIFY(!names.contains(QStringLiteral("x.jpg")) && !names.contains(QStringLiteral("album_png")));
    const QString newest = hot + QLatin1Char('/') + names.last();
    const bool newestIsPicture = QImage(newest).isNull() == false;
    QCOMPARE(newestIsPicture, HostileKind(kind) != HostileKind::Unreadable);
    c.takeSnapshots();

    if (!newestIsPicture) {
        QProcessEnvironment env = c.childEnvironment();
        env.insert(QLatin1String(kPathVariable), hot);
        const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("scanNewestNoPicture"), env);
        const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
        QVERIFY2(why.isEmpty(), qPrintable(why));
        QStringList expected({"window open"});
        for (const QString& name : names)
            expected << QStringLiteral("listed ") + name;
        QCOMPARE(childReports(run), expected);
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        Dialog& d = *window;
        const widgettest::WindowWidgets ui(d);
        const QStringList before = itemTexts(ui->listWidget);
        QVERIFY(choosePresetFolder(d, hot));
        QStringList expected = before;
        for (const QString& name : names)
            expected << hot + QLatin1Char('/') + name;
        QCOMPARE(itemTexts(ui->listWidget), expected);
        for (int i = 0; i < names.size(); ++i)
            QVERIFY2(hasThumbnail(ui->listWidget, before.size() + i) == !QImage(expected.at(before.size() + i)).isNull(),
                     qPrintable(names.at(i)));
        QCOMPARE(ui->listWidget->currentRow(), expected.size() - 1);
        QCOMPARE(widgettest::selectedTexts(ui->listWidget), QStringList({newest}));
        QCOMPARE(MyGlobal::CurSelection, newest);
        const QImage photo(newest);
        QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
        QVERIFY(testsupport::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
        QCOMPARE(DialogTestAccess::background(d).size(), photo.size());
    }
    QCOMPARE(c.unexpectedChanges(), QStringList());
}

void TestHostileWatch::hostileFileWrittenWhileWatched()
{
    QFETCH(int, index);
    QFETCH(int, kind);
    HostileCase c;
    QVERIFY(c.ok());
    const testsupport::HostileEntry entry = c.entry(index);
    const QString name = QFileInfo(entry.path).fileName();
    const QString hot = c.root() + QStringLiteral("/hot"), staging = c.root() + QStringLiteral("/staging");
    const QString older = hot + QStringLiteral("/older.jpg");
    QVERIFY(QDir().mkpath(hot) && QDir().mkpath(staging));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), older));
    QVERIFY(setModified(older, minutesIn(0)));
    const QString staged = staging + QLatin1Char('/') + name, arrived = hot + QLatin1Char('/') + name;
    QVERIFY(placeEntry(entry, staged));
    if (HostileKind(kind) != HostileKind::Folder)
        QVERIFY(setModified(staged, minutesIn(10)));
    c.takeSnapshots();
    // The move is the test's own doing; the file must arrive unchanged.
    QStringList moved({QStringLiteral("hot/") + name, QStringLiteral("staging/") + name});

    if (HostileKind(kind) == HostileKind::Unreadable) {
        QProcessEnvironment env = c.childEnvironment();
        env.insert(QLatin1String(kPathVariable), hot);
        env.insert(QLatin1String(kSecondPathVariable), staged);
        const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("writtenWhileWatchedNoPicture"), env);
        const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
        QVERIFY2(why.isEmpty(), qPrintable(why));
        QCOMPARE(childReports(run), QStringList({"window open", "watching"}));
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        Dialog& d = *window;
        const widgettest::WindowWidgets ui(d);
        QVERIFY(choosePresetFolder(d, hot));
        const QStringList before = itemTexts(ui->listWidget);
        QCOMPARE(before.last(), older);
        const QString expected = HostileKind(kind) == HostileKind::Folder ? older : arrived;
        QVERIFY(QFile::rename(staged, arrived));
        QTRY_COMPARE_WITH_TIMEOUT(itemTexts(ui->listWidget).size(), before.size() + 1, kWatchTimeoutMs);
        QTest::qWait(200); // one move, one notification
        QCOMPARE(itemTexts(ui->listWidget), before + QStringList({expected}));
        QVERIFY(readLog().contains(QStringLiteral("Directory Changed...") + hot + QLatin1Char('\n')));
        QCOMPARE(MyGlobal::CurSelection, expected);
        const QImage photo(expected);
        QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
        QVERIFY(testsupport::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
    }
    if (HostileKind(kind) != HostileKind::Folder) {
        QVERIFY(QFileInfo(arrived).isFile());
        QCOMPARE(testsupport::fileBytes(arrived), testsupport::fileBytes(entry.path));
    }
    QCOMPARE(c.unexpectedChanges(moved), QStringList());
}

void TestHostileWatch::hotFolderDeletedWhileWatched()
{
    HostileCase c;
    QVERIFY(c.ok());
    const QString hot = c.corpusDir();
    bool ok = true;
    orderByTime(c, hot, QStringLiteral("alpha.png"), &ok);
    QVERIFY(ok);
    c.takeSnapshots();
    QStringList deleted({QStringLiteral("corpus")});
    for (const testsupport::HostileEntry& entry : c.corpus())
        deleted << QStringLiteral("corpus/") + QFileInfo(entry.path).fileName();

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    Dialog& d = *window;
    const widgettest::WindowWidgets ui(d);
    QVERIFY(choosePresetFolder(d, hot));
    const QStringList listed = itemTexts(ui->listWidget);
    const QImage photo = DialogTestAccess::foreground(d);
    QCOMPARE(MyGlobal::CurSelection, hot + QStringLiteral("/alpha.png"));
    widgettest::markPreview(d);

    QVERIFY(QDir(hot).removeRecursively());
    QTRY_VERIFY_WITH_TIMEOUT(readLog().contains(QStringLiteral("Directory Changed...") + hot + QLatin1Char('\n')), kWatchTimeoutMs);
    QTest::qWait(200);
    QCOMPARE(itemTexts(ui->listWidget), listed);
    QCOMPARE(MyGlobal::CurSelection, hot + QStringLiteral("/alpha.png"));
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    window.reset();
    QCOMPARE(c.unexpectedChanges(deleted), QStringList());
}

void TestHostileWatch::fileGoneBetweenTheScanAndLoading()
{
    HostileCase c;
    QVERIFY(c.ok());
    const QString hot = c.root() + QStringLiteral("/hot");
    const QString older = hot + QStringLiteral("/older.jpg"), newest = hot + QStringLiteral("/newest.png");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), older));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(120, 90, QColor(40, 70, 200), 4), newest));
    QVERIFY(setModified(older, minutesIn(0)) && setModified(newest, minutesIn(5)));
    c.takeSnapshots();

    QProcessEnvironment env = c.childEnvironment();
    env.insert(QLatin1String(kPathVariable), hot);
    env.insert(QLatin1String(kSecondPathVariable), newest);
    const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("scanFileGoneBeforeLoading"), env);
    const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
    QVERIFY2(why.isEmpty(), qPrintable(why));
    QCOMPARE(childReports(run), QStringList({"window open", "removed once listed"}));
    QVERIFY(!QFile::exists(newest));
    QCOMPARE(c.unexpectedChanges({QStringLiteral("hot/newest.png")}), QStringList());
}

PLENDRA_TEST_MAIN(TestHostileWatch)
#include "tst_hostile_watch.moc"
