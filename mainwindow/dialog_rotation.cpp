// SPDX-License-Identifier: MIT
// Rotation of the foreground and the 3 x 3 placement choices.
#include "mainwindow/dialog.h"

#include "keying/pipeline.h"
#include "state/globals.h"
#include "ui_dialog.h"


void Dialog::Rotate()
{
    keying::readPhotoAsKeyed(MyGlobal::CurSelection, ui->Rotation->currentText().toInt(), m_foreground);
    // Scaled from its current pixels, not reloaded: only choosing a background
    // reads its file again.
    m_bkg = keying::fittedBackground(m_bkg, m_foreground.size());
}

void Dialog::on_Rotation_currentIndexChanged(QString)
{
    if (MyGlobal::xyClicked != QPoint(0, 0)) {
        GVClicked(MyGlobal::xyClicked.x(), MyGlobal::xyClicked.y());
    } else {
        Rotate();
        UpdateScene();
    }
}

void Dialog::place(int pos, int textAlign)
{
    m_pos = pos;
    m_textAlign = textAlign;
    UpdateScene();
}

// Row (top, middle, bottom) then column (left, centre, right). The middle row
// aligns its text to the top centre, unlike the other rows.
void Dialog::pos00() { place(Qt::AlignTop | Qt::AlignLeft, Qt::AlignCenter); }
void Dialog::pos01() { place(Qt::AlignTop | Qt::AlignHCenter, Qt::AlignCenter); }
void Dialog::pos02() { place(Qt::AlignTop | Qt::AlignRight, Qt::AlignCenter); }
void Dialog::pos10() { place(Qt::AlignVCenter | Qt::AlignLeft, Qt::AlignTop | Qt::AlignHCenter); }
void Dialog::pos11() { place(Qt::AlignCenter, Qt::AlignTop | Qt::AlignHCenter); }
void Dialog::pos12() { place(Qt::AlignVCenter | Qt::AlignRight, Qt::AlignTop | Qt::AlignHCenter); }
void Dialog::pos20() { place(Qt::AlignBottom | Qt::AlignLeft, Qt::AlignCenter); }
void Dialog::pos21() { place(Qt::AlignBottom | Qt::AlignHCenter, Qt::AlignCenter); }
void Dialog::pos22() { place(Qt::AlignBottom | Qt::AlignRight, Qt::AlignCenter); }
