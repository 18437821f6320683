// SPDX-License-Identifier: MIT
// FOREGROUNDS: the "Add" dialog, "Remove", clicks on items, drops on the
// window, and the supported image types.

#include "tests/fixture/windowfixture.h"

#include "state/globals.h"
#include "intake/imagetypes.h"
#include "mainwindow/dialog.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QListWidget>
#include <QMimeData>
#include <QTest>
#include <QUrl>

using namespace widgettest;
using testsupport::fileBytes;
using testsupport::samePixels;

namespace {

// Writes a studio shot of the given size into the window's folder.
QString writePhoto(const Window& w, const QString& name, int width, int height, QColor backdrop, quint32 seed)
{
    const QString path = w.path(name);
    if (!testsupport::writeImage(testsupport::studioShot(width, height, backdrop, seed), path))
        return QString();
    return path;
}

QList<QSize> iconSizes(const QListWidgetItem* item)
{
    return item->icon().availableSizes(QIcon::Normal, QIcon::Off);
}

} // namespace

// With no background at all, choosing a photo leaves the background null
// while the photo is not: the window must stop on its size check.
PLENDRA_CHILD_SCENARIO("clickWithoutBackground")
{
    QTemporaryDir dir;
    if (!testsupport::makeSampleFolder(dir.path(), {}))
        return;
    MyGlobal::appDir = dir.path();
    widgettest::Window dialogFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
    QVERIFY(dialogFixture.ok());
    Dialog& dialog = *dialogFixture.dialog;
    if (!QTest::qWaitForWindowExposed(&dialog))
        return;
    clickRow(widgettest::WindowWidgets(dialog).listWidget, 1);
}

class TestForegroundList : public widgettest::WindowTestCase
{
    Q_OBJECT

private slots:
    void supportedTypesInTheirThreeForms();
    void droppedEndings_data();
    void droppedEndings();

    void addDialogIsQtsOwnWithCaptionAndFilter();
    void addingThreeFilesMakesTheThirdCurrent();
    void cancellingAddAddsNothingButReloadsTheForeground();
    void unreadableFileGetsAnItemWithEmptyIcon();
    void sameFileAddedTwiceGivesTwoItems();

    void removeTakesTheCurrentRowOncePerSelectedItem();
    void removeTakesTheOneSelectedCurrentItem();
    void removingTheLastItemLeavesTheRemovedPhotoShown();

    void clickingAnItemShowsItAndFitsTheBackground();
    void clickingAnItemAfterAKeyPointClearsIt();
    void sizeCheckStopsTheProgramWithItsFixedLine();

    void dropOnTheWindowLogsAndAddsNothing();
};

void TestForegroundList::supportedTypesInTheirThreeForms()
{
    QCOMPARE(QString::fromLatin1(kImageFileDialogFilter),
             QStringLiteral("Images (*.jpeg *.jpg *.tiff *.tif *.bmp *.png *.xpm)"));
    QCOMPARE(kDroppedImageEndings, QStringList({"jpg", "jpeg", "bmp", "png", "tiff", "tif", "xpm"}));
    QCOMPARE(kWatchedFolderNameFilters, QStringList({"*.jpeg", "*.jpg", "*.tiff", "*.tif", "*.bmp", "*.png", "*.xpm"}));
}

void TestForegroundList::droppedEndings_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("image");
    QTest::newRow("upper-case JPG") << "/x/photo.JPG" << true;
    QTest::newRow("mixed-case Jpeg") << "/x/photo.Jpeg" << true;
    QTest::newRow("tif") << "/x/b.Tif" << true;
    QTest::newRow("tiff") << "/x/b.tiff" << true;
    QTest::newRow("bmp") << "/x/b.bmp" << true;
    QTest::newRow("xpm") << "/x/b.XPM" << true;
    QTest::newRow("png") << "/x/A.PNG" << true;
    QTest::newRow("folder ending in png") << "/x/album_png" << true;
    QTest::newRow("no dot needed") << "/x/mypng" << true;
    QTest::newRow("text file") << "/x/readme.txt" << false;
    QTest::newRow("gif") << "/x/a.gif" << false;
    QTest::newRow("empty") << "" << false;
}

