// SPDX-License-Identifier: MIT
#pragma once

// How far the icons of a long Add have come. The list takes its items at
// once and stays usable; when the icons take more than about a second, a
// progress dialog that does not block the window shows how many are filled.

#include <QObject>
#include <QPointer>

class DropListWidget;
class QProgressDialog;
class QWidget;

class ThumbnailProgress : public QObject
{
    Q_OBJECT

public:
    ThumbnailProgress(DropListWidget* list, QWidget* window);

    // Called after items were added: follows the list until its icons are
    // all filled. Adds made meanwhile join the same count.
    void follow();

private:
    void filled(int pending);

    DropListWidget* m_list;
    QWidget* m_window;
    QPointer<QProgressDialog> m_dialog;
    int m_done = 0;
};
