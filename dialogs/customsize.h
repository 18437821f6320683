// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class Ui_CustomSize;

// Asks for a custom output width and height and remembers them in
// UserSettings::m_size. Lives for one modal run.
class CustomSize : public QDialog
{
    Q_OBJECT

public:
    explicit CustomSize(QWidget* parent = nullptr);
    ~CustomSize() override;

protected:
    void changeEvent(QEvent* event) override;

private slots:
    void on_Ok_clicked();

private:
    Ui_CustomSize* ui = nullptr;
};