void TestForegroundList::droppedEndings()
{
    QFETCH(QString, path);
    QFETCH(bool, image);
    QCOMPARE(hasDroppedImageEnding(path), image);
}

void TestForegroundList::addDialogIsQtsOwnWithCaptionAndFilter()
{
    checkAddDialog(QStringLiteral("AddForegGround"));
}

void TestForegroundList::addingThreeFilesMakesTheThirdCurrent()
{
    Window w;
    QVERIFY(w.ok());
    const widgettest::WindowWidgets ui(*w.dialog);
    const QString a = writePhoto(w, "p1.jpg", 200, 150, QColor(40, 180, 60), 1);
    const QString b = writePhoto(w, "p2.png", 120, 160, QColor(40, 70, 200), 2);
    const QString c = writePhoto(w, "P3.PNG", 180, 100, QColor(40, 180, 60), 3);
    QVERIFY(!a.isEmpty() && !b.isEmpty() && !c.isEmpty());
    const QByteArray bytesA = fileBytes(a), bytesB = fileBytes(b), bytesC = fileBytes(c);
    const QStringList before = widgettest::itemTexts(ui->listWidget);
    const QPoint keyPoint(33, 44);
    MyGlobal::xyClicked = keyPoint;

    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({a, b, c}, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);

    QCOMPARE(widgettest::itemTexts(ui->listWidget), before + QStringList({a, b, c}));
    QCOMPARE(ui->listWidget->currentRow(), before.size() + 2);
    QCOMPARE(selectedTexts(ui->listWidget), QStringList({c}));
    QCOMPARE(MyGlobal::CurSelection, c);
    QVERIFY(samePixels(DialogTestAccess::foreground(*w.dialog), QImage(c)));
    QCOMPARE(DialogTestAccess::background(*w.dialog).size(), QSize(180, 100));
    QVERIFY(samePixels(DialogTestAccess::preview(*w.dialog).toImage(), QImage(c)));
    QCOMPARE(MyGlobal::xyClicked, keyPoint); // adding does not reset the key point
    QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
    for (int row = before.size(); row < ui->listWidget->count(); ++row)
        QCOMPARE(iconSizes(ui->listWidget->item(row)), QList<QSize>({QSize(74, 64)}));

    QCOMPARE(fileBytes(a), bytesA);
    QCOMPARE(fileBytes(b), bytesB);
    QCOMPARE(fileBytes(c), bytesC);
}

void TestForegroundList::cancellingAddAddsNothingButReloadsTheForeground()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QStringList before = widgettest::itemTexts(ui->listWidget);
    // Key the photo, so that the working copy differs from its file.
    pressPreview(d, 12, 12);
    QVERIFY(!samePixels(DialogTestAccess::foreground(d), QImage(MyGlobal::CurSelection)));
    // A background of another size shows that it is fitted to the photo again.
    DialogTestAccess::background(d) = DialogTestAccess::background(d).scaled(50, 40);

    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({}, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);

    QCOMPARE(widgettest::itemTexts(ui->listWidget), before);
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(w.path("1green.JPG"))));
    QCOMPARE(DialogTestAccess::background(d).size(), DialogTestAccess::foreground(d).size());
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(w.path("1green.JPG"))));
}

void TestForegroundList::unreadableFileGetsAnItemWithEmptyIcon()
{
    Window w;
    QVERIFY(w.ok());
    const widgettest::WindowWidgets ui(*w.dialog);
    const QString broken = w.path("broken.png");
    {
        QFile f(broken);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("not a picture");
    }
    const QString good = writePhoto(w, "good.jpg", 160, 120, QColor(40, 180, 60), 5);
    // The readable photo last, so that the window keeps a picture to show.
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({broken, good}, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);

    QVERIFY(widgettest::waitForThumbnails(w.dialog.get()));
    const int n = ui->listWidget->count();
    QCOMPARE(ui->listWidget->item(n - 2)->text(), broken);
    QVERIFY(ui->listWidget->item(n - 2)->icon().isNull());
    QCOMPARE(ui->listWidget->item(n - 1)->text(), good);
    QVERIFY(!ui->listWidget->item(n - 1)->icon().isNull());
    QCOMPARE(fileBytes(broken), QByteArray("not a picture"));
}

