// SPDX-License-Identifier: MIT
// The watched folder: the Preset dialog, the scan of the chosen folder and the
// real file-system watcher's notifications.

#include "tests/fixture/windowfixture.h"

#include "dialogs/preset.h"
#include "mainwindow/dialog.h"
#include "state/globals.h"

#include <QDateTime>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

using namespace widgettest;
using testsupport::fileBytes;
using testsupport::samePixels;

namespace {

constexpr int kWatchTimeoutMs = 10000;

// A base time well in the past; photos are `minutes` later than it.
QDateTime at(int minutes)
{
    return QDateTime(QDate(2021, 6, 1), QTime(9, 0)).addSecs(60 * minutes);
}

bool setModified(const QString& path, const QDateTime& when)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.setFileTime(when, QFileDevice::FileModificationTime);
}

// Writes a photo (or, for a name that is not an image, a few bytes) with the
// given modification time.
bool writeFile(const QString& path, const QDateTime& when, quint32 seed, QSize size = QSize(160, 120))
{
    const QString lower = path.toLower();
    bool ok;
    if (lower.endsWith(".txt") || lower.endsWith(".gif")) {
        QFile file(path);
        ok = file.open(QIODevice::WriteOnly) && file.write("notes") == 5;
    } else {
        ok = testsupport::writeImage(
            testsupport::studioShot(size.width(), size.height(), QColor(40, 180, 60), seed), path);
    }
    return ok && setModified(path, when);
}

// A photo made beside the hot folder and moved in at once, as a camera's
// software does, so that the folder sees one complete new file.
bool dropIntoFolder(const QString& staging, const QString& folder, const QString& name, const QDateTime& when,
                    quint32 seed, QSize size = QSize(160, 120))
{
    QDir().mkpath(staging);
    const QString staged = staging + QLatin1Char('/') + name;
    return writeFile(staged, when, seed, size) && QFile::rename(staged, folder + QLatin1Char('/') + name);
}

QFileSystemWatcher* watcherOf(Dialog& d)
{
    return d.findChild<QFileSystemWatcher*>();
}

QString readLog()
{
    QFile log(QStringLiteral("/tmp/log.txt"));
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

// Presses "PreSets" (shown for the test), picks `folder` with "Browse" (none
// when empty) and closes the Preset window from its title bar.
bool choosePresetFolder(Dialog& d, const QString& folder)
{
    auto handled = std::make_shared<bool>(false);
    ModalAnswerer::answerNext([folder, handled](QWidget* modal) {
        auto* preset = qobject_cast<Preset*>(modal);
        if (!preset)
            return false;
        if (!folder.isEmpty()) {
            auto seen = std::make_shared<FileDialogSeen>();
            answerFileDialog({folder}, seen);
            clickButton(preset->findChild<QPushButton*>(QStringLiteral("Browse")));
        }
        preset->close();
        *handled = true;
        return true;
    });
    QPushButton* presets = widgettest::WindowWidgets(d).Presets;
    presets->show();
    clickButton(presets);
    return *handled;
}

} // namespace

// The watched folder's change handler writes to the shared log.
class TestHotFolder : public widgettest::LoggedWindowTestCase
{
    Q_OBJECT

private slots:
    void presetFormAsBuilt();
    void browseTakesTheChosenFolder();
    void cancelledBrowseChangesNothing();

    void folderIsListedOldestFirstAndTheNewestShown();
    void folderNamedLikeAnImageIsNotListed();
    void pressingPresetsTwiceListsEveryImageTwice();
    void closingPresetWithoutAFolderScansTheCurrentFolder();

    void newPhotoIsListedAndShownThenDeletionAddsTheNewestAgain();
    void changeInFolderAAddsTheNewestOfB();
    void notificationWithNoImageInTheFolderDoesNothing();
};

