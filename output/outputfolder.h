// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The output folder a user starts with: a "Plendra" folder under the
// "Documents" of `home`, made (with any missing parents) when it is not there.
// Nothing is reported: when it cannot be made or entered, the "Documents" path
// itself is returned, and saving there simply fails later.
QString defaultOutputFolder(const QString& home);

// Sets MyGlobal::outputDir at start to the default folder of the user's home.
void setUpOutputFolder();
