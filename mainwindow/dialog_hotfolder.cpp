// SPDX-License-Identifier: MIT
// The watched ("hot") folder that a camera writes into. Keying and saving stay
// manual: a new photo is only listed and shown.
#include "mainwindow/dialog.h"

#include "dialogs/preset.h"
#include "intake/folderscan.h"
#include "intake/hotfolder.h"
#include "intake/thumbnail.h"
#include "keying/photoread.h"
#include "mainwindow/droplistwidget.h"
#include "state/globals.h"
#include "ui_dialog.h"

#include <QFileSystemWatcher>

void Dialog::on_Presets_clicked()
{
    Preset preset(nullptr);
    preset.exec();
    // Whatever happened in the dialog, the hot folder is scanned and watched;
    // pressing the button again lists its photos once more.
    addAllFilesinFolder(MyGlobal::HotFolder_FG);
    m_watcher->addPath(MyGlobal::HotFolder_FG);
}

void Dialog::addAllFilesinFolder(QString folder)
{
    // Oldest first, so that the newest photo ends up last and current.
    addForegroundsAndShowLast(watchedFolderPhotosOldestFirst(folder));
}

void Dialog::handleDirectoryChanged(const QString& dir)
{
    // Whichever watched folder changed, the current hot folder is the one read.
    m_hotFolderChanges->folderChanged(dir, MyGlobal::HotFolder_FG, MyGlobal::LasHotFile);
}

void Dialog::showNewestHotPhoto(const QString& path)
{
    QListWidgetItem* item = addForegroundAwaitingPhoto(path);
    MyGlobal::CurSelection = path;
    // Read once, for the foreground and for its icon.
    keying::readPhotoInto(path, m_foreground);
    ui->listWidget->fillThumbnailFrom(item, kAddedThumbnailSize, m_foreground);
    UpdateScene();
}
