// SPDX-License-Identifier: MIT
// The window's side of keying: a click in the preview becomes a key colour,
// the foreground is keyed against the background, and the preview is redrawn.
#include "mainwindow/dialog.h"

#include "state/fatal.h"
#include "state/globals.h"
#include "keying/keymask.h"
#include "keying/pipeline.h"
#include "ui_dialog.h"

#include <QGraphicsScene>
#include <QTextStream>

void Dialog::GVClicked(int x, int y)
{
    // The composite on show is replaced below before anyone can save it;
    // letting go of it first lets the photo be read back into its memory.
    m_preview = QPixmap();
    // Keying always starts from the photo as stored, so clicks never pile up.
    Rotate();
    MyGlobal::xyClicked = QPoint(x, y);
    PLENDRA_ASSERT("dialog", m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width());

    // The whole view widget, frame included, is taken to span the whole photo,
    // whatever the photo's shape; the preview's letterboxing is ignored.
    const QPoint pixel = keying::sampledPixel(m_foreground.size(), QPoint(x, y), ui->graphicsView->size());
    MaskOut(m_foreground, keying::keyColourAt(m_foreground, pixel));
    UpdateScene();
}

void Dialog::UpdateScene()
{
    QPixmap pix = QPixmap::fromImage(m_foreground);
    PLENDRA_ASSERT("dialog", !pix.isNull());
    m_preview = pix;

    const QPixmap fitted = pix.scaled(MyGlobal::PrevSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    m_scene->clear();
    m_scene->addPixmap(fitted);
    ui->graphicsView->setScene(m_scene);
    ui->graphicsView->viewport()->update();
}

void Dialog::MaskOut(QImage& img, unsigned int key)
{
    QTextStream unused(&MyGlobal::log); // the keyer has nothing to log
    keying::maskOut(img, m_bkg, key);
}
