// SPDX-License-Identifier: MIT
#pragma once

// What a change in a watched folder means for FOREGROUNDS: the change is
// logged, and the newest photo of the current hot folder is announced, unless
// it is the one taken last time.

#include <QObject>
#include <QString>

class QIODevice;

class HotFolderChanges : public QObject
{
    Q_OBJECT

public:
    // `log` receives one line per change; it belongs to the caller.
    HotFolderChanges(QIODevice* log, QObject* parent);

    // A change in `changedPath` (any watched folder or file): reads
    // `hotFolder`, whichever folder changed. Emits newestPhoto(path) at once,
    // on this thread, when it holds a photo other than `lastHotFile`.
    void folderChanged(const QString& changedPath, const QString& hotFolder, const QString& lastHotFile);

signals:
    void newestPhoto(const QString& path);

private:
    QIODevice* m_log;
};
