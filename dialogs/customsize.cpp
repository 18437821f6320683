// SPDX-License-Identifier: MIT
#include "dialogs/customsize.h"

#include "state/globals.h"
#include "ui_customsize.h"

#include <QEvent>
#include <QMessageBox>

CustomSize::CustomSize(QWidget* parent)
    : QDialog(parent)
    , ui(new Ui_CustomSize)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Custom Size - Osterlind"));
}

CustomSize::~CustomSize()
{
    delete ui;
}

void CustomSize::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    // The form's own title ("Dialog") comes back with its texts.
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void CustomSize::on_Ok_clicked()
{
    const int width = ui->width->text().toInt(nullptr, 10);
    const int height = ui->height->text().toInt(nullptr, 10);
    // Only zero (which is also what an empty or non-numeric entry reads as)
    // is refused; a negative size is taken as it is.
    if (width != 0 && height != 0) {
        UserSettings::m_size = QSize(width, height);
        close();
        return;
    }
    QMessageBox box;
    box.setText(QStringLiteral("Please enter a valid values for width and height"));
    box.exec();
}
