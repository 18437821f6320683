// SPDX-License-Identifier: MIT
#include "forms/feedback.h"

#include "state/webaddress.h"
#include "ui_feedback.h"

#include <QDesktopServices>
#include <QEvent>
#include <QUrl>

Feedback::Feedback(QWidget* parent)
    : QDialog(parent)
    , ui(new Ui_Feedback)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Feedback"));
    // The reasons only matter to someone who answers "No".
    ui->REASONS->hide();
}

Feedback::~Feedback()
{
    delete ui;
}

// Re-applying the form's texts also brings back its own title, "Dialog".
void Feedback::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void Feedback::on_radioYes_clicked()
{
    ui->REASONS->hide();
}

void Feedback::on_radioNo_clicked()
{
    ui->REASONS->show();
}

// Every field is sent, shown or not, and no answer counts as "No". Unlike the
// help request, the comments keep their line breaks. Values go in as typed;
// QUrl's tolerant parsing is the only escaping.
void Feedback::on_SubmitFeedback_clicked()
{
    const QString considering = ui->radioYes->isChecked() ? QStringLiteral("Yes") : QStringLiteral("No");
    const QString comments = ui->comments->toPlainText();
    const QString address = productWebAddress() + QStringLiteral("/feedback?emailid=") + ui->mailid->text()
        + QStringLiteral("&considering=") + considering + QStringLiteral("&features=") + ui->features->text()
        + QStringLiteral("&price=") + ui->price->text() + QStringLiteral("&comments=") + comments;
    QDesktopServices::openUrl(QUrl(address));
    close();
}
