// SPDX-License-Identifier: MIT
// Hostile files through "Add" (Qt's own file dialog, answered for real) of
// both lists, and dropped on both lists and on the window.

#include "tests/hostile_intake/hostileintake.h"
#include "tests/fixture/windowfixture.h"

#include "state/globals.h"
#include "mainwindow/dialog.h"

#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <QUrl>

using namespace hostiletest;
using namespace widgettest;
using testsupport::HostileKind;

namespace {

// Types a folder's path into Qt's file dialog and presses Return: a folder
// cannot be chosen as a file, the dialog opens it instead. `opened` tells
// whether it did (the dialog still open, showing the folder); then the dialog
// is cancelled.
void answerWithFolder(const QString& folder, std::shared_ptr<bool> answered, std::shared_ptr<bool> opened)
{
    widgettest::ModalAnswerer::answerNext([folder, answered, opened](QWidget* modal) {
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        auto* edit = dialog ? dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")) : nullptr;
        if (!edit)
            return false;
        edit->setFocus();
        edit->setText(folder);
        QTest::keyClick(edit, Qt::Key_Return);
        *opened = dialog->isVisible() && dialog->directory().absolutePath() == folder;
        *answered = true;
        QTest::keyClick(dialog, Qt::Key_Escape);
        return true;
    });
}

// Clicks `add` and types `folder` into its file dialog: the dialog opens the
// folder rather than returning it, and is cancelled.
void checkFolderIsOpenedNotChosen(QPushButton* add, const QString& folder)
{
    auto answered = std::make_shared<bool>(false), opened = std::make_shared<bool>(false);
    answerWithFolder(folder, answered, opened);
    widgettest::clickButton(add);
    QVERIFY(*answered);
    QVERIFY2(*opened, "the dialog should have opened the folder");
}

// Reports each item the list gains: whether its text is `expected` exactly,
// and whether it has a thumbnail.
void reportListing(QListWidget* list, const QString& expected)
{
    QObject::connect(list->model(), &QAbstractItemModel::rowsInserted, list, [list, expected](const QModelIndex&, int first, int) {
        QListWidgetItem* item = list->item(first);
        childReport(QStringLiteral("listed ") + (item->text() == expected ? QStringLiteral("intact") : QStringLiteral("changed"))
                    + (item->icon().isNull() ? QStringLiteral(" without thumbnail") : QStringLiteral(" with thumbnail")));
    });
}

} // namespace

// "Add" under FOREGROUNDS with a file that is no picture: it is listed with
// an empty icon, becomes the photo, and the refresh stops on "!pix.isNull()".
PLENDRA_CHILD_SCENARIO("addForegroundNoPicture")
{
    auto window = openChildWindow();
    if (!window)
        return;
    const widgettest::WindowWidgets ui(*window);
    const QString path = qEnvironmentVariable(kPathVariable);
    reportListing(ui->listWidget, path);
    auto seen = std::make_shared<widgettest::FileDialogSeen>();
    widgettest::answerFileDialog({path}, seen);
    widgettest::clickButton(ui->AddForegGround);
    childReport(QStringLiteral("add returned"));
}

class TestHostileAddDrop : public LoggedHostileIntakeTestCase
{
    Q_OBJECT

private slots:
    void addForeground_data() { addCorpusRows(); }
    void addForeground();
    void addBackground_data() { addCorpusRows(); }
    void addBackground();

    void dropOnForegrounds_data() { dropRows(); }
    void dropOnForegrounds() { dropOnList(false); }
    void dropOnBackgrounds_data() { dropRows(); }
    void dropOnBackgrounds() { dropOnList(true); }
    void dropOnWindow_data() { dropRows(); }
    void dropOnWindow();
    void dropTheWholeCorpusAtOnce_data();
    void dropTheWholeCorpusAtOnce();

private:
    void dropRows();
    void dropOnList(bool backgrounds);
};

