// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class Ui_Preset;

// Picks the watched ("hot") folder that a camera writes into. It has no OK or
// Cancel button: the user closes it from its title bar, and the main window
// reads the chosen folder from MyGlobal::HotFolder_FG afterwards.
class Preset : public QDialog
{
    Q_OBJECT

public:
    explicit Preset(QWidget* parent);
    ~Preset() override;

private slots:
    void on_Browse_clicked();

protected:
    void changeEvent(QEvent* event) override;

private:
    Ui_Preset* ui = nullptr;
};
