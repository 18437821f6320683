// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// Where "Save Image" writes the composite of `photoPath`: the output folder,
// a literal "/", and the photo's own file name (so its format follows the
// photo's suffix). An earlier file of that name is replaced.
QString saveTarget(const QString& outputDir, const QString& photoPath);
