// SPDX-License-Identifier: MIT
#include "mainwindow/dialog.h"

#include "state/globals.h"
#include "state/version.h"
#include "state/webaddress.h"
#include "intake/folderscan.h"
#include "intake/hotfolder.h"
#include "intake/thumbnail.h"
#include "keying/pipeline.h"
#include "ui_dialog.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QFileSystemWatcher>
#include <QGraphicsScene>
#include <QStyleFactory>
#include <QUrl>

namespace {

// Start-up thumbnails are square (photos added later get the wider ones).
void addStartupThumbnail(QListWidget* list, const QString& path)
{
    new QListWidgetItem(thumbnailIcon(path, kStartupThumbnailSize), path, list);
}

} // namespace

Dialog::Dialog(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags)
    , ui(new Ui_Dialog)
{
    ui->setupUi(this);
    // Qt 6's QComboBox has no currentIndexChanged(QString); its int signal
    // fires in the same cases, so it drives the by-text handler.
    connect(ui->Rotation, &QComboBox::currentIndexChanged, this,
            [this](int index) { on_Rotation_currentIndexChanged(ui->Rotation->itemText(index)); });

    m_foreground.load(MyGlobal::appDir + QStringLiteral("/1green.JPG"));

    m_watcher = new QFileSystemWatcher(this);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &Dialog::handleDirectoryChanged);
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &Dialog::handleDirectoryChanged);
    m_hotFolderChanges = new HotFolderChanges(&MyGlobal::log, this);
    connect(m_hotFolderChanges, &HotFolderChanges::newestPhoto, this, &Dialog::showNewestHotPhoto);

    addStartupThumbnail(ui->listWidget, MyGlobal::appDir + QStringLiteral("/1green.JPG"));
    addStartupThumbnail(ui->listWidget, MyGlobal::appDir + QStringLiteral("/blue1.JPG"));
    ui->listWidget->setCurrentRow(0);
    MyGlobal::CurSelection = MyGlobal::appDir + QStringLiteral("/1green.JPG");

    const QPixmap first(MyGlobal::CurSelection);
    // The scene outlives the window: it belongs to the application object and
    // goes only when the process ends.
    m_scene = new QGraphicsScene(QCoreApplication::instance());
    m_scene->addPixmap(first.isNull() ? first
                                      : first.scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    ui->graphicsView->setScene(m_scene);

    setWindowIcon(QIcon(QStringLiteral("icon.png")));
    // The window once asked for the Plastique style without applying it; Qt 6
    // has no such style and returns no object, so nothing is kept.
    QStyleFactory::create(QStringLiteral("Plastique"));
    setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);

    ui->Run->setDefault(true);

    for (const QString& path : backgroundLibraryPaths(MyGlobal::appDir))
        addStartupThumbnail(ui->listWidget_Bk, path);

    ui->listWidget_Bk->setCurrentRow(0);
    const QList<QListWidgetItem*> chosen = ui->listWidget_Bk->selectedItems();
    if (!chosen.isEmpty()) {
        MyGlobal::CurSelectionBk = chosen.first()->data(Qt::DisplayRole).toString();
        m_bkg = keying::fittedBackground(QImage(MyGlobal::CurSelectionBk), m_foreground.size());
    }

    // Adding the only angle makes it current, which runs the rotation handler
    // once: the foreground is reloaded and the preview drawn.
    ui->Rotation->hide();
    ui->Rotation->addItem(QStringLiteral("0"));

    UpdateScene();
    ui->Presets->hide();
    setWindowTitle(windowTitle() + QStringLiteral(" v") + QLatin1String(kPlendraVersion));
}

Dialog::~Dialog()
{
    delete ui;
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
