// SPDX-License-Identifier: MIT
// The main window as built: its widget tree, its settings, what the
// constructor puts into it, and its small handlers.
#include "state/globals.h"
#include "state/webaddress.h"
#include "mainwindow/dialog.h"
#include "tests/fixture/windowfixture.h"

#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFrame>
#include <QGraphicsView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSizeGrip>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

using widgettest::itemTexts;

// Receives the addresses handed to the desktop instead of a browser.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened << url; }
};

class TestWindow : public widgettest::SampleWindowTestCase
{
    Q_OBJECT

public:
    TestWindow() : SampleWindowTestCase({QStringLiteral("m.jpg"), QStringLiteral("k.png")}) {}

private slots:
    void widgetTree_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("className");
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<bool>("shown");

        const auto row = [](const char* name, const char* cls, QRect g, const char* text, const char* tip, bool shown) {
            QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(cls) << g << QString::fromUtf8(text)
                                << QString::fromUtf8(tip) << shown;
        };
        row("listWidget", "DropListWidget", QRect(20, 120, 151, 311), "", "Click on thumbnail to select foreground.", true);
        row("Run", "QPushButton", QRect(310, 470, 161, 34), "Save Image", "Publish the keyed", true);
        row("graphicsView", "Gview", QRect(200, 80, 421, 351), "",
            "Click the green or blue background to replace it with new background.", true);
        row("Logo", "QGraphicsView", QRect(10, 0, 81, 51), "", "", true);
        row("line_2", "QFrame", QRect(0, 44, 821, 16), "", "", true);
        row("Help", "QPushButton", QRect(750, 10, 61, 32), "Help", "", true);
        row("label_3", "QLabel", QRect(40, 70, 111, 16), "FOREGROUNDS", "", true);
        row("listWidget_Bk", "DropListWidget", QRect(643, 120, 151, 311), "",
            "Click on thumbnail to select background photo.", true);
        row("label", "QLabel", QRect(664, 70, 111, 16), "BACKGROUNDS", "", true);
        row("label_2", "QLabel", QRect(250, 60, 431, 16), "the green or blue background to replace it with new one", "", true);
        row("AddForegGround", "QPushButton", QRect(20, 90, 71, 31), "Add", "", true);
        row("RemoveForeground", "QPushButton", QRect(100, 90, 71, 31), "Remove", "", true);
        row("RemoveBackground", "QPushButton", QRect(724, 90, 71, 31), "Remove", "", true);
        row("AddBackground", "QPushButton", QRect(644, 90, 71, 31), "Add", "", true);
        row("label_4", "QLabel", QRect(201, 437, 411, 16), "Click the green or blue background to replace it with new one", "",
            true);
        row("label_5", "QLabel", QRect(210, 60, 41, 16), "Click", "", true);
        row("Rotation", "QComboBox", QRect(34, 471, 111, 26), "0", "", false);
        row("Presets", "QPushButton", QRect(120, 10, 113, 32), "PreSets", "", false);
    }

    void widgetTree()
    {
        QFETCH(QString, name);
        QFETCH(QString, className);
        QFETCH(QRect, geometry);
        QFETCH(QString, text);
        QFETCH(QString, toolTip);
        QFETCH(bool, shown);

        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QWidget* w = window.findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
        QVERIFY2(w, qPrintable(name));
        QCOMPARE(QString::fromLatin1(w->metaObject()->className()), className);
        QCOMPARE(w->parentWidget(), &window);
        QCOMPARE(w->geometry(), geometry);
        QCOMPARE(w->toolTip(), toolTip);
        QCOMPARE(w->isVisible(), shown);
        QString shownText;
        if (auto* button = qobject_cast<QPushButton*>(w))
            shownText = button->text();
        else if (auto* label = qobject_cast<QLabel*>(w))
            shownText = label->text();
        else if (auto* box = qobject_cast<QComboBox*>(w))
            shownText = box->currentText();
        QCOMPARE(shownText, text);
    }

    void childrenAreCreatedInFormOrder()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QStringList names;
        for (QObject* child : window.children()) {
            if (child->isWidgetType())
                names << child->objectName();
        }
        const QStringList expected = {
            "listWidget",     "Run",           "graphicsView",     "Logo",           "line_2",           "Help",
            "label_3",        "listWidget_Bk", "label",            "label_2",        "AddForegGround",   "RemoveForeground",
            "RemoveBackground", "AddBackground", "label_4",        "label_5",        "Rotation",         "Presets"};
        QCOMPARE(names, expected);
    }

    void windowSettings()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QCOMPARE(window.objectName(), QStringLiteral("Dialog"));
        QCOMPARE(window.size(), QSize(817, 539));
        QCOMPARE(window.windowTitle(), QStringLiteral("Plendra - photo v1.3"));
        QCOMPARE(window.font().family(), QStringLiteral("Arial"));
        QCOMPARE(window.font().pointSize(), 16);
        QCOMPARE(window.focusPolicy(), Qt::TabFocus);
        QCOMPARE(window.sizePolicy().horizontalPolicy(), QSizePolicy::Maximum);
        QCOMPARE(window.sizePolicy().verticalPolicy(), QSizePolicy::Maximum);
        QVERIFY(!window.autoFillBackground());
        QCOMPARE(window.styleSheet(), QString());
        QVERIFY(window.windowFlags().testFlag(Qt::CustomizeWindowHint));
        QVERIFY(window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
        QVERIFY(window.windowFlags().testFlag(Qt::WindowCloseButtonHint));
        QVERIFY(window.isWindow());
        QVERIFY(window.acceptDrops()); // drops outside the two lists reach the window
    }

    void noMaximiseButtonAndNoSizeGrip()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QVERIFY(!window.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
        QVERIFY(!window.isSizeGripEnabled());
        QVERIFY(!window.findChild<QSizeGrip*>());
    }

    void listSettings_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("FOREGROUNDS") << QStringLiteral("listWidget");
        QTest::newRow("BACKGROUNDS") << QStringLiteral("listWidget_Bk");
    }

    void listSettings()
    {
        QFETCH(QString, name);
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        auto* list = window.findChild<QListWidget*>(name);
        QVERIFY(list);
        QVERIFY(list->acceptDrops());
        QCOMPARE(list->frameShape(), QFrame::StyledPanel);
        QVERIFY(list->dragEnabled());
        QCOMPARE(list->dragDropMode(), QAbstractItemView::InternalMove);
        QCOMPARE(list->defaultDropAction(), Qt::IgnoreAction);
        QCOMPARE(list->selectionMode(), QAbstractItemView::MultiSelection);
        QCOMPARE(list->iconSize(), QSize(64, 64));
    }

    void buttonAndDecorationSettings()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        QCOMPARE(ui->Run->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(ui->Run->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(ui->Run->font().pointSize(), 15);
        QVERIFY(!ui->Run->font().bold());
        QVERIFY(ui->Run->autoDefault());
        QVERIFY(!ui->Run->isFlat());
        QVERIFY(ui->Run->isDefault());
        QVERIFY(ui->Help->isFlat());
        QVERIFY(!ui->Help->autoDefault());
        QVERIFY(ui->Presets->isFlat());
        QCOMPARE(ui->Logo->styleSheet(), QStringLiteral("background-image: url(:/w_logo.png);\nbackground-repeat:no-repeat"));
        QCOMPARE(ui->Logo->frameShape(), QFrame::NoFrame);
        QCOMPARE(ui->Logo->frameShadow(), QFrame::Plain);
        QCOMPARE(ui->line_2->styleSheet(), QStringLiteral("color: rgb(150, 150, 150);\n"));
        QCOMPARE(ui->line_2->lineWidth(), 2);
        QCOMPARE(ui->line_2->frameShape(), QFrame::HLine);
        QCOMPARE(ui->line_2->frameShadow(), QFrame::Sunken);
        QCOMPARE(ui->label_3->font().family(), QStringLiteral("Arial"));
        QVERIFY(ui->label_5->font().bold());
        QCOMPARE(ui->graphicsView->scene(), DialogTestAccess::scene(window));
    }

    void resourceImagesAreCompiledIn_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("logo") << QStringLiteral(":/w_logo.png");
        QTest::newRow("plus") << QStringLiteral(":/+.png");
        QTest::newRow("minus") << QStringLiteral(":/-.png");
        QTest::newRow("apply") << QStringLiteral(":/Apply.png");
    }

    void resourceImagesAreCompiledIn()
    {
        QFETCH(QString, path);
        QVERIFY2(!QImage(path).isNull(), qPrintable(path));
    }

    void constructorFillsTheWindow()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        const auto [window, ui] = windowFixture.parts();
        const QString dir = m_samples.path();
        QCOMPARE(itemTexts(ui->listWidget), QStringList({dir + "/1green.JPG", dir + "/blue1.JPG"}));
        QCOMPARE(ui->listWidget->currentRow(), 0);
        QCOMPARE(ui->listWidget->selectedItems().size(), 1);
        QCOMPARE(MyGlobal::CurSelection, dir + "/1green.JPG");
        // Start-up thumbnails are square.
        QVERIFY(ui->listWidget->item(0)->icon().availableSizes().contains(QSize(64, 64)));

        QCOMPARE(itemTexts(ui->listWidget_Bk), QStringList({dir + "/Bkg/k.png", dir + "/Bkg/m.jpg"}));
        QCOMPARE(ui->listWidget_Bk->currentRow(), 0);
        QCOMPARE(MyGlobal::CurSelectionBk, dir + "/Bkg/k.png");

        const QImage& fg = DialogTestAccess::foreground(window);
        QCOMPARE(fg, QImage(dir + "/1green.JPG"));
        const QImage expectedBkg = QImage(dir + "/Bkg/k.png").scaled(fg.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation);
        QCOMPARE(DialogTestAccess::background(window), expectedBkg);

        QCOMPARE(ui->Rotation->count(), 1);
        QCOMPARE(ui->Rotation->itemText(0), QStringLiteral("0"));
        QVERIFY(ui->Rotation->isHidden());
        QVERIFY(ui->Presets->isHidden());

        // The preview shows the unkeyed photo fitted into 415 x 345, and the
        // full-size picture is kept for saving.
        QCOMPARE(DialogTestAccess::preview(window).toImage().convertToFormat(QImage::Format_RGB32),
                 fg.convertToFormat(QImage::Format_RGB32));
        const QPixmap shown = widgettest::shownPixmap(DialogTestAccess::scene(window));
        QCOMPARE(shown.size(), fg.size().scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio));
        QCOMPARE(DialogTestAccess::scene(window)->items().size(), 1);

        QCOMPARE(DialogTestAccess::flag(window), 1);
        QCOMPARE(MyGlobal::xyClicked, QPoint(0, 0));
    }

    void emptyBackgroundFolderStillOpens()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {}));
        MyGlobal::appDir = dir.path();
        MyGlobal::CurSelectionBk = QStringLiteral("earlier");
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QCOMPARE(widgettest::WindowWidgets(window).listWidget_Bk->count(), 0);
        QVERIFY(DialogTestAccess::background(window).isNull());
        QCOMPARE(MyGlobal::CurSelectionBk, QStringLiteral("earlier"));
        QVERIFY(!DialogTestAccess::preview(window).isNull());
    }

    void missingBackgroundFolderStillOpens()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {}));
        QVERIFY(QDir(dir.path()).rmdir(QStringLiteral("Bkg")));
        MyGlobal::appDir = dir.path();
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QCOMPARE(widgettest::WindowWidgets(window).listWidget_Bk->count(), 0);
        QVERIFY(DialogTestAccess::background(window).isNull());
    }

    void backgroundFolderListsPngAndJpgInAnyCaseByName()
    {
        QTemporaryDir dir;
        QVERIFY(testsupport::makeSampleFolder(dir.path(), {QStringLiteral("b.png"), QStringLiteral("A.JPG"), QStringLiteral("c.gif"),
                                                           QStringLiteral("d.jpeg"), QStringLiteral("e.Png"), QStringLiteral("f.jPg"),
                                                           QStringLiteral("g.bmp"), QStringLiteral("h.tif")}));
        MyGlobal::appDir = dir.path();
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        const QString bkg = dir.path() + "/Bkg/";
        QCOMPARE(itemTexts(widgettest::WindowWidgets(window).listWidget_Bk),
                 QStringList({bkg + "A.JPG", bkg + "b.png", bkg + "e.Png", bkg + "f.jPg"}));
        QCOMPARE(MyGlobal::CurSelectionBk, bkg + "A.JPG");
        const QImage& fg = DialogTestAccess::foreground(window);
        QCOMPARE(DialogTestAccess::background(window),
                 QImage(bkg + "A.JPG").scaled(fg.size(), Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }

    void closingAlwaysSucceedsWithResultZero()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        bool closed = false;
        QTimer::singleShot(0, &window, [&] { closed = window.close(); });
        const int result = window.exec();
        QVERIFY(closed);
        QCOMPARE(result, 0);
        QVERIFY(!window.isVisible());
    }

    void languageChangeDropsTheVersionFromTheTitle()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QCOMPARE(window.windowTitle(), QStringLiteral("Plendra - photo v1.3"));
        QEvent change(QEvent::LanguageChange);
        QApplication::sendEvent(&window, &change);
        QCOMPARE(window.windowTitle(), QStringLiteral("Plendra - photo"));
        QCOMPARE(widgettest::WindowWidgets(window).Run->text(), QStringLiteral("Save Image"));
    }

    void helpOpensTheHelpPage()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        UrlRecorder recorder;
        const QString scheme = QUrl(productWebAddress()).scheme();
        QDesktopServices::setUrlHandler(scheme, &recorder, "open");
        QTest::mouseClick(widgettest::WindowWidgets(window).Help, Qt::LeftButton);
        QDesktopServices::unsetUrlHandler(scheme);
        QCOMPARE(recorder.opened.size(), 1);
        QCOMPARE(recorder.opened.first(), QUrl(productWebAddress() + "/help.html"));
        QCOMPARE(recorder.opened.first().path(), QStringLiteral("/help.html"));
    }

    void editingDoneRefreshesAndStopsTheTimer()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QImage& fg = DialogTestAccess::foreground(window);
        fg.fill(Qt::red);
        QVERIFY(QMetaObject::invokeMethod(&window, "EditingDone"));
        QCOMPARE(DialogTestAccess::preview(window).toImage().pixel(0, 0), qRgb(255, 0, 0));
        QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(window)).toImage().pixel(5, 5), qRgb(255, 0, 0));
    }

    void updateProgressProcessesPendingEvents()
    {
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        bool delivered = false;
        QTimer::singleShot(0, &window, [&] { delivered = true; });
        QVERIFY(QMetaObject::invokeMethod(&window, "UpdateProgress", Q_ARG(int, 42)));
        QVERIFY(delivered);
    }

    void placementSlotsStoreTheirPairAndKeepThePreview_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<int>("pos");
        QTest::addColumn<int>("textAlign");
        QTest::newRow("pos00") << "pos00" << 0x21 << 0x84;
        QTest::newRow("pos01") << "pos01" << 0x24 << 0x84;
        QTest::newRow("pos02") << "pos02" << 0x22 << 0x84;
        QTest::newRow("pos10") << "pos10" << 0x81 << 0x24;
        QTest::newRow("pos11") << "pos11" << 0x84 << 0x24;
        QTest::newRow("pos12") << "pos12" << 0x82 << 0x24;
        QTest::newRow("pos20") << "pos20" << 0x41 << 0x84;
        QTest::newRow("pos21") << "pos21" << 0x44 << 0x84;
        QTest::newRow("pos22") << "pos22" << 0x42 << 0x84;
    }

    void placementSlotsStoreTheirPairAndKeepThePreview()
    {
        QFETCH(QString, slot);
        QFETCH(int, pos);
        QFETCH(int, textAlign);
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        const QImage before = DialogTestAccess::preview(window).toImage();
        const QImage shownBefore = widgettest::shownPixmap(DialogTestAccess::scene(window)).toImage();
        QVERIFY(QMetaObject::invokeMethod(&window, slot.toLatin1().constData()));
        QCOMPARE(DialogTestAccess::pos(window), pos);
        QCOMPARE(DialogTestAccess::textAlign(window), textAlign);
        QCOMPARE(DialogTestAccess::preview(window).toImage(), before);
        QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(window)).toImage(), shownBefore);
        QCOMPARE(DialogTestAccess::scene(window)->items().size(), 1);
    }

    void slotTableOrder()
    {
        const QMetaObject& mo = Dialog::staticMetaObject;
        QStringList methods;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i)
            methods << QString::fromLatin1(mo.method(i).methodSignature());
        const QStringList expected = {
            "newProgress(int)", "on_Presets_clicked()", "on_Rotation_currentIndexChanged(QString)",
            "on_RemoveBackground_clicked()", "on_AddBackground_clicked()", "on_listWidget_Bk_clicked(QModelIndex)",
            "on_ChooseOutDir_clicked()", "on_listWidget_clicked(QModelIndex)", "on_comboBox_currentIndexChanged(int)",
            "on_Help_clicked()", "addfiles()", "RemoveFiles()", "Run()", "pos00()", "pos01()", "pos02()", "pos10()",
            "pos11()", "pos12()", "pos20()", "pos21()", "pos22()", "EditingDone()", "UpdateProgress(int)",
            "GVClicked(int,int)", "handleDirectoryChanged(QString)"};
        QCOMPARE(methods, expected);
        QCOMPARE(mo.method(mo.indexOfMethod("GVClicked(int,int)")).parameterNames(),
                 QList<QByteArray>({"x", "y"}));
    }

    void windowIconComesFromTheWorkingFolder()
    {
        QTemporaryDir work;
        QImage icon(48, 48, QImage::Format_ARGB32);
        icon.fill(Qt::magenta);
        QVERIFY(icon.save(work.path() + "/icon.png"));
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(work.path()));
        widgettest::Window windowFixture(widgettest::WindowSetup::onTheGlobalsAsSet(false));
        QVERIFY(windowFixture.ok());
        Dialog& window = *windowFixture.dialog;
        QDir::setCurrent(previous);
        QVERIFY(!window.windowIcon().isNull());
        QCOMPARE(window.windowIcon().pixmap(48, 48).toImage().pixel(10, 10), QColor(Qt::magenta).rgb());
    }
};

PLENDRA_TEST_MAIN(TestWindow)
#include "tst_window.moc"