// Designed outcome of "Add" under FOREGROUNDS, by what the chosen path is:
// - a picture: listed with its path exactly as chosen (blanks, non-ASCII
//   letters and 250 characters intact), a 74 x 64 thumbnail, made current and
//   shown, the background fitted to it;
// - no picture: listed with an empty icon, the photo becomes null and the
//   refresh stops on "!pix.isNull()" (in a child);
// - a folder: Qt's dialog opens it rather than returning it; after the cancel
//   nothing is listed, and the current photo is read again from its file.
void TestHostileAddDrop::addForeground()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString path = entry.path;
    const QString green = c.appDir() + QStringLiteral("/1green.JPG");
    c.takeSnapshots();

    if (entry.kind == HostileKind::Unreadable) {
        const testsupport::ChildRun run = c.runChild(QStringLiteral("addForegroundNoPicture"), path);
        checkStoppedAtRefresh(run, {"window open", "listed intact without thumbnail"});
        return;
    }

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
    const QStringList before = itemTexts(ui->listWidget);
    if (entry.kind == HostileKind::Folder) {
        checkFolderIsOpenedNotChosen(ui->AddForegGround, path);
        QCOMPARE(itemTexts(ui->listWidget), before);
        QCOMPARE(MyGlobal::CurSelection, green);
        QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), QImage(green)));
        QVERIFY(testsupport::samePixels(DialogTestAccess::preview(d).toImage(), asShown(QImage(green))));
    } else {
        auto seen = std::make_shared<widgettest::FileDialogSeen>();
        widgettest::answerFileDialog({path}, seen);
        widgettest::clickButton(ui->AddForegGround);
        QVERIFY(seen->answered);
        QVERIFY(seen->widgetBased);
        QCOMPARE(itemTexts(ui->listWidget), before + QStringList({path}));
        const int row = before.size();
        QCOMPARE(ui->listWidget->item(row)->icon().availableSizes(), QList<QSize>({QSize(74, 64)}));
        QCOMPARE(ui->listWidget->currentRow(), row);
        checkPhotoChosen(d, path);
    }
}

// Designed outcome of "Add" under BACKGROUNDS: the path is listed exactly as
// chosen (an empty icon when it is no picture), made current and becomes the
// background, fitted to the photo, or null when it is no picture; nothing is
// reported and the preview is not redrawn. A folder is opened by the dialog,
// not returned; after the cancel nothing is listed and the current background
// is read again from its file.
void TestHostileAddDrop::addBackground()
{
    HostileCase& c = hostileCase();
    const testsupport::HostileEntry entry = rowEntry();
    const QString path = entry.path;
    const QString green = c.appDir() + QStringLiteral("/1green.JPG");
    const QString firstBackground = c.appDir() + QStringLiteral("/Bkg/a.jpg");
    c.takeSnapshots();

    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const auto [d, ui] = widgettest::windowParts(*window);
    const QImage photo(green);
    const QStringList before = itemTexts(ui->listWidget_Bk);
    widgettest::markPreview(d);
    if (entry.kind == HostileKind::Folder) {
        checkFolderIsOpenedNotChosen(ui->AddBackground, path);
        QCOMPARE(itemTexts(ui->listWidget_Bk), before);
        QCOMPARE(MyGlobal::CurSelectionBk, firstBackground);
        QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), fittedTo(QImage(firstBackground), photo.size())));
    } else {
        auto seen = std::make_shared<widgettest::FileDialogSeen>();
        widgettest::answerFileDialog({path}, seen);
        widgettest::clickButton(ui->AddBackground);
        QVERIFY(seen->answered);
        QCOMPARE(itemTexts(ui->listWidget_Bk), before + QStringList({path}));
        const int row = before.size();
        QCOMPARE(hasThumbnail(ui->listWidget_Bk, row), entry.kind == HostileKind::Image);
        QCOMPARE(ui->listWidget_Bk->currentRow(), row);
        QCOMPARE(MyGlobal::CurSelectionBk, path);
        if (entry.kind == HostileKind::Image)
            QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), fittedTo(QImage(path), photo.size())));
        else
            QVERIFY(DialogTestAccess::background(d).isNull());
    }
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    QCOMPARE(MyGlobal::CurSelection, green);
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), photo));
}

