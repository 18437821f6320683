// SPDX-License-Identifier: MIT
#include "mainwindow/dialog.h"

#include "state/globals.h"
#include "state/version.h"
#include "state/webaddress.h"
#include "intake/folderscan.h"
#include "intake/hotfolder.h"
#include "intake/thumbnail.h"
#include "keying/photoread.h"
#include "keying/pipeline.h"
#include "mainwindow/droplistwidget.h"
#include "mainwindow/thumbnailprogress.h"
#include "ui_dialog.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QFileSystemWatcher>
#include <QGraphicsScene>
#include <QStyleFactory>
#include <QUrl>

Dialog::Dialog(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
    , ui(new Ui_Dialog)
{
    ui->setupUi(this);
    // Qt 6's QComboBox has no currentIndexChanged(QString); its int signal
    // fires in the same cases, so it drives the by-text handler.
    connect(ui->Rotation, &QComboBox::currentIndexChanged, this,
            [this](int index) { on_Rotation_currentIndexChanged(ui->Rotation->itemText(index)); });

    keying::readPhotoInto(MyGlobal::appDir + QStringLiteral("/1green.JPG"), m_foreground);

    m_watcher = new QFileSystemWatcher(this);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &Dialog::handleDirectoryChanged);
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &Dialog::handleDirectoryChanged);
    m_hotFolderChanges = new HotFolderChanges(&MyGlobal::log, this);
    connect(m_hotFolderChanges, &HotFolderChanges::newestPhoto, this, &Dialog::showNewestHotPhoto);

    listSamplePhotos();
    showFirstSample();

    setWindowIcon(QIcon(QStringLiteral("icon.png")));
    // The window once asked for the Plastique style without applying it; Qt 6
    // has no such style and returns no object, so nothing is kept.
    QStyleFactory::create(QStringLiteral("Plastique"));
    setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);

    ui->Run->setDefault(true);

    fillBackgroundLibrary();
    m_foregroundProgress = new ThumbnailProgress(ui->listWidget, this);
    m_backgroundProgress = new ThumbnailProgress(ui->listWidget_Bk, this);

    // Adding the only angle makes it current, which runs the rotation handler
    // once: the foreground is reloaded and the preview drawn.
    ui->Rotation->hide();
    ui->Rotation->addItem(QStringLiteral("0"));

    UpdateScene();
    ui->Presets->hide();
    setWindowTitle(windowTitle() + QStringLiteral(" v") + QLatin1String(kPlendraVersion));
}

void Dialog::listSamplePhotos()
{
    // Start-up thumbnails are square (photos added later get the wider ones).
    // The first sample was read just above: its icon is made from that read.
    QListWidgetItem* firstSample = ui->listWidget->appendItemAwaitingPhoto(MyGlobal::appDir + QStringLiteral("/1green.JPG"));
    ui->listWidget->fillThumbnailFrom(firstSample, kStartupThumbnailSize, m_foreground);
    ui->listWidget->appendThumbnailItem(MyGlobal::appDir + QStringLiteral("/blue1.JPG"), kStartupThumbnailSize);
    ui->listWidget->setCurrentRow(0);
    MyGlobal::CurSelection = MyGlobal::appDir + QStringLiteral("/1green.JPG");
}

void Dialog::showFirstSample()
{
    // The first sample was just read as the foreground: the preview shows
    // that same read.
    const QPixmap first = QPixmap::fromImage(m_foreground);
    // The scene outlives the window: it belongs to the application object and
    // goes only when the process ends.
    m_scene = new QGraphicsScene(QCoreApplication::instance());
    m_scene->addPixmap(first.isNull() ? first
                                      : first.scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    ui->graphicsView->setScene(m_scene);
}

void Dialog::fillBackgroundLibrary()
{
    // The background chosen below is read once, for the background and its
    // icon; the others' icons are made off the GUI thread once the window
    // shows, however large the library.
    QListWidgetItem* firstBackground = nullptr;
    for (const QString& path : backgroundLibraryPaths(MyGlobal::appDir)) {
        if (!firstBackground)
            firstBackground = ui->listWidget_Bk->appendItemAwaitingPhoto(path);
        else
            ui->listWidget_Bk->appendThumbnailItem(path, kStartupThumbnailSize);
    }

    ui->listWidget_Bk->setCurrentRow(0);
    const QList<QListWidgetItem*> chosen = ui->listWidget_Bk->selectedItems();
    bool firstBackgroundFilled = false;
    if (!chosen.isEmpty()) {
        MyGlobal::CurSelectionBk = chosen.first()->data(Qt::DisplayRole).toString();
        const QImage picture = keying::readPhoto(MyGlobal::CurSelectionBk);
        if (chosen.first() == firstBackground) {
            ui->listWidget_Bk->fillThumbnailFrom(firstBackground, kStartupThumbnailSize, picture);
            firstBackgroundFilled = true;
        }
        m_bkg = keying::fittedBackground(picture, m_foreground.size());
    }
    if (firstBackground && !firstBackgroundFilled)
        ui->listWidget_Bk->requestThumbnail(firstBackground, kStartupThumbnailSize);
}

Dialog::~Dialog()
{
    delete ui;
}

int Dialog::pendingThumbnails() const
{
    return ui->listWidget->pendingThumbnails() + ui->listWidget_Bk->pendingThumbnails();
}

void Dialog::closeEvent(QCloseEvent*)
{
    // Nothing is ever unsaved: the window always closes.
}

void Dialog::dragEnterEvent(QDragEnterEvent* event)
{
    event->acceptProposedAction();
}

void Dialog::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void Dialog::EditingDone()
{
    UpdateScene();
    m_timer.stop();
}

void Dialog::UpdateProgress(int)
{
    QCoreApplication::processEvents();
}

void Dialog::on_Help_clicked()
{
    QDesktopServices::openUrl(QUrl(productWebAddress() + QStringLiteral("/help.html")));
}
