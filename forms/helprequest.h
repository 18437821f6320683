// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class QEvent;
class Ui_HelpRequest;

// Asks the user what confused them and hands the answer, as a web address on
// the product's site, to the desktop's browser. Nothing is sent by the program
// itself.
class HelpRequest : public QDialog
{
    Q_OBJECT

public:
    explicit HelpRequest(QWidget* parent = nullptr);
    ~HelpRequest() override;

protected:
    void changeEvent(QEvent* event) override;

private slots:
    void on_buttonBox_accepted();

private:
    Ui_HelpRequest* ui;
};
