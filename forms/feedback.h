// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class QEvent;
class Ui_Feedback;

// A short purchase survey. "No" opens the REASONS box (price and missing
// features); "Submit" hands the answers, as a web address on the product's
// site, to the desktop's browser and closes the form.
class Feedback : public QDialog
{
    Q_OBJECT

public:
    explicit Feedback(QWidget* parent = nullptr);
    ~Feedback() override;

protected:
    void changeEvent(QEvent* event) override;

private slots:
    void on_radioYes_clicked();
    void on_radioNo_clicked();
    void on_SubmitFeedback_clicked();

private:
    Ui_Feedback* ui;
};
