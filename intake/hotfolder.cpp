// SPDX-License-Identifier: MIT
// The watched ("hot") folder that a camera writes into.
#include "mainwindow/dialog.h"

void Dialog::on_Presets_clicked() {}
void Dialog::addAllFilesinFolder(QString) {}
void Dialog::handleDirectoryChanged(const QString&) {}
