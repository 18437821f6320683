// SPDX-License-Identifier: MIT
#include "mainwindow/droplistwidget.h"

#include "intake/imagetypes.h"
#include "intake/thumbnail.h"
#include "intake/thumbnailloader.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

DropListWidget::DropListWidget(QWidget* parent)
    : QListWidget(parent)
    , m_thumbnails(new ThumbnailLoader(this))
{
    setDragDropMode(QAbstractItemView::DragDrop);
    setAcceptDrops(true);
    connect(m_thumbnails, &ThumbnailLoader::thumbnailReady, this, &DropListWidget::fillThumbnail);
}

QListWidgetItem* DropListWidget::appendItemAwaitingPhoto(const QString& path)
{
    auto* item = new QListWidgetItem(QIcon(), path, nullptr, 0);
    insertItem(count(), item);
    return item;
}

void DropListWidget::fillThumbnailFrom(QListWidgetItem* item, const QSize& size, const QImage& photo)
{
    item->setIcon(iconOfThumbnail(thumbnailOf(photo, size, m_thumbnails->pixmapFormats())));
}

void DropListWidget::requestThumbnail(QListWidgetItem* item, const QSize& size)
{
    m_waiting.insert(m_thumbnails->request(item->text(), size), QPersistentModelIndex(indexFromItem(item)));
}

QListWidgetItem* DropListWidget::appendThumbnailItem(const QString& path, const QSize& size)
{
    QListWidgetItem* item = appendItemAwaitingPhoto(path);
    requestThumbnail(item, size);
    return item;
}

void DropListWidget::fillThumbnail(quint64 ticket, const QImage& thumbnail)
{
    const QPersistentModelIndex index = m_waiting.take(ticket);
    if (QListWidgetItem* item = index.isValid() ? itemFromIndex(index) : nullptr)
        item->setIcon(iconOfThumbnail(thumbnail));
    emit thumbnailFilled(pendingThumbnails());
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
            appendThumbnailItem(path, kAddedThumbnailSize);
    }
    // Making the first row current does not count as a click: the preview
    // changes only when the user picks an item.
    setCurrentRow(0);
}
