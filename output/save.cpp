// SPDX-License-Identifier: MIT
// "Save Image" and the choice of the output folder.
#include "mainwindow/dialog.h"

void Dialog::Run() {}
void Dialog::on_ChooseOutDir_clicked() {}
