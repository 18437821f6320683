// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QWidget;

// Asks for a folder (starting in `current`) and makes an "Osl_Output#" folder
// in it, warning first when that folder is there already. Returns the new
// output folder, or `current` when the user cancels or aborts.
QString chooseOutputFolder(QWidget* parent, const QString& current);
