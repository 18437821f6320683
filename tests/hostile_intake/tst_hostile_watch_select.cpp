// SPDX-License-Identifier: MIT
// Hostile files through the watched folder (the Preset dialog's scan and the
// real watcher's notifications), files that go away or cannot be read, and
// choosing each listed item of both lists.

#include "tests/hostile_intake/hostileintake.h"
#include "tests/intake/intakefixture.h"

#include "state/globals.h"
#include "intake/preset.h"
#include "mainwindow/dialog.h"
#include "ui_dialog.h"

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
using testsupport::HostileKind;
using testsupport::itemTexts;

namespace {

constexpr int kWatchTimeoutMs = 10000;

QImage asShown(const QImage& image)
{
    return QPixmap::fromImage(image).toImage();
}

QImage fittedTo(const QImage& background, const QSize& size)
{
    return background.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

QDateTime minutesIn(int minutes)
{
    return QDateTime(QDate(2021, 6, 1), QTime(9, 0)).addSecs(60 * minutes);
}

bool setModified(const QString& path, const QDateTime& when)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.setFileTime(when, QFileDevice::FileModificationTime);
}

// Gives the corpus files of `folder` distinct times in corpus order, with
// `newest` (a file name) the newest of all; returns the listed names of the
// folder (files with an image ending), oldest first.
QStringList orderByTime(const HostileCase& c, const QString& folder, const QString& newest, bool* ok)
{
    QList<QPair<QDateTime, QString>> files;
    int minute = 0;
    for (const testsupport::HostileEntry& entry : c.corpus()) {
        if (entry.kind == HostileKind::Folder)
            continue;
        const QString name = QFileInfo(entry.path).fileName();
        const QDateTime when = name == newest ? minutesIn(1000) : minutesIn(++minute);
        *ok = setModified(folder + QLatin1Char('/') + name, when) && *ok;
        files.append({when, name});
    }
    std::sort(files.begin(), files.end());
    QStringList names;
    for (const auto& file : std::as_const(files))
        names << file.second;
    return names;
}

// Presses "PreSets" (shown for the test), picks `folder` with "Browse" in Qt's
// own folder dialog and closes the Preset window from its title bar.
bool choosePresetFolder(Dialog& d, const QString& folder)
{
    auto handled = std::make_shared<bool>(false);
    intaketest::answerModal([folder, handled](QWidget* modal) {
        auto* preset = qobject_cast<Preset*>(modal);
        if (!preset)
            return false;
        auto seen = std::make_shared<intaketest::FileDialogSeen>();
        intaketest::answerFileDialog({folder}, seen);
        intaketest::clickButton(preset->findChild<QPushButton*>(QStringLiteral("Browse")));
        preset->close();
        *handled = seen->answered;
        return true;
    });
    QPushButton* presets = DialogTestAccess::ui(d)->Presets;
    presets->show();
    intaketest::clickButton(presets);
    return *handled && MyGlobal::HotFolder_FG == folder;
}

// Reports the file name of each item FOREGROUNDS gains.
void reportListedNames(Dialog& d)
{
    QListWidget* list = DialogTestAccess::ui(d)->listWidget;
    QObject::connect(list->model(), &QAbstractItemModel::rowsInserted, list, [list](const QModelIndex&, int first, int) {
        childReport(QStringLiteral("listed ") + QFileInfo(list->item(first)->text()).fileName());
    });
}

// Removes `path` as soon as FOREGROUNDS lists it: between the listing and the
// loading of the photo.
void removeWhenListed(Dialog& d, const QString& path)
{
    QListWidget* list = DialogTestAccess::ui(d)->listWidget;
    QObject::connect(list->model(), &QAbstractItemModel::rowsInserted, list, [list, path](const QModelIndex&, int first, int) {
        if (list->item(first)->text() == path && QFile::remove(path))
            childReport(QStringLiteral("removed once listed"));
    });
}

QString readLog()
{
    MyGlobal::log.flush();
    QFile log(QStringLiteral("/tmp/log.txt"));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

int rowOf(const QListWidget* list, const QString& text)
{
    return itemTexts(list).lastIndexOf(text);
}

} // namespace

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

// A listed photo that goes before it is chosen.
PLENDRA_CHILD_SCENARIO("clickFileGoneBeforeLoading")
{
    auto window = openChildWindow();
    if (!window)
        return;
    QListWidget* list = DialogTestAccess::ui(*window)->listWidget;
    const QString path = qEnvironmentVariable(kPathVariable);
    dropUrls(list->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
    const int row = rowOf(list, path);
    if (row < 0 || !QFile::remove(path))
        return childReport(QStringLiteral("not listed"));
    childReport(QStringLiteral("removed once listed"));
    intaketest::clickRow(list, row);
    childReport(QStringLiteral("click returned"));
}

// A listed entry that is no picture, chosen under FOREGROUNDS.
PLENDRA_CHILD_SCENARIO("chooseForegroundNoPicture")
{
    auto window = openChildWindow();
    if (!window)
        return;
    QListWidget* list = DialogTestAccess::ui(*window)->listWidget;
    const QString path = qEnvironmentVariable(kPathVariable);
    dropUrls(list->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
    const int row = rowOf(list, path);
    if (row < 0)
        return childReport(QStringLiteral("not listed"));
    childReport(QStringLiteral("listed"));
    intaketest::clickRow(list, row);
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
    Ui_Dialog* ui = DialogTestAccess::ui(d);
    const auto reportBackground = [&d, ui, path]() {
        const int row = rowOf(ui->listWidget_Bk, path);
        childReport(QStringLiteral("background ") + (DialogTestAccess::background(d).isNull() ? QStringLiteral("null") : QStringLiteral("loaded"))
                    + (row >= 0 && !hasThumbnail(ui->listWidget_Bk, row) ? QStringLiteral(", listed without thumbnail")
                                                                         : QStringLiteral(", not listed as expected")));
    };
    if (route == QLatin1String("add foreground")) {
        reportListedNames(d);
        auto seen = std::make_shared<intaketest::FileDialogSeen>();
        intaketest::answerFileDialog({path}, seen);
        intaketest::clickButton(ui->AddForegGround);
    } else if (route == QLatin1String("hot folder")) {
        reportListedNames(d);
        choosePresetFolder(d, QFileInfo(path).absolutePath());
    } else if (route == QLatin1String("drop on FOREGROUNDS, then choose")) {
        dropUrls(ui->listWidget->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
        const int row = rowOf(ui->listWidget, path);
        childReport(row >= 0 && !hasThumbnail(ui->listWidget, row) ? QStringLiteral("listed without thumbnail")
                                                                   : QStringLiteral("not listed as expected"));
        if (row >= 0)
            intaketest::clickRow(ui->listWidget, row);
    } else if (route == QLatin1String("add background")) {
        auto seen = std::make_shared<intaketest::FileDialogSeen>();
        intaketest::answerFileDialog({path}, seen);
        intaketest::clickButton(ui->AddBackground);
        reportBackground();
    } else if (route == QLatin1String("drop on BACKGROUNDS, then choose")) {
        dropUrls(ui->listWidget_Bk->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10));
        const int row = rowOf(ui->listWidget_Bk, path);
        intaketest::markPreview(d);
        if (row >= 0)
            intaketest::clickRow(ui->listWidget_Bk, row);
        reportBackground();
        childReport(intaketest::previewRedrawnSinceMark(d) ? QStringLiteral("preview redrawn") : QStringLiteral("preview as it was"));
    }
    childReport(QStringLiteral("done"));
}

class TestHostileWatchSelect : public QObject
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
    void fileGoneBeforeChoosingItUnderForegrounds();
    void fileGoneBeforeChoosingItUnderBackgrounds();

    void withoutReadPermission_data();
    void withoutReadPermission();

    void chooseEachUnderForegrounds_data() { addCorpusRows(); }
    void chooseEachUnderForegrounds();
    void chooseEachUnderBackgrounds_data() { addCorpusRows(); }
    void chooseEachUnderBackgrounds();
};

void TestHostileWatchSelect::init()
{
    // main() opens the log in the real program; the change handler writes to it.
    MyGlobal::log.close();
    QVERIFY(MyGlobal::log.open(QIODevice::WriteOnly));
}

void TestHostileWatchSelect::cleanup()
{
    MyGlobal::log.close();
    testsupport::resetGlobals();
}

// Designed outcome of choosing the corpus folder as the hot folder: its files
// with an image ending (no folders: x.jpg is not listed) are listed oldest
// first, each with its full path and an empty icon when it is no picture; the
// newest becomes current and the photo. When the newest is a picture it is
// shown; when it is not, the refresh stops on "!pix.isNull()". A folder row
// makes the folder the newest entry, which changes nothing: the newest file
// is shown.
void TestHostileWatchSelect::hotFolderHoldingTheCorpus()
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
        Ui_Dialog* ui = DialogTestAccess::ui(d);
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
        QCOMPARE(intaketest::selectedTexts(ui->listWidget), QStringList({newest}));
        QCOMPARE(MyGlobal::CurSelection, newest);
        const QImage photo(newest);
        QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), photo));
        QVERIFY(intaketest::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
        QCOMPARE(DialogTestAccess::background(d).size(), photo.size());
    }
    QCOMPARE(c.unexpectedChanges(), QStringList());
}

