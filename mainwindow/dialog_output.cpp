// SPDX-License-Identifier: MIT
// "Save Image", the choice of the output folder and of the output size.
#include "mainwindow/dialog.h"

#include "dialogs/customsize.h"
#include "dialogs/outputfolderchoice.h"
#include "keying/pipeline.h"
#include "output/opener.h"
#include "output/outputchoices.h"
#include "output/savetarget.h"
#include "state/globals.h"
#include "ui_dialog.h"

void Dialog::Run()
{
    Rotate();
    emit newProgress(1);
    ui->listWidget->selectAll();

    if (ui->listWidget->count() == 0) {
        // Nothing to save: ask for photos instead.
        addfiles();
        return;
    }

    // The composite keeps its foreground's name, and so its format; an
    // earlier save of the same photo is replaced without a question, but only
    // by a complete file. A failed save is not reported.
    const QString target = saveTarget(MyGlobal::outputDir, MyGlobal::CurSelection);
    keying::saveComposite(m_preview.toImage(), target);

    openOnDesktop(MyGlobal::outputDir);
    openOnDesktop(target);

    ui->listWidget->setCurrentRow(0);
    ui->Run->setEnabled(true);
}

void Dialog::on_ChooseOutDir_clicked()
{
    MyGlobal::outputDir = chooseOutputFolder(this, MyGlobal::outputDir);
}

// Only "Custom Size" does anything: it asks for the size and remembers it.
// The other entries are offered but not stored, since saving ignores them.
void Dialog::on_comboBox_currentIndexChanged(int index)
{
    if (index != kCustomSizeIndex)
        return;
    CustomSize ask(nullptr);
    ask.exec();
}
