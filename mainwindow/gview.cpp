// SPDX-License-Identifier: MIT
#include "mainwindow/gview.h"

#include <QMetaMethod>
#include <QMouseEvent>

Gview::Gview(QWidget* parent)
    : QGraphicsView(parent)
{
    // The view serves whichever window holds it, as long as that window has a
    // GVClicked(int,int) slot; it is looked up by signature, not by type.
    if (parent) {
        const QMetaObject* target = parent->metaObject();
        const int slot = target->indexOfSlot("GVClicked(int,int)");
        if (slot >= 0)
            connect(this, QMetaMethod::fromSignal(&Gview::Press), parent, target->method(slot));
    }
}

void Gview::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    emit Press(at.x(), at.y());
}
