// SPDX-License-Identifier: MIT
// The watched ("hot") folder that a camera writes into. Keying and saving stay
// manual: a new photo is only listed and shown.
#include "mainwindow/dialog.h"

#include "app/globals.h"
#include "intake/imagetypes.h"
#include "intake/preset.h"
#include "ui_dialog.h"

#include <QDir>
#include <QFileSystemWatcher>
#include <QListWidgetItem>
#include <QTextStream>

namespace {

// The image files of `folder` (no sub-folders, no hidden files; names matched
// without regard to letter case), newest first.
QStringList imagesNewestFirst(const QString& folder, QDir::SortFlags extra = {})
{
    QDir dir(folder);
    dir.setNameFilters(kWatchedFolderNameFilters);
    dir.setFilter(QDir::Files);
    dir.setSorting(QDir::Time | extra);
    return dir.entryList();
}

} // namespace

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
    QStringList paths;
    for (const QString& name : imagesNewestFirst(folder, QDir::Reversed))
        paths << folder + QDir::separator() + name;
    addForegroundsAndShowLast(paths);
}

void Dialog::handleDirectoryChanged(const QString& dir)
{
    QTextStream(&MyGlobal::log) << "Directory Changed..." << dir << Qt::endl;

    // Whichever watched folder changed, the current hot folder is the one read.
    const QStringList names = imagesNewestFirst(MyGlobal::HotFolder_FG);
    if (names.isEmpty())
        return; // no photo in the hot folder (yet): nothing to show
    const QString& newest = names.first();
    // LasHotFile is never set, so this never stops anything: a deletion or a
    // second write lists the newest photo once more.
    if (newest == MyGlobal::LasHotFile)
        return;

    const QString path = MyGlobal::HotFolder_FG + QDir::separator() + newest;
    AddFileToDisplay(path);
    MyGlobal::CurSelection = path;
    m_foreground.load(path);
    UpdateScene();
}
