// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QImage>

class QEvent;
class QGraphicsScene;
class Ui_Advanced;

// Settings of the text overlay: font, colour and transparency of
// MyGlobal::Cur_wmText, previewed over the selected foreground. The output
// folder, size and format controls of the form are offered but do nothing here.
class Advanced : public QDialog
{
    Q_OBJECT

public:
    explicit Advanced(QWidget* parent = nullptr);
    ~Advanced() override;

    // Draws the text over the full-size foreground and shows it fitted into
    // MyGlobal::PrevSize2.
    void UpdateScene();

protected:
    void changeEvent(QEvent* event) override;

private slots:
    void on_horizontalScrollBar_sliderMoved(int value);
    void on_horizontalScrollBar_valueChanged(int value);
    void on_FontSize_clicked();
    void on_FontColor_clicked();
    void on_ApplySetting_clicked();
    void on_Reset_clicked();
    void on_Reset_3_clicked();

private:
    Ui_Advanced* ui;
    QGraphicsScene* m_scene = nullptr;
    QImage m_image;   // the foreground as first read, reduced for the preview
};
