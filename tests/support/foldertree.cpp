// SPDX-License-Identifier: MIT
#include "tests/support/foldertree.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace testsupport {

QMap<QString, QString> listTree(const QString& root)
{
    QMap<QString, QString> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    const int prefix = QDir(root).absolutePath().size() + 1;
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        const QString relative = info.absoluteFilePath().mid(prefix);
        if (info.isDir())
            entries.insert(relative, QStringLiteral("dir"));
        else
            entries.insert(relative, QString::number(info.size()) + QLatin1Char('@') +
                                         QString::number(info.lastModified().toMSecsSinceEpoch()));
    }
    return entries;
}

QStringList changedEntries(const QMap<QString, QString>& before, const QMap<QString, QString>& after)
{
    return differingKeys(before, after);
}

} // namespace testsupport
