// SPDX-License-Identifier: MIT
#pragma once

// The lists take their items at once and fill the icons in as the thumbnails
// are made off the GUI thread. Tests that look at icons wait for them first.

#include "mainwindow/droplistwidget.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QList>
#include <QThread>
#include <QWidget>

namespace testsupport {

// Runs the event loop until every thumbnail list in `root` (the lists under
// it, or `root` itself when it is one) has filled its icons; false when
// `timeoutMs` passed first.
inline bool waitForThumbnails(QWidget* root, int timeoutMs = 60000)
{
    QList<DropListWidget*> lists = root->findChildren<DropListWidget*>();
    if (auto* self = qobject_cast<DropListWidget*>(root))
        lists << self;
    const QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        int pending = 0;
        for (const DropListWidget* list : lists)
            pending += list->pendingThumbnails();
        if (pending == 0)
            return true;
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
}

} // namespace testsupport
