// SPDX-License-Identifier: MIT
#include "mainwindow/listremoval.h"

#include <QListWidget>

void takeCurrentRowMakingNextCurrent(QListWidget* list)
{
    const int row = list->currentRow();
    delete list->takeItem(row);
    // Qt makes the row above current when the current item is taken; "Remove"
    // goes on with the item that followed it.
    if (row >= 0 && row < list->count())
        list->setCurrentRow(row, QItemSelectionModel::NoUpdate);
}