// Designed outcome of a corpus entry moved into the watched folder (which
// holds one older photo): a file is listed at the end and becomes the photo,
// shown when it is a picture; when it is not, the refresh stops on
// "!pix.isNull()". A folder is not listed: the notification lists the newest
// file, the older photo, once more and shows it.
void TestHostileWatchSelect::hostileFileWrittenWhileWatched()
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
        Ui_Dialog* ui = DialogTestAccess::ui(d);
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
        QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), photo));
        QVERIFY(intaketest::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
    }
    if (HostileKind(kind) != HostileKind::Folder) {
        QVERIFY(QFileInfo(arrived).isFile());
        QCOMPARE(intaketest::fileBytes(arrived), intaketest::fileBytes(entry.path));
    }
    QCOMPARE(c.unexpectedChanges(moved), QStringList());
}

// Designed outcome of deleting the watched folder: the change handler logs
// the notification, lists nothing (the folder is gone) and leaves the list,
// the photo and the preview as they were.
void TestHostileWatchSelect::hotFolderDeletedWhileWatched()
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
    Ui_Dialog* ui = DialogTestAccess::ui(d);
    QVERIFY(choosePresetFolder(d, hot));
    const QStringList listed = itemTexts(ui->listWidget);
    const QImage photo = DialogTestAccess::foreground(d);
    QCOMPARE(MyGlobal::CurSelection, hot + QStringLiteral("/alpha.png"));
    intaketest::markPreview(d);

    QVERIFY(QDir(hot).removeRecursively());
    QTRY_VERIFY_WITH_TIMEOUT(readLog().contains(QStringLiteral("Directory Changed...") + hot + QLatin1Char('\n')), kWatchTimeoutMs);
    QTest::qWait(200);
    QCOMPARE(itemTexts(ui->listWidget), listed);
    QCOMPARE(MyGlobal::CurSelection, hot + QStringLiteral("/alpha.png"));
    QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), photo));
    QVERIFY(!intaketest::previewRedrawnSinceMark(d));
    window.reset();
    QCOMPARE(c.unexpectedChanges(deleted), QStringList());
}

