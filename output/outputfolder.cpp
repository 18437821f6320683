// SPDX-License-Identifier: MIT
#include "output/outputfolder.h"

#include "state/globals.h"

#include <QDir>

QString defaultOutputFolder(const QString& home)
{
    QDir output(home + QDir::separator() + QStringLiteral("Documents"));
    output.mkpath(QStringLiteral("Plendra"));
    output.cd(QStringLiteral("Plendra")); // stays on "Documents" when it cannot be entered
    return output.absolutePath();
}

void setUpOutputFolder()
{
    MyGlobal::outputDir = defaultOutputFolder(QDir::homePath());
}
