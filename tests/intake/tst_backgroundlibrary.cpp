// SPDX-License-Identifier: MIT
// BACKGROUNDS: start-up filling from "Bkg", the "Add" dialog, "Remove" and
// clicks on backgrounds with and without a key point.

#include "tests/fixture/windowfixture.h"

#include "state/globals.h"
#include "keying/keymask.h"
#include "mainwindow/dialog.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QListWidget>
#include <QTest>

using namespace widgettest;
using testsupport::fileBytes;
using testsupport::samePixels;

namespace {

QImage fitted(const QString& path, QSize size)
{
    return QImage(path).scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

// Names and bytes of every file under `folder`, to show that nothing was
// written, copied in or deleted.
QMap<QString, QByteArray> folderContents(const QString& folder)
{
    QMap<QString, QByteArray> contents;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        contents.insert(path, fileBytes(path));
    }
    return contents;
}

} // namespace

class TestBackgroundLibrary : public widgettest::WindowTestCase
{
    Q_OBJECT

private slots:
    void bkgFolderListsPngAndJpgOnlyInNameOrder();
    void addDialogHasTheForegroundCaptionAndFilter();
    void addingTwoBackgroundsMakesTheSecondCurrentWithoutRedraw();
    void cancellingAddReloadsTheBackgroundFromItsFile();
    void clickingABackgroundAfterAKeyPointRekeysAtThatPoint();
    void clickingABackgroundWithoutKeyPointLeavesThePreview();
    void removeShowsTheNextBackground();
    void removingEveryBackgroundKeepsTheLastRemovedOne();
    void restartShowsOnlyTheBkgFolderAgain();
};

void TestBackgroundLibrary::bkgFolderListsPngAndJpgOnlyInNameOrder()
{
    Window w({QStringLiteral("b.png"), QStringLiteral("A.JPG"), QStringLiteral("d.jpeg")});
    QVERIFY(w.ok());
    {
        QFile gif(w.path("Bkg/c.gif"));
        QVERIFY(gif.open(QIODevice::WriteOnly));
        gif.write("GIF89a");
    }
    // The window read "Bkg" before c.gif was there; a second window reads it now.
    widgettest::Window againFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(againFixture.ok());
    const auto [again, ui] = againFixture.parts();
    QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk), QStringList({w.path("Bkg/A.JPG"), w.path("Bkg/b.png")}));
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/A.JPG"));
    QVERIFY(samePixels(DialogTestAccess::background(again), fitted(w.path("Bkg/A.JPG"), QSize(320, 240))));
    // Start-up thumbnails are square.
    QCOMPARE(ui->listWidget_Bk->item(0)->icon().availableSizes(), QList<QSize>({QSize(64, 64)}));
}

void TestBackgroundLibrary::addDialogHasTheForegroundCaptionAndFilter()
{
    checkAddDialog(QStringLiteral("AddBackground"));
}

void TestBackgroundLibrary::addingTwoBackgroundsMakesTheSecondCurrentWithoutRedraw()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString first = w.path("extra/sky.png"), second = w.path("extra/Sea.JPG");
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(500, 300, 41), first));
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(150, 400, 42), second));
    const auto before = folderContents(w.dir.path());
    markPreview(d);

    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({first, second}, seen);
    clickButton(ui->AddBackground);
    QVERIFY(seen->answered);

    QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk),
             QStringList({w.path("Bkg/a.jpg"), w.path("Bkg/b.png"), first, second}));
    QCOMPARE(ui->listWidget_Bk->currentRow(), 3);
    QCOMPARE(selectedTexts(ui->listWidget_Bk), QStringList({second}));
    QCOMPARE(MyGlobal::CurSelectionBk, second);
    QVERIFY(samePixels(DialogTestAccess::background(d), fitted(second, QSize(320, 240))));
    QCOMPARE(ui->listWidget_Bk->item(3)->icon().availableSizes(), QList<QSize>({QSize(74, 64)}));
    QVERIFY(!previewRedrawnSinceMark(d));
    QCOMPARE(folderContents(w.dir.path()), before);
}

void TestBackgroundLibrary::cancellingAddReloadsTheBackgroundFromItsFile()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    // A photo of another size rescales the background from its pixels twice:
    // 320 x 240 -> 37 x 29 -> 320 x 240 loses its detail.
    const QString tiny = w.path("tiny.png");
    QVERIFY(testsupport::writeImage(testsupport::studioShot(37, 29, QColor(40, 180, 60), 3), tiny));
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({tiny}, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);
    clickRow(ui->listWidget, 0);
    QCOMPARE(DialogTestAccess::background(d).size(), QSize(320, 240));
    const QImage fromFile = fitted(w.path("Bkg/a.jpg"), QSize(320, 240));
    QVERIFY(!samePixels(DialogTestAccess::background(d), fromFile));
    markPreview(d);

    auto cancel = std::make_shared<FileDialogSeen>();
    answerFileDialog({}, cancel);
    clickButton(ui->AddBackground);
    QVERIFY(cancel->answered);

    QCOMPARE(ui->listWidget_Bk->count(), 2);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/a.jpg"));
    QVERIFY(samePixels(DialogTestAccess::background(d), fromFile));
    QVERIFY(!previewRedrawnSinceMark(d));
}