// Designed outcome: the scan lists the newest photo, which goes before it is
// loaded; the photo becomes null and the refresh stops on "!pix.isNull()".
void TestHostileWatchSelect::fileGoneBetweenTheScanAndLoading()
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

// Designed outcome: a listed photo that went before it is chosen leaves the
// photo null; the refresh stops on "!pix.isNull()".
void TestHostileWatchSelect::fileGoneBeforeChoosingItUnderForegrounds()
{
    HostileCase c;
    QVERIFY(c.ok());
    const QString gone = c.root() + QStringLiteral("/gone.jpg");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), gone));
    c.takeSnapshots();
    QProcessEnvironment env = c.childEnvironment();
    env.insert(QLatin1String(kPathVariable), gone);
    const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("clickFileGoneBeforeLoading"), env);
    const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
    QVERIFY2(why.isEmpty(), qPrintable(why));
    QCOMPARE(childReports(run), QStringList({"window open", "removed once listed"}));
    QCOMPARE(c.unexpectedChanges({QStringLiteral("gone.jpg")}), QStringList());
}

// Designed outcome: a listed background that went before it is chosen
// becomes a null background, without a message; with no key point set
// nothing shown changes.
void TestHostileWatchSelect::fileGoneBeforeChoosingItUnderBackgrounds()
{
    HostileCase c;
    QVERIFY(c.ok());
    const QString gone = c.root() + QStringLiteral("/gone.jpg");
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(160, 120, 3), gone));
    c.takeSnapshots();
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    Dialog& d = *window;
    Ui_Dialog* ui = DialogTestAccess::ui(d);
    QVERIFY(dropUrls(ui->listWidget_Bk->viewport(), {QUrl::fromLocalFile(gone)}, QPoint(10, 10)));
    const int row = rowOf(ui->listWidget_Bk, gone);
    QVERIFY(row >= 0);
    QVERIFY(hasThumbnail(ui->listWidget_Bk, row));
    QVERIFY(QFile::remove(gone));
    intaketest::markPreview(d);
    intaketest::clickRow(ui->listWidget_Bk, row);
    QCOMPARE(MyGlobal::CurSelectionBk, gone);
    QVERIFY(DialogTestAccess::background(d).isNull());
    QVERIFY(!intaketest::previewRedrawnSinceMark(d));
    QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), QImage(c.appDir() + QStringLiteral("/1green.JPG"))));
    window.reset();
    QCOMPARE(c.unexpectedChanges({QStringLiteral("gone.jpg")}), QStringList());
}

void TestHostileWatchSelect::withoutReadPermission_data()
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

