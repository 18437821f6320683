// SPDX-License-Identifier: MIT
// The preview view's presses and the thumbnail lists' drops.
#include "state/globals.h"
#include "mainwindow/dialog.h"
#include "mainwindow/droplistwidget.h"
#include "mainwindow/gview.h"
#include "tests/fixture/windowfixture.h"

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using widgettest::dropFiles;
using widgettest::itemTexts;

namespace {

// A window with no slot of the preview's.
class PlainParent : public QWidget
{
};

} // namespace

class TestDropLists : public widgettest::SampleWindowTestCase
{
    Q_OBJECT

private slots:
    void listConstructorTakesDrops()
    {
        QWidget parent;
        DropListWidget list(&parent);
        QCOMPARE(list.parentWidget(), &parent);
        QCOMPARE(list.dragDropMode(), QAbstractItemView::DragDrop);
        QVERIFY(list.acceptDrops());
    }

    void dropAddsImageFilesKeepingTheirCase()
    {
        QWidget parent;
        DropListWidget list(&parent);
        QVERIFY(dropFiles(list.viewport(), {"/x/A.PNG", "/x/b.Tif"}));
        QCOMPARE(itemTexts(&list), QStringList({"/x/A.PNG", "/x/b.Tif"}));
        QCOMPARE(list.item(0)->type(), int(QListWidgetItem::Type));
    }

    void dropOfATextFileAddsNothing()
    {
        QWidget parent;
        DropListWidget list(&parent);
        QVERIFY(dropFiles(list.viewport(), {"/x/readme.txt"}));
        QCOMPARE(list.count(), 0);
    }

    void dropOfAFolderNamedLikeAnImageAddsAnEmptyItem()
    {
        QTemporaryDir dir;
        const QString folder = dir.path() + "/album_png";
        QVERIFY(QDir().mkpath(folder));
        QWidget parent;
        DropListWidget list(&parent);
        QVERIFY(dropFiles(list.viewport(), {folder}));
        QCOMPARE(itemTexts(&list), QStringList({folder}));
        QVERIFY(widgettest::waitForThumbnails(&list));
        QVERIFY(list.item(0)->icon().isNull());
        QVERIFY(QFileInfo(folder).isDir());
    }

