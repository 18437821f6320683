// SPDX-License-Identifier: MIT
#include "batch/leftovers.h"

#include "keying/atomicfile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace batch {

int removeAbandonedTemporaries(const QString& outputFolder)
{
    int removed = 0;
    const QDir folder(outputFolder);
    const QFileInfoList files = folder.entryInfoList({QStringLiteral(".plendra-*.tmp")}, QDir::Files | QDir::Hidden);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QFileInfo& file : files) {
        const qint64 age = file.lastModified().secsTo(now);
        if (!file.isSymLink() && keying::isAbandonedTemporary(file.fileName(), age)
            && QFile::remove(file.absoluteFilePath()))
            ++removed;
    }
    return removed;
}

} // namespace batch