void TestHostileAddDrop::dropRows()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QString>("listedAs");
    // Every corpus entry, dropped as the desktop hands over a file: its path
    // ends in an image type (album_png too: the test is a bare ending), so
    // each is listed.
    const QList<testsupport::HostileEntry>& corpus = corpusEntries();
    QVERIFY(!corpus.isEmpty());
    for (int i = 0; i < corpus.size(); ++i)
        QTest::newRow(qPrintable(corpus.at(i).name)) << i << int(corpus.at(i).kind) << QUrl() << QString();
    // Addresses that name no local file: nothing is listed.
    const int other = int(HostileKind::Unreadable);
    QTest::newRow("http address") << -1 << other << QUrl(QStringLiteral("http://example.com/photo.jpg")) << QString();
    QTest::newRow("https address") << -1 << other << QUrl(QStringLiteral("https://example.com/pictures/a.png")) << QString();
    QTest::newRow("ftp address") << -1 << other << QUrl(QStringLiteral("ftp://example.com/a.tif")) << QString();
    QTest::newRow("data address") << -1 << other << QUrl(QStringLiteral("data:image/png;base64,iVBORw0KGgo=")) << QString();
    QTest::newRow("empty address") << -1 << other << QUrl() << QString();
    QTest::newRow("relative address") << -1 << other << QUrl(QStringLiteral("photo.png")) << QString();
    // A file address naming another host keeps the host in its local path;
    // that path ends in "png", so it is listed, with an empty icon.
    QTest::newRow("file address on another host") << -1 << other << QUrl(QStringLiteral("file://server/share/photo.png"))
                                                  << QStringLiteral("//server/share/photo.png");
    // A percent-encoded NUL reaches the path as a NUL character, which no file
    // name can hold: listed (the ending is "png"), with an empty icon.
    QTest::newRow("file address with a NUL")
        << -1 << other << QUrl(QStringLiteral("file:///nonexistent-plendra-folder/a%00b.png"))
        << QStringLiteral("/nonexistent-plendra-folder/a") + QChar(0) + QStringLiteral("b.png");
    QTest::newRow("file address of a missing file") << -1 << other
                                                    << QUrl::fromLocalFile(QStringLiteral("/nonexistent-plendra-folder/missing.jpg"))
                                                    << QStringLiteral("/nonexistent-plendra-folder/missing.jpg");
}

namespace {

// A drop row on the case `c`, with the window open on it once the snapshots
// are taken: the URL the row drops, and the text it lists (empty when
// nothing) with or without a thumbnail.
struct DropCase
{
    QUrl dropped;
    QString listed;
    bool thumbnail = false;
    std::unique_ptr<Dialog> window;

    explicit DropCase(HostileCase& c)
    {
        QFETCH(int, index);
        QFETCH(QUrl, url);
        QFETCH(QString, listedAs);
        if (index >= 0) {
            const testsupport::HostileEntry entry = c.entry(index);
            dropped = QUrl::fromLocalFile(entry.path);
            listed = entry.path;
            thumbnail = entry.kind == HostileKind::Image;
        } else {
            dropped = url;
            listed = listedAs;
        }
        c.takeSnapshots();
        window = openWindow(c.appDir());
    }
};

} // namespace

// Designed outcome of a drop on a list: every local path ending in an image
// type is appended with its path exactly as dropped (an empty icon when it is
// no picture); addresses that name no local file add nothing. Either way the
// list's first row becomes current, and nothing else changes: not the photo,
// the background, the chosen paths, the other list or the preview.
void TestHostileAddDrop::dropOnList(bool backgrounds)
{
    DropCase drop(hostileCase());
    QVERIFY(drop.window);
    Dialog& d = *drop.window;
    const widgettest::WindowWidgets ui(d);
    QListWidget* target = backgrounds ? ui->listWidget_Bk : ui->listWidget;
    QListWidget* other = backgrounds ? ui->listWidget : ui->listWidget_Bk;
    // Another row current first, so that the drop's making row 0 current shows.
    target->setCurrentRow(1);
    const QStringList before = itemTexts(target), otherBefore = itemTexts(other);
    const QImage foreground = DialogTestAccess::foreground(d), background = DialogTestAccess::background(d);
    const QString selection = MyGlobal::CurSelection, selectionBk = MyGlobal::CurSelectionBk;
    widgettest::markPreview(d);

    QVERIFY(dropUrls(target->viewport(), {drop.dropped}, target->viewport()->rect().center()));

    const QStringList expected = drop.listed.isEmpty() ? before : before + QStringList({drop.listed});
    QCOMPARE(itemTexts(target), expected);
    if (!drop.listed.isEmpty()) {
        QCOMPARE(hasThumbnail(target, before.size()), drop.thumbnail);
        if (drop.thumbnail)
            QCOMPARE(target->item(before.size())->icon().availableSizes(), QList<QSize>({QSize(74, 64)}));
    }
    QCOMPARE(target->currentRow(), 0);
    QCOMPARE(itemTexts(other), otherBefore);
    QVERIFY(!widgettest::previewRedrawnSinceMark(d));
    QCOMPARE(MyGlobal::CurSelection, selection);
    QCOMPARE(MyGlobal::CurSelectionBk, selectionBk);
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), foreground));
    QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), background));
}

