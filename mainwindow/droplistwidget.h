// SPDX-License-Identifier: MIT
#pragma once

#include <QListWidget>

// A thumbnail list that takes image files dropped from the desktop. Dropped
// files are listed where they lie; nothing is copied.
class DropListWidget : public QListWidget
{
    Q_OBJECT

public:
    explicit DropListWidget(QWidget* parent);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};
