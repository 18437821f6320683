// SPDX-License-Identifier: MIT
// The FOREGROUNDS list: adding, removing and choosing the photos to key.
#include "mainwindow/dialog.h"

#include "intake/imagetypes.h"
#include "intake/thumbnail.h"
#include "keying/photoread.h"
#include "keying/pipeline.h"
#include "mainwindow/droplistwidget.h"
#include "mainwindow/listremoval.h"
#include "mainwindow/thumbnailprogress.h"
#include "state/fatal.h"
#include "state/globals.h"
#include "ui_dialog.h"

#include <QDropEvent>
#include <QFileDialog>
#include <QListWidgetItem>
#include <QMimeData>
#include <QTextStream>
#include <QUrl>

QListWidgetItem* Dialog::AddFileToDisplay(const QString& path)
{
    // The item's text is the path exactly as given: every later use of the
    // item reads its file back from it. Its icon follows when it is made.
    return ui->listWidget->appendThumbnailItem(path, kAddedThumbnailSize);
}

QListWidgetItem* Dialog::addForegroundAwaitingPhoto(const QString& path)
{
    return ui->listWidget->appendItemAwaitingPhoto(path);
}

void Dialog::addfiles()
{
    addForegroundsAndShowLast(QFileDialog::getOpenFileNames(this, QStringLiteral("Select Files for Chroma-Keying"),
                                                            QStringLiteral("/Users"), tr(kImageFileDialogFilter)));
}

void Dialog::addForegroundsAndShowLast(const QStringList& paths)
{
    QListWidgetItem* last = nullptr;
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString& path = paths.at(i);
        // The last photo becomes the current one: it is read once below,
        // for the foreground and for its icon.
        last = i + 1 < paths.size() ? AddFileToDisplay(path) : addForegroundAwaitingPhoto(path);
        MyGlobal::CurSelection = path;
    }
    if (last) {
        ui->listWidget->clearSelection();
        ui->listWidget->setCurrentItem(last);
    }

    // Also when nothing was added (a cancelled dialog, an empty folder): the
    // current photo is read again from its file and the background follows
    // its size; the key point is left as it is.
    keying::readPhotoInto(MyGlobal::CurSelection, m_foreground);
    if (last) {
        ui->listWidget->fillThumbnailFrom(last, kAddedThumbnailSize, m_foreground);
        m_foregroundProgress->follow();
    }
    m_bkg = keying::fittedBackground(m_bkg, m_foreground.size());
    UpdateScene();
}

void Dialog::RemoveFiles()
{
    QListWidget* list = ui->listWidget;
    const int selected = list->selectedItems().count();
    // As many items go as are selected, each time the one at the current row:
    // taking an item makes the following one current, so with several
    // selected it is the current photo and its followers that go, not
    // necessarily the selected ones. The files themselves stay where they are.
    for (int i = 0; i < selected; ++i)
        takeCurrentRowMakingNextCurrent(list);

    const int row = list->currentRow();
    if (row < 0)
        return; // list empty: the removed photo stays on show
    list->setCurrentRow(row);
    MyGlobal::CurSelection = list->currentItem()->data(Qt::DisplayRole).toString();
    keying::readPhotoInto(MyGlobal::CurSelection, m_foreground);
    UpdateScene();
}

void Dialog::on_listWidget_clicked(QModelIndex index)
{
    ui->listWidget->clearSelection();
    ui->listWidget->setCurrentRow(index.row());

    const QList<QListWidgetItem*> selected = ui->listWidget->selectedItems();
    if (!selected.isEmpty()) {
        MyGlobal::CurSelection = selected.first()->data(Qt::DisplayRole).toString();
        keying::readPhotoInto(MyGlobal::CurSelection, m_foreground);
        Rotate();
        // The reported line is a fixed number that support tooling recognises
        // in crash reports; it must not follow this file's line numbering.
        PLENDRA_ASSERT_AT("dialog", 884, m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width());
    }

    // A newly chosen photo is shown unkeyed until the user clicks its backdrop.
    MyGlobal::xyClicked = QPoint(0, 0);
    UpdateScene();
}

void Dialog::dropEvent(QDropEvent* event)
{
    // Drops on the window outside the two lists add nothing; they only leave
    // a trace in the log for diagnosing where drops land.
    const QPoint at = event->position().toPoint();
    QTextStream log(&MyGlobal::log);
    log << "Droppoint= (" << at.x() << ", " << at.y() << ")" << Qt::endl;
    log << "x" << static_cast<const void*>(ui->listWidget->viewport()) << Qt::endl;

    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl& url : urls)
        static_cast<void>(hasDroppedImageEnding(url.toLocalFile()));

    ui->listWidget->setCurrentRow(0);
    UpdateScene();
}
