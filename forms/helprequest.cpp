// SPDX-License-Identifier: MIT
#include "forms/helprequest.h"

#include "state/webaddress.h"
#include "ui_helprequest.h"

#include <QDesktopServices>
#include <QEvent>
#include <QUrl>

HelpRequest::HelpRequest(QWidget* parent)
    : QDialog(parent)
    , ui(new Ui_HelpRequest)
{
    ui->setupUi(this);
}

HelpRequest::~HelpRequest()
{
    delete ui;
}

void HelpRequest::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

// The comment travels as one line of the query: its line breaks become " - ".
// The fields go in as typed; QUrl's tolerant parsing is the only escaping, so
// a typed "&" or "#" cuts the query short.
void HelpRequest::on_buttonBox_accepted()
{
    QString comments = ui->plainTextEdit->toPlainText();
    comments.replace(QStringLiteral("\n"), QStringLiteral(" - "), Qt::CaseSensitive);
    const QString address = productWebAddress() + QStringLiteral("/helprequest?emailid=") + ui->lineEdit->text()
        + QStringLiteral("&comments=") + comments;
    QDesktopServices::openUrl(QUrl(address));
}
