// SPDX-License-Identifier: MIT
#include "mainwindow/thumbnailprogress.h"

#include "mainwindow/droplistwidget.h"

#include <QProgressDialog>

namespace {

// Short adds finish before anyone would notice a wait.
constexpr int kShowAfterMs = 1000;

} // namespace

ThumbnailProgress::ThumbnailProgress(DropListWidget* list, QWidget* window)
    : QObject(window)
    , m_list(list)
    , m_window(window)
{
    connect(m_list, &DropListWidget::thumbnailFilled, this, &ThumbnailProgress::filled);
}

void ThumbnailProgress::follow()
{
    const int pending = m_list->pendingThumbnails();
    if (pending == 0)
        return;
    if (!m_dialog) {
        m_done = 0;
        // No cancel button: the photos are listed already, only their icons
        // are on their way. Not modal, so the window keeps taking clicks.
        m_dialog = new QProgressDialog(tr("Loading thumbnails..."), QString(), 0, pending, m_window);
        m_dialog->setObjectName(QStringLiteral("thumbnailProgress"));
        m_dialog->setWindowModality(Qt::NonModal);
        m_dialog->setMinimumDuration(kShowAfterMs);
        m_dialog->setValue(0);
    }
    m_dialog->setMaximum(m_done + pending);
}

void ThumbnailProgress::filled(int pending)
{
    if (!m_dialog)
        return;
    ++m_done;
    if (pending == 0) {
        m_dialog->deleteLater();
        m_dialog = nullptr;
        return;
    }
    m_dialog->setValue(m_done);
}