// Designed outcome of a photo the user may not read: like any file that is
// no picture (an empty icon; a null photo stops the refresh on
// "!pix.isNull()"; a null background is kept without a message). Tested in a
// child that cannot override file permissions, which it first proves.
void TestHostileWatchSelect::withoutReadPermission()
{
    QFETCH(QString, route);
    QFETCH(bool, stops);
    QFETCH(QStringList, reports);
    HostileCase c;
    QVERIFY(c.ok());
    const QString folder = c.root() + QStringLiteral("/locked");
    const QString locked = folder + QStringLiteral("/locked.jpg"), older = folder + QStringLiteral("/older.jpg");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(160, 120, QColor(40, 180, 60), 3), older));
    QVERIFY(testsupport::writeImage(testsupport::studioShot(120, 90, QColor(40, 70, 200), 4), locked));
    QVERIFY(setModified(older, minutesIn(0)) && setModified(locked, minutesIn(5)));
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
    QCOMPARE(c.unexpectedChanges(), QStringList());
}

// Designed outcome of choosing a listed entry under FOREGROUNDS (listed by a
// drop, which loads nothing): a picture becomes the photo and is shown, the
// key point is cleared and the background fitted to it; anything else leaves
// the photo and the background null, so the size check passes and the
// refresh stops on "!pix.isNull()".
void TestHostileWatchSelect::chooseEachUnderForegrounds()
{
    QFETCH(int, index);
    QFETCH(int, kind);
    HostileCase c;
    QVERIFY(c.ok());
    const QString path = c.entry(index).path;
    c.takeSnapshots();
    if (HostileKind(kind) != HostileKind::Image) {
        QProcessEnvironment env = c.childEnvironment();
        env.insert(QLatin1String(kPathVariable), path);
        const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("chooseForegroundNoPicture"), env);
        const QString why = stoppedOnlyBy(run, refreshAssertionPattern());
        QVERIFY2(why.isEmpty(), qPrintable(why));
        QCOMPARE(childReports(run), QStringList({"window open", "listed"}));
    } else {
        auto window = openWindow(c.appDir());
        QVERIFY(window);
        Dialog& d = *window;
        Ui_Dialog* ui = DialogTestAccess::ui(d);
        QVERIFY(dropUrls(ui->listWidget->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10)));
        const int row = rowOf(ui->listWidget, path);
        QVERIFY(row >= 0);
        intaketest::pressPreview(d, 15, 15);
        QCOMPARE(MyGlobal::xyClicked, QPoint(15, 15));
        intaketest::clickRow(ui->listWidget, row);
        const QImage photo(path);
        QCOMPARE(MyGlobal::CurSelection, path);
        QCOMPARE(intaketest::selectedTexts(ui->listWidget), QStringList({path}));
        QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
        QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), photo));
        QVERIFY(intaketest::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
        QCOMPARE(DialogTestAccess::background(d).size(), photo.size());
    }
    QCOMPARE(c.unexpectedChanges(), QStringList());
}

// Designed outcome of choosing a listed entry under BACKGROUNDS with no key
// point set: it becomes the current background, fitted to the photo, or null
// when it is no picture; the photo is read again from its file and nothing
// shown changes (the preview is not redrawn).
void TestHostileWatchSelect::chooseEachUnderBackgrounds()
{
    QFETCH(int, index);
    QFETCH(int, kind);
    HostileCase c;
    QVERIFY(c.ok());
    const QString path = c.entry(index).path;
    c.takeSnapshots();
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    Dialog& d = *window;
    Ui_Dialog* ui = DialogTestAccess::ui(d);
    const QImage photo(c.appDir() + QStringLiteral("/1green.JPG"));
    QVERIFY(dropUrls(ui->listWidget_Bk->viewport(), {QUrl::fromLocalFile(path)}, QPoint(10, 10)));
    const int row = rowOf(ui->listWidget_Bk, path);
    QVERIFY(row >= 0);
    intaketest::markPreview(d);
    intaketest::clickRow(ui->listWidget_Bk, row);
    QCOMPARE(MyGlobal::CurSelectionBk, path);
    QCOMPARE(intaketest::selectedTexts(ui->listWidget_Bk), QStringList({path}));
    if (HostileKind(kind) == HostileKind::Image)
        QVERIFY(intaketest::samePixels(DialogTestAccess::background(d), fittedTo(QImage(path), photo.size())));
    else
        QVERIFY(DialogTestAccess::background(d).isNull());
    QVERIFY(!intaketest::previewRedrawnSinceMark(d));
    QVERIFY(intaketest::samePixels(DialogTestAccess::foreground(d), photo));
    QVERIFY(intaketest::samePixels(DialogTestAccess::preview(d).toImage(), asShown(photo)));
    window.reset();
    QCOMPARE(c.unexpectedChanges(), QStringList());
}

PLENDRA_TEST_MAIN(TestHostileWatchSelect)
#include "tst_hostile_watch_select.moc"
