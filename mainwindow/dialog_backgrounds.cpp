// SPDX-License-Identifier: MIT
// The BACKGROUNDS list: adding, removing and choosing backgrounds. Pictures are
// used where they lie: nothing is copied into "Bkg" and nothing is deleted.
#include "mainwindow/dialog.h"

#include "intake/imagetypes.h"
#include "intake/thumbnail.h"
#include "keying/photoread.h"
#include "keying/pipeline.h"
#include "mainwindow/droplistwidget.h"
#include "mainwindow/listremoval.h"
#include "mainwindow/thumbnailprogress.h"
#include "state/globals.h"
#include "ui_dialog.h"

#include <QFileDialog>
#include <QListWidgetItem>

namespace {

// Reads the background afresh from its file and fits it to the foreground.
QImage loadBackgroundFor(const QString& path, const QImage& foreground)
{
    return keying::fittedBackground(keying::readPhoto(path), foreground.size());
}

} // namespace

void Dialog::on_AddBackground_clicked()
{
    // Same caption as the foreground dialog: one wording for both lists.
    const QStringList files = QFileDialog::getOpenFileNames(this, QStringLiteral("Select Files for Chroma-Keying"),
                                                            QStringLiteral("/Users"), tr(kImageFileDialogFilter));
    QListWidgetItem* last = nullptr;
    for (qsizetype i = 0; i < files.size(); ++i) {
        const QString& path = files.at(i);
        // The last picture becomes the background: it is read once below,
        // for the background and for its icon.
        last = i + 1 < files.size() ? ui->listWidget_Bk->appendThumbnailItem(path, kAddedThumbnailSize)
                                    : ui->listWidget_Bk->appendItemAwaitingPhoto(path);
        MyGlobal::CurSelectionBk = path;
    }
    if (last) {
        ui->listWidget_Bk->clearSelection();
        ui->listWidget_Bk->setCurrentItem(last);
    }

    // Also after a cancel, which undoes any earlier rescaling. The preview is
    // left alone: the new background shows with the next key click.
    const QImage picture = keying::readPhoto(MyGlobal::CurSelectionBk);
    if (last) {
        ui->listWidget_Bk->fillThumbnailFrom(last, kAddedThumbnailSize, picture);
        m_backgroundProgress->follow();
    }
    m_bkg = keying::fittedBackground(picture, m_foreground.size());
}

void Dialog::on_RemoveBackground_clicked()
{
    QListWidget* list = ui->listWidget_Bk;
    const int selected = list->selectedItems().count();
    // Like "Remove" under FOREGROUNDS: the current row goes, once per selected
    // item. The picture's file is never touched.
    for (int i = 0; i < selected; ++i)
        takeCurrentRowMakingNextCurrent(list);

    const int row = list->currentRow();
    if (row < 0)
        return; // list empty: the last removed picture stays the background
    list->setCurrentRow(row);
    MyGlobal::CurSelectionBk = list->currentItem()->data(Qt::DisplayRole).toString();
    m_bkg = loadBackgroundFor(MyGlobal::CurSelectionBk, m_foreground);
    UpdateScene();
}

void Dialog::on_listWidget_Bk_clicked(QModelIndex index)
{
    ui->listWidget_Bk->clearSelection();
    ui->listWidget_Bk->setCurrentRow(index.row());

    // Any keying held in the foreground is thrown away first.
    keying::readPhotoInto(MyGlobal::CurSelection, m_foreground);

    const QList<QListWidgetItem*> selected = ui->listWidget_Bk->selectedItems();
    if (!selected.isEmpty()) {
        MyGlobal::CurSelectionBk = selected.first()->data(Qt::DisplayRole).toString();
        m_bkg = loadBackgroundFor(MyGlobal::CurSelectionBk, m_foreground);
    }

    // With a key point the photo is keyed again against the new background;
    // without one the preview stays as it is until the next key click.
    if (MyGlobal::xyClicked != QPoint(0, 0))
        GVClicked(MyGlobal::xyClicked.x(), MyGlobal::xyClicked.y());
}