    void dropAcceptsEveryImageEndingInAnyCase_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("listed");
        QTest::newRow("JPG") << "/p/photo.JPG" << true;
        QTest::newRow("Jpeg") << "/p/photo.Jpeg" << true;
        QTest::newRow("bmp") << "/p/photo.bmp" << true;
        QTest::newRow("png") << "/p/photo.png" << true;
        QTest::newRow("TIFF") << "/p/photo.TIFF" << true;
        QTest::newRow("tif") << "/p/photo.tif" << true;
        QTest::newRow("xpm") << "/p/photo.xpm" << true;
        QTest::newRow("no dot") << "/p/mypng" << true;
        QTest::newRow("gif") << "/p/photo.gif" << false;
        QTest::newRow("jpg in the middle") << "/p/photo.jpg.txt" << false;
        QTest::newRow("webp") << "/p/photo.webp" << false;
    }

    void dropAcceptsEveryImageEndingInAnyCase()
    {
        QFETCH(QString, path);
        QFETCH(bool, listed);
        QWidget parent;
        DropListWidget list(&parent);
        QVERIFY(dropFiles(list.viewport(), {path}));
        QCOMPARE(list.count(), listed ? 1 : 0);
    }

    void droppedThumbnailIsSeventyFourBySixtyFour()
    {
        QWidget parent;
        DropListWidget list(&parent);
        const QString photo = m_samples.path() + "/blue1.JPG";
        QVERIFY(dropFiles(list.viewport(), {photo}));
        QVERIFY(widgettest::waitForThumbnails(&list));
        const QIcon icon = list.item(0)->icon();
        QCOMPARE(icon.availableSizes(), QList<QSize>({QSize(74, 64)}));
        const QImage expected = QPixmap(photo).scaled(74, 64, Qt::IgnoreAspectRatio, Qt::FastTransformation).toImage();
        QCOMPARE(icon.pixmap(QSize(74, 64)).toImage().convertToFormat(expected.format()), expected);
    }

    void droppingTheSameFileTwiceListsItTwice()
    {
        QWidget parent;
        DropListWidget list(&parent);
        const QString photo = m_samples.path() + "/1green.JPG";
        QVERIFY(dropFiles(list.viewport(), {photo}));
        QVERIFY(dropFiles(list.viewport(), {photo}));
        QCOMPARE(itemTexts(&list), QStringList({photo, photo}));
    }

    void dropOnBackgroundsAddsThereAndLeavesThePreview()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        const QStringList foregroundsBefore = itemTexts(ui->listWidget);
        const QStringList backgroundsBefore = itemTexts(ui->listWidget_Bk);
        const QImage previewBefore = DialogTestAccess::preview(window).toImage();
        const QString selectionBefore = MyGlobal::CurSelection;
        const QString photo = m_samples.path() + "/blue1.JPG";

        ui->listWidget_Bk->setCurrentRow(1);
        QVERIFY(dropFiles(ui->listWidget_Bk->viewport(), {photo}));

        QCOMPARE(itemTexts(ui->listWidget), foregroundsBefore);
        QCOMPARE(itemTexts(ui->listWidget_Bk), backgroundsBefore + QStringList({photo}));
        QCOMPARE(ui->listWidget_Bk->currentRow(), 0);
        QCOMPARE(DialogTestAccess::preview(window).toImage(), previewBefore);
        QCOMPARE(MyGlobal::CurSelection, selectionBefore);
    }

    void dropOnForegroundsMakesTheFirstRowCurrent()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        const QImage previewBefore = DialogTestAccess::preview(window).toImage();
        ui->listWidget->setCurrentRow(1);
        const QString photo = m_samples.path() + "/blue1.JPG";
        QVERIFY(dropFiles(ui->listWidget->viewport(), {photo, "/x/notes.txt"}));
        QCOMPARE(ui->listWidget->count(), 3);
        QCOMPARE(ui->listWidget->item(2)->text(), photo);
        QCOMPARE(ui->listWidget->currentRow(), 0);
        QCOMPARE(DialogTestAccess::preview(window).toImage(), previewBefore);
    }

    void everyButtonPressesThePreview_data() { widgettest::addMouseButtonRows(); }

    void everyButtonPressesThePreview()
    {
        QFETCH(Qt::MouseButton, button);
        QWidget parent;
        Gview view(&parent);
        view.resize(200, 150);
        parent.show();
        QSignalSpy presses(&view, &Gview::Press);
        QTest::mousePress(view.viewport(), button, Qt::NoModifier, QPoint(37, 58));
        QCOMPARE(presses.size(), 1);
        QCOMPARE(presses.first().at(0).toInt(), 37);
        QCOMPARE(presses.first().at(1).toInt(), 58);
    }

    void pressesNeverReachTheScene()
    {
        QWidget parent;
        Gview view(&parent);
        view.resize(200, 150);
        QGraphicsScene scene(0, 0, 200, 150);
        auto* item = scene.addRect(0, 0, 200, 150);
        item->setFlag(QGraphicsItem::ItemIsSelectable);
        view.setScene(&scene);
        parent.show();
        QVERIFY(QTest::qWaitForWindowExposed(&parent));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 75));
        QVERIFY(!item->isSelected());
    }

    void viewWithoutAWindowSlotStillWorks()
    {
        PlainParent parent;
        Gview view(&parent);
        QSignalSpy presses(&view, &Gview::Press);
        QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(3, 4));
        QCOMPARE(presses.size(), 1);
        Gview orphan;
        QSignalSpy orphanPresses(&orphan, &Gview::Press);
        QTest::mousePress(orphan.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(1, 2));
        QCOMPARE(orphanPresses.size(), 1);
    }

    void windowAndListsAcceptEveryDragThatEnters()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QMimeData text;
        text.setText(QStringLiteral("not a file"));
        for (QWidget* target : {widgettest::WindowWidgets(window).listWidget->viewport(),
                                widgettest::WindowWidgets(window).listWidget_Bk->viewport()}) {
            QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
            enter.setAccepted(false);
            QApplication::sendEvent(target, &enter);
            QVERIFY(enter.isAccepted());
            QCOMPARE(enter.dropAction(), Qt::MoveAction);
        }
        // The window's own handler, handed the event directly.
        QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
        enter.setAccepted(false);
        static_cast<QObject&>(window).event(&enter);
        QVERIFY(enter.isAccepted());
        QCOMPARE(enter.dropAction(), Qt::MoveAction);
    }
};

PLENDRA_TEST_MAIN(TestDropLists)
#include "tst_droplists.moc"