// Designed outcome of a drop on the window outside the lists: the log gets
// the drop point and the list's viewport address, nothing is listed, the
// first photo row becomes current and the preview is redrawn from the photo
// as it is; whatever the drop carries makes no difference.
void TestHostileAddDrop::dropOnWindow()
{
    DropCase drop(hostileCase());
    QVERIFY(drop.window);
    Dialog& d = *drop.window;
    const widgettest::WindowWidgets ui(d);
    widgettest::clickRow(ui->listWidget, 1);
    const QStringList before = itemTexts(ui->listWidget), beforeBk = itemTexts(ui->listWidget_Bk);
    const QImage foreground = DialogTestAccess::foreground(d), background = DialogTestAccess::background(d);
    widgettest::markPreview(d);

    const QPoint at(185, 445); // between FOREGROUNDS and the preview, below both
    QVERIFY(dropUrls(&d, {drop.dropped}, at));

    QCOMPARE(itemTexts(ui->listWidget), before);
    QCOMPARE(itemTexts(ui->listWidget_Bk), beforeBk);
    QCOMPARE(ui->listWidget->currentRow(), 0);
    QVERIFY(widgettest::previewRedrawnSinceMark(d));
    QVERIFY(testsupport::samePixels(DialogTestAccess::foreground(d), foreground));
    QVERIFY(testsupport::samePixels(DialogTestAccess::background(d), background));
    QVERIFY(testsupport::samePixels(DialogTestAccess::preview(d).toImage(), asShown(foreground)));
    MyGlobal::log.flush();
    QFile log(QStringLiteral("/tmp/log.txt"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QString logged = QString::fromUtf8(log.readAll());
    QVERIFY2(logged.startsWith(QStringLiteral("Droppoint= (185, 445)\nx0x")), qPrintable(logged));
}

void TestHostileAddDrop::dropTheWholeCorpusAtOnce_data()
{
    QTest::addColumn<int>("target");
    QTest::newRow("FOREGROUNDS") << 0;
    QTest::newRow("BACKGROUNDS") << 1;
}

// Designed outcome: one drop of every corpus entry and every other address
// lists the corpus entries in the order dropped and nothing else.
void TestHostileAddDrop::dropTheWholeCorpusAtOnce()
{
    QFETCH(int, target);
    HostileCase& c = hostileCase();
    QList<QUrl> urls;
    QStringList listed;
    for (const testsupport::HostileEntry& entry : c.corpus()) {
        urls << QUrl::fromLocalFile(entry.path) << QUrl(QStringLiteral("http://example.com/a.png")) << QUrl();
        listed << entry.path;
    }
    c.takeSnapshots();
    auto window = openWindow(c.appDir());
    QVERIFY(window);
    const widgettest::WindowWidgets ui(*window);
    QListWidget* list = target == 0 ? ui->listWidget : ui->listWidget_Bk;
    const QStringList before = itemTexts(list);
    QVERIFY(dropUrls(list->viewport(), urls, QPoint(10, 10)));
    QCOMPARE(itemTexts(list), before + listed);
    for (int i = 0; i < c.corpus().size(); ++i)
        QCOMPARE(hasThumbnail(list, before.size() + i), c.corpus().at(i).kind == HostileKind::Image);
    QCOMPARE(list->currentRow(), 0);
}

PLENDRA_TEST_MAIN(TestHostileAddDrop)
#include "tst_hostile_add_drop.moc"
