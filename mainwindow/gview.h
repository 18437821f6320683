// SPDX-License-Identifier: MIT
#pragma once

#include <QGraphicsView>

// The preview. A press of any mouse button becomes Press(x, y) in viewport
// coordinates, delivered to the parent window's GVClicked(int, int); the scene
// itself never sees presses, so nothing in the preview can be selected or
// dragged.
class Gview : public QGraphicsView
{
    Q_OBJECT

public:
    explicit Gview(QWidget* parent = nullptr);

signals:
    void Press(int, int);

protected:
    void mousePressEvent(QMouseEvent* event) override;
};
