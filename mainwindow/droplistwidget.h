// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QImage>
#include <QListWidget>
#include <QPersistentModelIndex>

class ThumbnailLoader;

// A thumbnail list that takes image files dropped from the desktop. Dropped
// files are listed where they lie; nothing is copied. Items appear at once;
// their icons follow as the thumbnails are made off the GUI thread.
class DropListWidget : public QListWidget
{
    Q_OBJECT
    // Readable by name, so that whoever waits for a list's icons (a test, a
    // progress display) needs no more than a QListWidget.
    Q_PROPERTY(int pendingThumbnails READ pendingThumbnails NOTIFY thumbnailFilled)

public:
    explicit DropListWidget(QWidget* parent);

    // Appends an item for `path` (its text, exactly as given) at the end of
    // the list; its icon, the file stretched to `size`, is filled in when the
    // thumbnail is ready (an empty icon for a file that is no picture).
    QListWidgetItem* appendThumbnailItem(const QString& path, const QSize& size);
    // The same for a photo about to be read anyway (the one that becomes
    // current): the item comes first, with an empty icon, and the icon is
    // made from the photo read (fillThumbnailFrom), not from a second read.
    QListWidgetItem* appendItemAwaitingPhoto(const QString& path);
    void fillThumbnailFrom(QListWidgetItem* item, const QSize& size, const QImage& photo);
    // Asks for `item`'s icon off the GUI thread, from its file.
    void requestThumbnail(QListWidgetItem* item, const QSize& size);

    // Items whose icons are still being made.
    int pendingThumbnails() const { return int(m_waiting.size()); }

signals:
    // An icon was filled in (or its item had gone meanwhile); `pending` are left.
    void thumbnailFilled(int pending);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void fillThumbnail(quint64 ticket, const QImage& thumbnail);

    ThumbnailLoader* m_thumbnails;
    // Items waiting for their icon. Taken or moved items are followed by
    // their index; an item taken out of the list gets none.
    QHash<quint64, QPersistentModelIndex> m_waiting;
};
