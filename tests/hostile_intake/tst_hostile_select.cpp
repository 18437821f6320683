// SPDX-License-Identifier: MIT
// Choosing each listed item of both lists when it is hostile: files that went
// away or cannot be read, and every entry of the corpus.

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

namespace {

// In a child: the window, with the path named by kPathVariable dropped on
// FOREGROUNDS, and the row that lists it (-1 when none does). No window when
// it could not be opened.
struct DroppedOnForegrounds
{
    std::unique_ptr<Dialog> window = openChildWindow();
    QListWidget* list = window ? widgettest::WindowWidgets(*window).listWidget : nullptr;
    QString path = qEnvironmentVariable(kPathVariable);
    int row = list ? listedRow() : -1;

    int listedRow() const
    {
        dropUrls(list->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
        return rowOf(list, path);
    }
};

} // namespace

// A listed photo that goes before it is chosen.
PLENDRA_CHILD_SCENARIO("clickFileGoneBeforeLoading")
{
    const DroppedOnForegrounds dropped;
    if (!dropped.window)
        return;
    if (dropped.row < 0 || !QFile::remove(dropped.path))
        return childReport(QStringLiteral("not listed"));
    childReport(QStringLiteral("removed once listed"));
    widgettest::clickRow(dropped.list, dropped.row);
    childReport(QStringLiteral("click returned"));
}

// A listed entry that is no picture, chosen under FOREGROUNDS.
PLENDRA_CHILD_SCENARIO("chooseForegroundNoPicture")
{
    const DroppedOnForegrounds dropped;
    if (!dropped.window)
        return;
    if (dropped.row < 0)
        return childReport(QStringLiteral("not listed"));
    childReport(QStringLiteral("listed"));
    widgettest::clickRow(dropped.list, dropped.row);
    childReport(QStringLiteral("click returned"));
}

// A photo without read permission through one way in (kKindVariable).
PLENDRA_CHILD_SCENARIO("withoutReadPermission")
{
    const QString path = qEnvironmentVariable(kPathVariable);
    const QString route = qEnvironmentVariable(kKindVariable);
    QFile probe(path);
    if (probe.open(QIODevice::ReadOnly))
        return childReport(QStringLiteral("permission ignored"));
    childReport(QStringLiteral("permission holds"));
    auto window = openChildWindow();
    if (!window)
        return;
    Dialog& d = *window;
    const widgettest::WindowWidgets ui(d);
    const auto reportBackground = [&d, ui, path]() {
        const int row = rowOf(ui->listWidget_Bk, path);
        childReport(QStringLiteral("background ") + (DialogTestAccess::background(d).isNull() ? QStringLiteral("null") : QStringLiteral("loaded"))
                    + (row >= 0 && !hasThumbnail(ui->listWidget_Bk, row) ? QStringLiteral(", listed without thumbnail")
                                                                         : QStringLiteral(", not listed as expected")));
    };
    if (route == QLatin1String("add foreground")) {
        reportListedNames(d);
        auto seen = std::make_shared<widgettest::FileDialogSeen>();
        widgettest::answerFileDialog({path}, seen);
        widgettest::clickButton(ui->AddForegGround);
    } else if (route == QLatin1String("hot folder")) {
        reportListedNames(d);
        choosePresetFolder(d, QFileInfo(path).absolutePath());
    } else if (route == QLatin1String("drop on FOREGROUNDS, then choose")) {
        dropUrls(ui->listWidget->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
        const int row = rowOf(ui->listWidget, path);
        childReport(row >= 0 && !hasThumbnail(ui->listWidget, row) ? QStringLiteral("listed without thumbnail")
                                                                   : QStringLiteral("not listed as expected"));
        if (row >= 0)
            widgettest::clickRow(ui->listWidget, row);
    } else if (route == QLatin1String("add background")) {
        auto seen = std::make_shared<widgettest::FileDialogSeen>();
        widgettest::answerFileDialog({path}, seen);
        widgettest::clickButton(ui->AddBackground);
        reportBackground();
    } else if (route == QLatin1String("drop on BACKGROUNDS, then choose")) {
        dropUrls(ui->listWidget_Bk->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
        const int row = rowOf(ui->listWidget_Bk, path);
        widgettest::markPreview(d);
        if (row >= 0)
            widgettest::clickRow(ui->listWidget_Bk, row);
        reportBackground();
        childReport(widgettest::previewRedrawnSinceMark(d) ? QStringLiteral("preview redrawn") : QStringLiteral("preview as it was"));
    }
    childReport(QStringLiteral("done"));
}



class TestHostileSelect : public LoggedHostileIntakeTestCase
{
    Q_OBJECT

private slots:
    void fileGoneBeforeChoosingItUnderForegrounds();
    void fileGoneBeforeChoosingItUnderBackgrounds();
    void withoutReadPermission_data();
    void withoutReadPermission();
    void chooseEachUnderForegrounds_data() { addCorpusRows(); }
    void chooseEachUnderForegrounds();
    void chooseEachUnderBackgrounds_data() { addCorpusRows(); }
    void chooseEachUnderBackgrounds();
};

void TestHostileSelect::fileGoneBeforeChoosingItUnderForegrounds()
{
    HostileCase& c = hostileCase();
    const QString gone = c.root() + QStringLiteral("/gone.jpg");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), gone));
    c.takeSnapshots();
    allowChanges({QStringLiteral("gone.jpg")}); // it goes
    const testsupport::ChildRun run = c.runChild(QStringLiteral("clickFileGoneBeforeLoading"), gone);
    checkStoppedAtRefresh(run, {"window open", "removed once listed"});
}

