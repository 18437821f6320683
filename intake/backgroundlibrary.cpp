// SPDX-License-Identifier: MIT
// The BACKGROUNDS list: adding, removing and choosing backgrounds.
#include "mainwindow/dialog.h"

void Dialog::on_AddBackground_clicked() {}
void Dialog::on_RemoveBackground_clicked() {}
void Dialog::on_listWidget_Bk_clicked(QModelIndex) {}
