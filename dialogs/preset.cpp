// SPDX-License-Identifier: MIT
#include "dialogs/preset.h"

#include "state/globals.h"
#include "ui_preset.h"

#include <QEvent>
#include <QFileDialog>

Preset::Preset(QWidget* parent)
    : QDialog(parent)
    , ui(new Ui_Preset)
{
    ui->setupUi(this);
    // Only a close button in the title bar: no minimising or maximising a
    // window that is gone once the folder is picked.
    setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);
}

Preset::~Preset()
{
    delete ui;
}

void Preset::on_Browse_clicked()
{
    // The folder chooser of "Save Image"'s output folder, wording included;
    // it starts in the output folder, not in the current hot folder.
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Select Output Directory"), MyGlobal::outputDir,
                                                             QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (folder.isEmpty())
        return; // cancelled: the hot folder stays as it was
    MyGlobal::HotFolder_FG = folder;
    ui->Browsepath->setText(folder);
}

void Preset::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}
