// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// Shows a folder or a file on the desktop with the desktop's opener ("open"
// on macOS, "xdg-open" elsewhere, found through PATH) and waits for it to
// return. The path is appended unquoted, so one holding blanks reaches the
// opener as several arguments.
void openOnDesktop(const QString& path);
