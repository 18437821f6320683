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


class TestHostileWatch : public LoggedHostileIntakeTestCase
{
    Q_OBJECT

private slots:
    void hotFolderHoldingTheCorpus_data() { addCorpusRows(); }
    void hotFolderHoldingTheCorpus();
    void hostileFileWrittenWhileWatched_data() { addCorpusRows(); }
    void hostileFileWrittenWhileWatched();
    void hotFolderDeletedWhileWatched();
    void fileGoneBetweenTheScanAndLoading();
};

void TestHostileWatch::hotFolderHoldingTheCorpus()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString hot = c.corpusDir();
    bool ok = true;
    const QString newestName = QFileInfo(entry.path).fileName();
    const QStringList names = orderByTime(c, hot, newestName, &ok);
    QVERIFY(ok);
    QVERIFY(!names.contains(QStringLiteral("x.jpg")) && !names.contains(QStringLiteral("album_png")));
    const QString newest = hot + QLatin1Char('/') + names.last();
    const bool newestIsPicture = QImage(newest).isNull() == false;
    QCOMPARE(newestIsPicture, entry.kind != HostileKind::Unreadable);
    c.takeSnapshots();

    if (!newestIsPicture) {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("scanNewestNoPicture"), hot);
        QStringList expected({"window open"});
        for (const QString& name : names)
            expected << QStringLiteral("listed ") + name;
        checkStoppedAtRefresh(run, expected);
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        const auto [d, ui] = widgettest::windowParts(*window);
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
        checkPhotoChosen(d, newest);
    }
}

void TestHostileWatch::hostileFileWrittenWhileWatched()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString name = QFileInfo(entry.path).fileName();
    const QString hot = c.root() + QStringLiteral("/hot"), staging = c.root() + QStringLiteral("/staging");
    const QString older = hot + QStringLiteral("/older.jpg");
    QVERIFY(QDir().mkpath(hot) && QDir().mkpath(staging));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), older));
    QVERIFY(setModified(older, minutesIn(0)));
    const QString staged = staging + QLatin1Char('/') + name, arrived = hot + QLatin1Char('/') + name;
    QVERIFY(placeEntry(entry, staged));
    if (entry.kind != HostileKind::Folder)
        QVERIFY(setModified(staged, minutesIn(10)));
    c.takeSnapshots();
    // The move is the test's own doing; the file must arrive unchanged.
    allowChanges({QStringLiteral("hot/") + name, QStringLiteral("staging/") + name});

    if (entry.kind == HostileKind::Unreadable) {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("writtenWhileWatchedNoPicture"), hot, staged);
        checkStoppedAtRefresh(run, {"window open", "watching"});
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        const auto [d, ui] = widgettest::windowParts(*window);
        QVERIFY(choosePresetFolder(d, hot));
        const QStringList before = itemTexts(ui->listWidget);
        QCOMPARE(before.last(), older);
        const QString expected = entry.kind == HostileKind::Folder ? older : arrived;
        QVERIFY(QFile::rename(staged, arrived));
        QTRY_COMPARE_WITH_TIMEOUT(itemTexts(ui->listWidget).size(), before.size() + 1, kWatchTimeoutMs);
        QTest::qWait(200); // one move, one notification
        QCOMPARE(itemTexts(ui->listWidget), before + QStringList({expected}));
        QVERIFY(readLog().contains(QStringLiteral("Directory Changed...") + hot + QLatin1Char('\n')));
        QCOMPARE(MyGlobal::CurSelection, expected);
        const QImage photo(expected);
        checkPhotoShown(d, photo);
    }
    if (entry.kind != HostileKind::Folder) {
        QVERIFY(QFileInfo(arrived).isFile());
        QCOMPARE(testsupport::fileBytes(arrived), testsupport::fileBytes(entry.path));
    }
}

void TestHostileWatch::hotFolderDeletedWhileWatched()
{
    HostileCase& c = hostileCase();
    const QString hot = c.corpusDir();
    bool ok = true;
    orderByTime(c, hot, QStringLiteral("alpha.png"), &ok);
    QVERIFY(ok);
    c.takeSnapshots();
    QStringList deleted({QStringLiteral("corpus")});
    for (const testsupport::HostileEntry& entry : c.corpus())
        deleted << QStringLiteral("corpus/") + QFileInfo(entry.path).fileName();
    allowChanges(deleted);

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
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
}

void TestHostileWatch::fileGoneBetweenTheScanAndLoading()
{
    HostileCase& c = hostileCase();
    const QString hot = c.root() + QStringLiteral("/hot");
    const QString older = hot + QStringLiteral("/older.jpg"), newest = hot + QStringLiteral("/newest.png");
    QVERIFY(writeOlderAndNewer(older, newest));
    c.takeSnapshots();
    allowChanges({QStringLiteral("hot/newest.png")}); // it goes

    const testsupport::ChildRun run = c.runChild(QStringLiteral("scanFileGoneBeforeLoading"), hot, newest);
    checkStoppedAtRefresh(run, {"window open", "removed once listed"});
    QVERIFY(!QFile::exists(newest));
}

PLENDRA_TEST_MAIN(TestHostileWatch)
#include "tst_hostile_watch.moc"
