// SPDX-License-Identifier: MIT
// "Save Image" and the choice of the output folder.
#include "mainwindow/dialog.h"

#include "app/globals.h"
#include "ui_dialog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

namespace {

// The desktop's opener, found through PATH. Debian has a command named
// "open" that does something else entirely, so only macOS uses that name.
#ifdef Q_OS_MACOS
const QString kDesktopOpener = QStringLiteral("open");
#else
const QString kDesktopOpener = QStringLiteral("xdg-open");
#endif

// Shows a folder or a file on the desktop and waits for the opener to return.
// The path is appended unquoted, so one holding blanks reaches the opener as
// several arguments.
void openOnDesktop(const QString& path)
{
    // Qt 6's execute() no longer takes a whole command line; splitting it
    // here gives the opener the same arguments as before.
    const QStringList words = QProcess::splitCommand(kDesktopOpener + QStringLiteral(" ") + path);
    if (words.isEmpty())
        return;
    QProcess::execute(words.first(), words.mid(1));
}

const QString kOutputSubfolder = QStringLiteral("Osl_Output#");

} // namespace

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
    // earlier save of the same photo is overwritten without a question.
    const QString target = MyGlobal::outputDir + QStringLiteral("/") + QFileInfo(MyGlobal::CurSelection).fileName();
    m_preview.toImage().save(target, nullptr, -1); // a failed save is not reported

    openOnDesktop(MyGlobal::outputDir);
    openOnDesktop(target);

    ui->listWidget->setCurrentRow(0);
    ui->Run->setEnabled(true);
}

void Dialog::on_ChooseOutDir_clicked()
{
    const QString chosen = QFileDialog::getExistingDirectory(this, tr("Select Output Directory"), MyGlobal::outputDir,
                                                             QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
    if (chosen.isEmpty())
        return;

    QDir folder(chosen);
    // The sub-folder's name is fixed, so choosing the same folder again finds
    // the earlier output there: the user is warned before it is reused.
    if (!folder.mkdir(kOutputSubfolder)) {
        QMessageBox warning;
        warning.setText(QStringLiteral("WARNING: The output directory already exists.\n"
                                       "Your files WILL be overwritten without further warning.\n"
                                       "Press OK to continue using the same directory.\n"
                                       "Press Cancel to abort and change the directory"));
        warning.setStandardButtons(QMessageBox::Abort);
        warning.setDefaultButton(QMessageBox::Abort);
        warning.addButton(tr("Create Anyway, I know what I'm doing"), QMessageBox::ActionRole);
        warning.exec();
        if (warning.clickedButton() == warning.button(QMessageBox::Abort))
            return;
    }

    // When the sub-folder could not be made, the chosen folder itself is used.
    folder.cd(kOutputSubfolder);
    MyGlobal::outputDir = folder.absolutePath();
}