void TestBackgroundLibrary::clickingABackgroundAfterAKeyPointRekeysAtThatPoint()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QPoint keyPoint(25, 30); // on the green backdrop, away from the subject
    pressPreview(d, keyPoint.x(), keyPoint.y());
    QCOMPARE(MyGlobal::xyClicked, keyPoint);
    const QImage keyedOnA = DialogTestAccess::foreground(d);

    clickRow(ui->listWidget_Bk, 1);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/b.png"));
    QCOMPARE(MyGlobal::xyClicked, keyPoint);

    // What one key click at that point gives against b.png.
    const QImage backgroundB = fitted(w.path("Bkg/b.png"), QSize(320, 240));
    QImage expected(w.path("1green.JPG"));
    const int px = expected.width() * keyPoint.x() / ui->graphicsView->width();
    const int py = expected.height() * keyPoint.y() / ui->graphicsView->height();
    keying::maskOut(expected, backgroundB, expected.pixel(px, py));
    QVERIFY(samePixels(DialogTestAccess::foreground(d), expected));
    QVERIFY(!samePixels(DialogTestAccess::foreground(d), keyedOnA));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), expected));
    // The backdrop corner now shows b.png, the subject's middle is kept.
    QCOMPARE(DialogTestAccess::foreground(d).pixel(2, 2), backgroundB.pixel(2, 2));
    QCOMPARE(DialogTestAccess::foreground(d).pixel(160, 200), QImage(w.path("1green.JPG")).pixel(160, 200));
}

void TestBackgroundLibrary::clickingABackgroundWithoutKeyPointLeavesThePreview()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QPixmap shown = widgettest::shownPixmap(DialogTestAccess::scene(d));
    markPreview(d);

    clickRow(ui->listWidget_Bk, 1);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/b.png"));
    QCOMPARE(selectedTexts(ui->listWidget_Bk), QStringList({w.path("Bkg/b.png")}));
    QVERIFY(samePixels(DialogTestAccess::background(d), fitted(w.path("Bkg/b.png"), QSize(320, 240))));
    QVERIFY(!previewRedrawnSinceMark(d));
    QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(d)).cacheKey(), shown.cacheKey());
    QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
}

void TestBackgroundLibrary::removeShowsTheNextBackground()
{
    Window w({QStringLiteral("a.jpg"), QStringLiteral("b.png"), QStringLiteral("c.png")});
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const auto before = folderContents(w.dir.path());
    clickRow(ui->listWidget_Bk, 0);
    markPreview(d);

    clickButton(ui->RemoveBackground);
    QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk), QStringList({w.path("Bkg/b.png"), w.path("Bkg/c.png")}));
    QCOMPARE(ui->listWidget_Bk->currentRow(), 0);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/b.png"));
    QVERIFY(samePixels(DialogTestAccess::background(d), fitted(w.path("Bkg/b.png"), QSize(320, 240))));
    QVERIFY(previewRedrawnSinceMark(d));
    QCOMPARE(folderContents(w.dir.path()), before);
}

void TestBackgroundLibrary::removingEveryBackgroundKeepsTheLastRemovedOne()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    clickRow(ui->listWidget_Bk, 0);
    clickButton(ui->RemoveBackground);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/b.png"));
    clickRow(ui->listWidget_Bk, 0);
    clickButton(ui->RemoveBackground);

    QCOMPARE(ui->listWidget_Bk->count(), 0);
    QCOMPARE(MyGlobal::CurSelectionBk, w.path("Bkg/b.png"));
    QVERIFY(samePixels(DialogTestAccess::background(d), fitted(w.path("Bkg/b.png"), QSize(320, 240))));
    // Keying still works with the removed picture.
    pressPreview(d, 25, 30);
    QCOMPARE(DialogTestAccess::foreground(d).pixel(2, 2), fitted(w.path("Bkg/b.png"), QSize(320, 240)).pixel(2, 2));
    QVERIFY(QFile::exists(w.path("Bkg/a.jpg")) && QFile::exists(w.path("Bkg/b.png")));
}

void TestBackgroundLibrary::restartShowsOnlyTheBkgFolderAgain()
{
    Window w;
    QVERIFY(w.ok());
    const widgettest::WindowWidgets ui(*w.dialog);
    const QString added = w.path("elsewhere/added.png");
    QVERIFY(testsupport::writeImage(testsupport::backgroundPicture(64, 48, 5), added));
    const auto before = folderContents(w.dir.path());
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({added}, seen);
    clickButton(ui->AddBackground);
    QVERIFY(seen->answered);
    clickRow(ui->listWidget_Bk, 0);
    clickButton(ui->RemoveBackground);
    QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk), QStringList({w.path("Bkg/b.png"), added}));

    w.dialog.reset();
    widgettest::Window restartedFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
    QVERIFY(restartedFixture.ok());
    Dialog& restarted = *restartedFixture.dialog;
    QCOMPARE(widgettest::itemTexts(widgettest::WindowWidgets(restarted).listWidget_Bk),
             QStringList({w.path("Bkg/a.jpg"), w.path("Bkg/b.png")}));
    QCOMPARE(folderContents(w.dir.path()), before);
}

PLENDRA_TEST_MAIN(TestBackgroundLibrary)
#include "tst_backgroundlibrary.moc"