void TestHotFolder::presetFormAsBuilt()
{
    Preset preset(nullptr);
    QCOMPARE(preset.objectName(), QStringLiteral("Preset"));
    QCOMPARE(preset.size(), QSize(524, 300));
    QCOMPARE(preset.windowTitle(), QStringLiteral("Dialog"));
    // Only a close button: Qt adds the title bar and system menu that a close
    // button needs, and nothing else.
    const Qt::WindowFlags hints = preset.windowFlags() & ~Qt::WindowType_Mask;
    QCOMPARE(hints & ~(Qt::WindowTitleHint | Qt::WindowSystemMenuHint), Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);
    QVERIFY(preset.isWindow());
    auto* browse = preset.findChild<QPushButton*>(QStringLiteral("Browse"));
    QVERIFY(browse);
    QCOMPARE(browse->geometry(), QRect(10, 30, 113, 32));
    QCOMPARE(browse->text(), QStringLiteral("Browse"));
    auto* path = preset.findChild<QLabel*>(QStringLiteral("Browsepath"));
    QVERIFY(path);
    QCOMPARE(path->geometry(), QRect(134, 34, 381, 20));
    QVERIFY(path->text().isEmpty());
    QCOMPARE(preset.findChildren<QPushButton*>().size(), 1);
    QVERIFY(!preset.findChild<QDialogButtonBox*>());

    preset.setWindowTitle(QStringLiteral("changed"));
    browse->setText(QStringLiteral("changed"));
    QEvent languageChange(QEvent::LanguageChange);
    QCoreApplication::sendEvent(&preset, &languageChange);
    QCOMPARE(preset.windowTitle(), QStringLiteral("Dialog"));
    QCOMPARE(browse->text(), QStringLiteral("Browse"));
}

void TestHotFolder::browseTakesTheChosenFolder()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString output = dir.path() + QStringLiteral("/out"), hot = dir.path() + QStringLiteral("/hot");
    QVERIFY(QDir().mkpath(output) && QDir().mkpath(hot));
    MyGlobal::outputDir = output;
    MyGlobal::HotFolder_FG = QStringLiteral("/previous/hot");

    Preset preset(nullptr);
    preset.show();
    QVERIFY(QTest::qWaitForWindowExposed(&preset));
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({hot}, seen);
    clickButton(preset.findChild<QPushButton*>(QStringLiteral("Browse")));

    QVERIFY(seen->answered);
    QVERIFY2(seen->widgetBased, "the folder chooser must be Qt's own dialog");
    QCOMPARE(seen->caption, QStringLiteral("Select Output Directory"));
    QCOMPARE(seen->directory, output); // the output folder, not the previous hot folder
    QCOMPARE(seen->fileMode, int(QFileDialog::Directory));
    QVERIFY(seen->showDirsOnly);
    QVERIFY(seen->dontResolveSymlinks);
    QCOMPARE(MyGlobal::HotFolder_FG, hot);
    QCOMPARE(preset.findChild<QLabel*>(QStringLiteral("Browsepath"))->text(), hot);
}

void TestHotFolder::cancelledBrowseChangesNothing()
{
    MyGlobal::HotFolder_FG = QStringLiteral("/previous/hot");
    Preset preset(nullptr);
    preset.show();
    QVERIFY(QTest::qWaitForWindowExposed(&preset));
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({}, seen);
    clickButton(preset.findChild<QPushButton*>(QStringLiteral("Browse")));
    QVERIFY(seen->answered);
    QCOMPARE(MyGlobal::HotFolder_FG, QStringLiteral("/previous/hot"));
    QVERIFY(preset.findChild<QLabel*>(QStringLiteral("Browsepath"))->text().isEmpty());
}

void TestHotFolder::folderIsListedOldestFirstAndTheNewestShown()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString hot = w.path("hot");
    QVERIFY(QDir().mkpath(hot));
    // Names in another order than their times, so the order can only come
    // from the times.
    QVERIFY(writeFile(hot + "/d.tiff", at(40), 4, QSize(200, 90)));
    QVERIFY(writeFile(hot + "/c.txt", at(30), 3));
    QVERIFY(writeFile(hot + "/b.PNG", at(20), 2));
    QVERIFY(writeFile(hot + "/a.jpg", at(10), 1));
    QVERIFY(writeFile(hot + "/.hidden.jpg", at(50), 5));
    QMap<QString, QByteArray> bytes;
    for (const QString& name : QDir(hot).entryList(QDir::Files | QDir::Hidden))
        bytes.insert(name, fileBytes(hot + "/" + name));
    const QStringList before = widgettest::itemTexts(ui->listWidget);

    QVERIFY(choosePresetFolder(d, hot));
    QCOMPARE(MyGlobal::HotFolder_FG, hot);
    QCOMPARE(widgettest::itemTexts(ui->listWidget), before + QStringList({hot + "/a.jpg", hot + "/b.PNG", hot + "/d.tiff"}));
    QCOMPARE(ui->listWidget->currentRow(), before.size() + 2);
    QCOMPARE(selectedTexts(ui->listWidget), QStringList({hot + "/d.tiff"}));
    QCOMPARE(MyGlobal::CurSelection, hot + "/d.tiff");
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(hot + "/d.tiff")));
    QCOMPARE(DialogTestAccess::background(d).size(), QSize(200, 90));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(hot + "/d.tiff")));
    QCOMPARE(watcherOf(d)->directories(), QStringList({hot}));
    for (auto it = bytes.cbegin(); it != bytes.cend(); ++it)
        QCOMPARE(fileBytes(hot + "/" + it.key()), it.value());
}

