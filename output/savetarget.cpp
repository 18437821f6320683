// SPDX-License-Identifier: MIT
#include "output/savetarget.h"

#include <QFileInfo>

QString saveTarget(const QString& outputDir, const QString& photoPath)
{
    return outputDir + QStringLiteral("/") + QFileInfo(photoPath).fileName();
}