void TestForegroundList::sameFileAddedTwiceGivesTwoItems()
{
    Window w;
    QVERIFY(w.ok());
    const widgettest::WindowWidgets ui(*w.dialog);
    const QString blue = w.path("blue1.JPG");
    for (int i = 0; i < 2; ++i) {
        auto seen = std::make_shared<FileDialogSeen>();
        answerFileDialog({blue}, seen);
        clickButton(ui->AddForegGround);
        QVERIFY(seen->answered);
    }
    QCOMPARE(widgettest::itemTexts(ui->listWidget), QStringList({w.path("1green.JPG"), blue, blue, blue}));
}

void TestForegroundList::removeTakesTheCurrentRowOncePerSelectedItem()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    QListWidget* list = ui->listWidget;
    // Start from an empty list, then add A, B, C, D.
    clickRow(list, 0);
    clickButton(ui->RemoveForeground);
    clickRow(list, 0);
    clickButton(ui->RemoveForeground);
    QCOMPARE(list->count(), 0);
    QStringList abcd;
    for (const char* name : {"A.jpg", "B.jpg", "C.jpg", "D.jpg"})
        abcd << writePhoto(w, name, 160, 120, QColor(40, 180, 60), abcd.size() + 20);
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog(abcd, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);
    QCOMPARE(widgettest::itemTexts(list), abcd);

    // D selected by a click; the arrow keys move the current row to B
    // without selecting; the space bar adds B to the selection.
    clickRow(list, 3);
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Space);
    QCOMPARE(list->currentRow(), 1);
    QCOMPARE(selectedTexts(list), QStringList({abcd[1], abcd[3]}));

    clickButton(ui->RemoveForeground);
    QCOMPARE(widgettest::itemTexts(list), QStringList({abcd[0], abcd[3]}));
    QCOMPARE(list->currentRow(), 1);
    QCOMPARE(MyGlobal::CurSelection, abcd[3]);
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(abcd[3])));
    for (const QString& path : abcd)
        QVERIFY2(QFile::exists(path), "removing an item never deletes its file");
}

void TestForegroundList::removeTakesTheOneSelectedCurrentItem()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString green = w.path("1green.JPG"), blue = w.path("blue1.JPG");
    const QByteArray greenBytes = fileBytes(green);
    clickRow(ui->listWidget, 0);
    const QPoint keyPoint(20, 20);
    pressPreview(d, keyPoint.x(), keyPoint.y());
    const QSize bkgSize = DialogTestAccess::background(d).size();

    clickButton(ui->RemoveForeground);
    QCOMPARE(widgettest::itemTexts(ui->listWidget), QStringList({blue}));
    QCOMPARE(ui->listWidget->currentRow(), 0);
    QCOMPARE(MyGlobal::CurSelection, blue);
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(blue)));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(blue)));
    // Neither the key point nor the background is touched by a removal.
    QCOMPARE(MyGlobal::xyClicked, keyPoint);
    QCOMPARE(DialogTestAccess::background(d).size(), bkgSize);
    QCOMPARE(fileBytes(green), greenBytes);
}

void TestForegroundList::removingTheLastItemLeavesTheRemovedPhotoShown()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString green = w.path("1green.JPG");
    clickRow(ui->listWidget, 1);
    clickButton(ui->RemoveForeground);
    QCOMPARE(MyGlobal::CurSelection, green);
    clickRow(ui->listWidget, 0);
    const QPixmap shownBefore = widgettest::shownPixmap(DialogTestAccess::scene(d));
    markPreview(d);

    clickButton(ui->RemoveForeground);
    QCOMPARE(ui->listWidget->count(), 0);
    QCOMPARE(ui->listWidget->currentRow(), -1);
    QCOMPARE(MyGlobal::CurSelection, green);
    QVERIFY(!previewRedrawnSinceMark(d));
    QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(d)).cacheKey(), shownBefore.cacheKey());
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(green)));
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(green)));
    QVERIFY(QFile::exists(green));
}

