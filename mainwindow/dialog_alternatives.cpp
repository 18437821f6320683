// SPDX-License-Identifier: MIT
// Keying helpers the window's own flow does not call.
#include "mainwindow/dialog.h"

#include <QFont>

void Dialog::MaskOut2(QImage&, unsigned int) {}
void Dialog::approxPixel(const QImage&, int, int, long&, long&) {}
bool Dialog::approximateColor(const QImage&) { return false; }
QFont Dialog::calcFont(const QImage&, const QString&) { return QFont(); }
