// SPDX-License-Identifier: MIT
#include "mainwindow/droplistwidget.h"

#include "intake/imagetypes.h"
#include "intake/thumbnail.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

DropListWidget::DropListWidget(QWidget* parent)
    : QListWidget(parent)
{
    setDragDropMode(QAbstractItemView::DragDrop);
    setAcceptDrops(true);
}

void DropListWidget::dragEnterEvent(QDragEnterEvent* event)
{
    event->acceptProposedAction();
}

void DropListWidget::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (hasDroppedImageEnding(path))
            new QListWidgetItem(thumbnailIcon(path, kAddedThumbnailSize), path, this);
    }
    // Making the first row current does not count as a click: the preview
    // changes only when the user picks an item.
    setCurrentRow(0);
}
