// SPDX-License-Identifier: MIT
#include "intake/hotfolder.h"

#include "intake/folderscan.h"

#include <QDir>
#include <QTextStream>

HotFolderChanges::HotFolderChanges(QIODevice* log, QObject* parent)
    : QObject(parent)
    , m_log(log)
{
}

void HotFolderChanges::folderChanged(const QString& changedPath, const QString& hotFolder, const QString& lastHotFile)
{
    QTextStream(m_log) << "Directory Changed..." << changedPath << Qt::endl;

    const QString newest = newestWatchedFolderPhoto(hotFolder);
    if (newest.isEmpty())
        return; // no photo in the hot folder (yet): nothing to show
    // The last photo taken is never recorded by the window, so this stops
    // nothing there: a deletion or a second write announces the newest photo
    // once more.
    if (newest == lastHotFile)
        return;
    emit newestPhoto(hotFolder + QDir::separator() + newest);
}
