// SPDX-License-Identifier: MIT
#include "app/outputfolder.h"

#include "app/globals.h"

#include <QDir>

void setUpOutputFolder()
{
    MyGlobal::outputDir = QDir::homePath() + QDir::separator() + QStringLiteral("Documents");
    QDir output(MyGlobal::outputDir);
    output.mkpath(QStringLiteral("Plendra"));
    output.cd(QStringLiteral("Plendra")); // stays on "Documents" when it cannot be entered
    MyGlobal::outputDir = output.absolutePath();
}
