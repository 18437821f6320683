// SPDX-License-Identifier: MIT
#pragma once

class QListWidget;

// Takes the item at the list's current row out of the list (and frees it) and
// makes the item that followed it current, leaving the selection as it is.
// When the last row went, Qt's choice (the row above) stays current.
void takeCurrentRowMakingNextCurrent(QListWidget* list);
