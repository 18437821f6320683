// SPDX-License-Identifier: MIT
// The FOREGROUNDS list: adding, removing and choosing the photos to key.
#include "mainwindow/dialog.h"

#include <QDropEvent>
#include <QListWidgetItem>

QListWidgetItem* Dialog::AddFileToDisplay(const QString&) { return nullptr; }
void Dialog::addfiles() {}
void Dialog::RemoveFiles() {}
void Dialog::on_listWidget_clicked(QModelIndex) {}
void Dialog::dropEvent(QDropEvent*) {}