void TestHostileSelect::fileGoneBeforeChoosingItUnderBackgrounds()
{
    HostileCase& c = hostileCase();
    const QString gone = c.root() + QStringLiteral("/gone.jpg");
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(160, 120, 3), gone));
    c.takeSnapshots();
    allowChanges({QStringLiteral("gone.jpg")}); // it goes
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
    const int row = dropAndFindRow(ui->listWidget_Bk, gone);
    QVERIFY(row >= 0);
    QVERIFY(hasThumbnail(ui->listWidget_Bk, row));
    QVERIFY(QFile::remove(gone));
    widgettest::markPreview(d);
    widgettest::clickRow(ui->listWidget_Bk, row);
    QCOMPARE(MyGlobal::CurSelectionBk, gone);
    QVERIFY(DialogTestAccess::background(d).isNull());
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), QImage(c.appDir() + QStringLiteral("/1green.JPG"))));
}

void TestHostileSelect::withoutReadPermission_data()
{
    QTest::addColumn<QString>("route");
    QTest::addColumn<bool>("stops");
    QTest::addColumn<QStringList>("reports");
    // Through FOREGROUNDS the photo becomes null and the refresh stops it.
    QTest::newRow("add foreground") << "add foreground" << true
                                    << QStringList({"permission holds", "window open", "listed locked.jpg"});
    QTest::newRow("hot folder") << "hot folder" << true
                                << QStringList({"permission holds", "window open", "listed older.jpg", "listed locked.jpg"});
    QTest::newRow("drop on FOREGROUNDS, then choose") << "drop on FOREGROUNDS, then choose" << true
                                                      << QStringList({"permission holds", "window open", "listed without thumbnail"});
    // Through BACKGROUNDS the background becomes null, without a message;
    // with no key point set nothing shown changes.
    QTest::newRow("add background") << "add background" << false
                                    << QStringList({"permission holds", "window open", "background null, listed without thumbnail", "done"});
    QTest::newRow("drop on BACKGROUNDS, then choose")
        << "drop on BACKGROUNDS, then choose" << false
        << QStringList({"permission holds", "window open", "background null, listed without thumbnail", "preview as it was", "done"});
}

void TestHostileSelect::withoutReadPermission()
{
    QFETCH(QString, route);
    QFETCH(bool, stops);
    QFETCH(QStringList, reports);
    HostileCase& c = hostileCase();
    const QString folder = c.root() + QStringLiteral("/locked");
    const QString locked = folder + QStringLiteral("/locked.jpg"), older = folder + QStringLiteral("/older.jpg");
    QVERIFY(writeOlderAndNewer(older, locked));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::WriteOwner));
    c.takeSnapshots();

    QProcessEnvironment env = c.childEnvironment();
    env.insert(QLatin1String(kPathVariable), locked);
    env.insert(QLatin1String(kKindVariable), route);
    const testsupport::ChildRun run = testsupport::runChildScenarioWithoutFileOverrides(QStringLiteral("withoutReadPermission"), env);
    const QString why = stops ? stoppedOnlyBy(run, refreshAssertionPattern()) : endedCleanly(run);
    QVERIFY2(why.isEmpty(), qPrintable(why));
    QCOMPARE(childReports(run), reports);
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner));
}

void TestHostileSelect::chooseEachUnderForegrounds()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString path = entry.path;
    c.takeSnapshots();
    if (entry.kind != HostileKind::Image) {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("chooseForegroundNoPicture"), path);
        checkStoppedAtRefresh(run, {"window open", "listed"});
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        const auto [d, ui] = widgettest::windowParts(*window);
        const int row = dropAndFindRow(ui->listWidget, path);
        QVERIFY(row >= 0);
        widgettest::pressPreview(d, 15, 15);
        QCOMPARE(MyGlobal::xyClicked, QPoint(15, 15));
        widgettest::clickRow(ui->listWidget, row);
        QCOMPARE(widgettest::selectedTexts(ui->listWidget), QStringList({path}));
        QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
        checkPhotoChosen(d, path);
    }
}

void TestHostileSelect::chooseEachUnderBackgrounds()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString path = entry.path;
    c.takeSnapshots();
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
    const QImage photo(c.appDir() + QStringLiteral("/1green.JPG"));
    const int row = dropAndFindRow(ui->listWidget_Bk, path);
    QVERIFY(row >= 0);
    widgettest::markPreview(d);
    widgettest::clickRow(ui->listWidget_Bk, row);
    QCOMPARE(MyGlobal::CurSelectionBk, path);
    QCOMPARE(widgettest::selectedTexts(ui->listWidget_Bk), QStringList({path}));
    if (entry.kind == HostileKind::Image)
        QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), fittedTo(QImage(path), photo.size())));
    else
        QVERIFY(DialogTestAccess::background(d).isNull());
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    checkPhotoShown(d, photo);
}


PLENDRA_TEST_MAIN(TestHostileSelect)
#include "tst_hostile_select.moc"