void TestForegroundList::clickingAnItemShowsItAndFitsTheBackground()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString tall = writePhoto(w, "tall.png", 90, 200, QColor(40, 70, 200), 7);
    auto seen = std::make_shared<FileDialogSeen>();
    answerFileDialog({tall}, seen);
    clickButton(ui->AddForegGround);
    QVERIFY(seen->answered);

    clickRow(ui->listWidget, 0);
    QCOMPARE(MyGlobal::CurSelection, w.path("1green.JPG"));
    QCOMPARE(selectedTexts(ui->listWidget), QStringList({w.path("1green.JPG")}));
    QCOMPARE(DialogTestAccess::background(d).size(), QSize(320, 240));

    clickRow(ui->listWidget, 2);
    QCOMPARE(MyGlobal::CurSelection, tall);
    QCOMPARE(ui->listWidget->currentRow(), 2);
    QCOMPARE(selectedTexts(ui->listWidget), QStringList({tall}));
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(tall)));
    QCOMPARE(DialogTestAccess::background(d).size(), QSize(90, 200));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(tall)));
    // The preview fits the photo into 415 x 345 keeping its shape.
    QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(d)).size(), QSize(155, 345));
}

void TestForegroundList::clickingAnItemAfterAKeyPointClearsIt()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    pressPreview(d, 15, 15);
    QCOMPARE(MyGlobal::xyClicked, QPoint(15, 15));
    QVERIFY(!samePixels(DialogTestAccess::foreground(d), QImage(w.path("1green.JPG"))));

    clickRow(ui->listWidget, 1);
    QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
    QVERIFY(samePixels(DialogTestAccess::foreground(d), QImage(w.path("blue1.JPG"))));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), QImage(w.path("blue1.JPG"))));
}

void TestForegroundList::sizeCheckStopsTheProgramWithItsFixedLine()
{
    const testsupport::ChildRun run = testsupport::runChildScenario(QStringLiteral("clickWithoutBackground"));
    QVERIFY(run.started);
    QVERIFY2(run.crashed, run.standardError.constData());
    QVERIFY2(run.standardError.contains(
                 "dialog:884: failed assertion `m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width()'\n"),
             run.standardError.constData());
}

void TestForegroundList::dropOnTheWindowLogsAndAddsNothing()
{
    Window w;
    QVERIFY(w.ok());
    const auto [d, ui] = w.parts();
    const QString photo = writePhoto(w, "dropped.png", 100, 80, QColor(40, 180, 60), 9);
    const QByteArray photoBytes = fileBytes(photo);
    clickRow(ui->listWidget, 1);
    pressPreview(d, 15, 15);
    const QStringList fgBefore = widgettest::itemTexts(ui->listWidget);
    const QStringList bkBefore = widgettest::itemTexts(ui->listWidget_Bk);
    markPreview(d);

    // main() opens the log in the real program.
    MyGlobal::log.close();
    QVERIFY(MyGlobal::log.open(QIODevice::WriteOnly));

    // The window takes drops itself, so Qt hands it those outside the lists.
    QVERIFY(d.acceptDrops());
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(photo), QUrl::fromLocalFile(w.path("notes.txt"))});
    const QPoint at(300, 470);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&d, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(at), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&d, &drop);
    MyGlobal::log.close();

    QCOMPARE(widgettest::itemTexts(ui->listWidget), fgBefore);
    QCOMPARE(widgettest::itemTexts(ui->listWidget_Bk), bkBefore);
    QCOMPARE(ui->listWidget->currentRow(), 0);
    // The preview is redrawn from the working photo, which keeps its keying.
    QVERIFY(previewRedrawnSinceMark(d));
    QVERIFY(samePixels(DialogTestAccess::preview(d).toImage(), DialogTestAccess::foreground(d)));
    QCOMPARE(MyGlobal::CurSelection, w.path("blue1.JPG"));

    QFile logFile(QStringLiteral("/tmp/log.txt"));
    QVERIFY(logFile.open(QIODevice::ReadOnly));
    const QString log = QString::fromUtf8(logFile.readAll());
    const QString viewport = QStringLiteral("0x") + QString::number(quintptr(ui->listWidget->viewport()), 16);
    QCOMPARE(log, QStringLiteral("Droppoint= (300, 470)\nx") + viewport + QStringLiteral("\n"));
    QCOMPARE(fileBytes(photo), photoBytes);
}

PLENDRA_TEST_MAIN(TestForegroundList)
#include "tst_foregroundlist.moc"
