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

QListWidgetItem* DropListWidget::appendItem(const QString& path, const QIcon& icon)
{
    auto* item = new QListWidgetItem(icon, path, nullptr, 0);
    insertItem(count(), item);
    return item;
}

QListWidgetItem* DropListWidget::appendThumbnailItem(const QString& path, const QSize& size)
{
    QListWidgetItem* item = appendItem(path, QIcon());
    m_waiting.insert(m_thumbnails->request(path, size), QPersistentModelIndex(indexFromItem(item)));
    return item;
}

QListWidgetItem* DropListWidget::appendThumbnailItem(const QString& path, const QSize& size, const QImage& photo)
{
    return appendItem(path, iconOfThumbnail(thumbnailOf(photo, size, m_thumbnails->pixmapFormats())));
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