void TestHotFolder::folderNamedLikeAnImageIsNotListed()
{
    Window w;
    QVERIFY(w.ok());
    Dialog& d = *w.dialog;
    const QString hot = w.path("hot");
    QVERIFY(QDir().mkpath(hot + "/x.jpg"));
    QVERIFY(writeFile(hot + "/photo.jpg", at(1), 1));
    const QStringList before = widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget);
    QVERIFY(choosePresetFolder(d, hot));
    QCOMPARE(widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget), before + QStringList({hot + "/photo.jpg"}));
}

void TestHotFolder::pressingPresetsTwiceListsEveryImageTwice()
{
    Window w;
    QVERIFY(w.ok());
    Dialog& d = *w.dialog;
    const QString hot = w.path("hot");
    QVERIFY(QDir().mkpath(hot));
    QVERIFY(writeFile(hot + "/one.jpg", at(1), 1));
    QVERIFY(writeFile(hot + "/two.png", at(2), 2));
    const QStringList before = widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget);
    QVERIFY(choosePresetFolder(d, hot));
    // The second time the folder is not chosen again: the hot folder stays.
    QVERIFY(choosePresetFolder(d, QString()));
    const QStringList twice({hot + "/one.jpg", hot + "/two.png", hot + "/one.jpg", hot + "/two.png"});
    QCOMPARE(widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget), before + twice);
    QCOMPARE(watcherOf(d)->directories(), QStringList({hot}));
}

void TestHotFolder::closingPresetWithoutAFolderScansTheCurrentFolder()
{
    Window w;
    QVERIFY(w.ok());
    Dialog& d = *w.dialog;
    // The process's current folder holds no image, so the scan adds nothing
    // and the photo on show is read again from its file.
    const QString here = w.path("cwd");
    QVERIFY(QDir().mkpath(here));
    QVERIFY(writeFile(here + "/notes.txt", at(1), 1));
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(here));
    pressPreview(d, 20, 20);
    const QStringList before = widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget);

    const bool handled = choosePresetFolder(d, QString());
    QDir::setCurrent(previous);
    QVERIFY(handled);
    QCOMPARE(MyGlobal::HotFolder_FG, QString());
    QCOMPARE(widgettest::itemTexts(widgettest::WindowWidgets(d).listWidget), before);
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(w.path("1green.JPG"))));
    QVERIFY(watcherOf(d)->directories().isEmpty()); // the empty path is refused
}

