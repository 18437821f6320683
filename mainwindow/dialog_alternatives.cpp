// SPDX-License-Identifier: MIT
// Keying helpers the window's own flow does not call; the work is done by the
// keying engine, against the window's background and placement choice.
#include "mainwindow/dialog.h"

#include "state/fatal.h"
#include "keying/alternatives.h"

#include <QFont>

void Dialog::MaskOut2(QImage& img, unsigned int key)
{
    // A background of another size would be read outside its pixels.
    PLENDRA_ASSERT("dialog", img.height() == m_bkg.height());
    PLENDRA_ASSERT("dialog", img.width() == m_bkg.width());
    keying::maskOut2(img, m_bkg, key);
}

void Dialog::approxPixel(const QImage& img, int x, int y, long& dark, long& light)
{
    keying::approxPixel(img, x, y, dark, light);
}

bool Dialog::approximateColor(const QImage& img)
{
    return keying::approximateColor(img, m_pos);
}

QFont Dialog::calcFont(const QImage& img, const QString& text)
{
    return keying::calcFont(img, text);
}
