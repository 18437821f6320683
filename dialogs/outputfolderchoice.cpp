// SPDX-License-Identifier: MIT
#include "dialogs/outputfolderchoice.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace {

const QString kOutputSubfolder = QStringLiteral("Osl_Output#");

// The chooser's texts belong to the main window's translations.
QString windowText(const char* text)
{
    return QCoreApplication::translate("Dialog", text);
}

// True unless the user aborts on the warning that the folder will be reused.
bool acceptReusingOutputFolder()
{
    QMessageBox warning;
    warning.setText(QStringLiteral("WARNING: The output directory already exists.\n"
                                   "Your files WILL be overwritten without further warning.\n"
                                   "Press OK to continue using the same directory.\n"
                                   "Press Cancel to abort and change the directory"));
    warning.setStandardButtons(QMessageBox::Abort);
    warning.setDefaultButton(QMessageBox::Abort);
    warning.addButton(windowText("Create Anyway, I know what I'm doing"), QMessageBox::ActionRole);
    warning.exec();
    return warning.clickedButton() != warning.button(QMessageBox::Abort);
}

} // namespace

QString chooseOutputFolder(QWidget* parent, const QString& current)
{
    const QString chosen = QFileDialog::getExistingDirectory(parent, windowText("Select Output Directory"), current,
                                                             QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (chosen.isEmpty())
        return current;

    QDir folder(chosen);
    // The sub-folder's name is fixed, so choosing the same folder again finds
    // the earlier output there: the user is warned before it is reused.
    if (!folder.mkdir(kOutputSubfolder) && !acceptReusingOutputFolder())
        return current;

    // When the sub-folder could not be made, the chosen folder itself is used.
    folder.cd(kOutputSubfolder);
    return folder.absolutePath();
}