void TestHotFolder::newPhotoIsListedAndShownThenDeletionAddsTheNewestAgain()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString hot = w.path("hot"), staging = w.path("staging");
    QVERIFY(QDir().mkpath(hot));
    QVERIFY(writeFile(hot + "/old1.jpg", at(1), 1));
    QVERIFY(writeFile(hot + "/old2.jpg", at(2), 2));
    QVERIFY(choosePresetFolder(d, hot));
    const int listed = ui->listWidget->count();
    pressPreview(d, 20, 20);
    const QPoint keyPoint = MyGlobal::xyClicked;
    const QSize bkgSize = DialogTestAccess::background(d).size();
    const QString cameraShot = hot + "/IMG_0003.JPG";

    // A new photo, newest by its time, of another size than the others.
    QVERIFY(dropIntoFolder(staging, hot, "IMG_0003.JPG", at(3), 3, QSize(140, 180)));
    const QByteArray shotBytes = fileBytes(cameraShot);
    QTRY_COMPARE_WITH_TIMEOUT(ui->listWidget->count(), listed + 1, kWatchTimeoutMs);
    QTRY_COMPARE_WITH_TIMEOUT(MyGlobal::CurSelection, cameraShot, kWatchTimeoutMs);
    QTest::qWait(300); // no second notification follows for the same photo
    QCOMPARE(ui->listWidget->count(), listed + 1);
    QCOMPARE(ui->listWidget->item(listed)->text(), cameraShot);
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(cameraShot)));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(cameraShot)));
    // Fitted into the 415 x 345 preview box, shape kept.
    QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(d)).size(), QSize(268, 345));
    // Nothing is keyed, the key point stays and the background keeps its size.
    QCOMPARE(MyGlobal::xyClicked, keyPoint);
    QCOMPARE(DialogTestAccess::background(d).size(), bkgSize);
    // The new item is appended without being made current.
    QCOMPARE(ui->listWidget->currentRow(), listed - 1);
    QVERIFY(readLog().contains(QStringLiteral("Directory Changed...") + hot + QStringLiteral("\n")));

    // Deleting another photo is a change as well: the newest comes again.
    QVERIFY(QFile::remove(hot + "/old1.jpg"));
    QTRY_COMPARE_WITH_TIMEOUT(ui->listWidget->count(), listed + 2, kWatchTimeoutMs);
    QCOMPARE(ui->listWidget->item(listed + 1)->text(), cameraShot);
    QCOMPARE(MyGlobal::CurSelection, cameraShot);
    QCOMPARE(MyGlobal::LasHotFile, QString());
    QCOMPARE(readLog().count(QStringLiteral("Directory Changed...") + hot + QStringLiteral("\n")), 2);
    QCOMPARE(fileBytes(cameraShot), shotBytes);
}

void TestHotFolder::changeInFolderAAddsTheNewestOfB()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString a = w.path("A"), b = w.path("B"), staging = w.path("staging");
    QVERIFY(QDir().mkpath(a) && QDir().mkpath(b));
    QVERIFY(writeFile(a + "/a1.jpg", at(1), 1));
    QVERIFY(writeFile(b + "/b1.jpg", at(2), 2));
    QVERIFY(writeFile(b + "/b2.png", at(5), 3));
    QVERIFY(writeFile(b + "/b0.png", at(0), 4));
    QVERIFY(choosePresetFolder(d, a));
    QVERIFY(choosePresetFolder(d, b));
    QCOMPARE(MyGlobal::HotFolder_FG, b);
    QStringList watched = watcherOf(d)->directories();
    watched.sort();
    QCOMPARE(watched, QStringList({a, b}));
    const int listed = ui->listWidget->count();

    // Newer than everything in B, but it is B's newest that comes.
    QVERIFY(dropIntoFolder(staging, a, "a2.jpg", at(9), 5));
    QTRY_COMPARE_WITH_TIMEOUT(ui->listWidget->count(), listed + 1, kWatchTimeoutMs);
    QCOMPARE(ui->listWidget->item(listed)->text(), b + "/b2.png");
    QCOMPARE(MyGlobal::CurSelection, b + "/b2.png");
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(b + "/b2.png")));
    QVERIFY(readLog().contains(QStringLiteral("Directory Changed...") + a + QStringLiteral("\n")));
}

void TestHotFolder::notificationWithNoImageInTheFolderDoesNothing()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString hot = w.path("hot"), staging = w.path("staging");
    QVERIFY(QDir().mkpath(hot));
    QVERIFY(writeFile(hot + "/readme.txt", at(1), 1));
    QVERIFY(choosePresetFolder(d, hot));
    const QStringList before = widgettest::itemTexts(ui->listWidget);
    const QString shown = MyGlobal::CurSelection;
    markPreview(d);

    QVERIFY(dropIntoFolder(staging, hot, "more.txt", at(2), 2));
    // The log line shows that the notification came and was handled.
    QTRY_VERIFY_WITH_TIMEOUT(readLog().contains(QStringLiteral("Directory Changed...") + hot + QStringLiteral("\n")),
                             kWatchTimeoutMs);
    QCOMPARE(widgettest::itemTexts(ui->listWidget), before);
    QCOMPARE(MyGlobal::CurSelection, shown);
    QVERIFY(!previewRedrawnSinceMark(d));
}

PLENDRA_TEST_MAIN(TestHotFolder)
#include "tst_hotfolder.moc"
