// SPDX-License-Identifier: MIT
// The output folder choice ("ChooseOutDir"), driven on the real window.
#include "tests/output/savetestcase.h"

using testsupport::changedEntries;
using testsupport::listTree;
using widgettest::ModalAnswerer;

using namespace savetest;

class SaveFoldersTest : public SaveTestCase
{
    Q_OBJECT

private slots:
    // The folder picker starts in the output folder, shows folders only and
    // keeps links unresolved; cancelling it changes nothing.
    void chooseOutDirCancelledChangesNothing()
    {
        Dialog& d = window();
        QPushButton* button = addChooseOutDirButton(d);
        const auto before = listTree(m_home);
        QString caption;
        QString startFolder;
        bool foldersOnly = false;
        bool linksKept = false;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                caption = picker->windowTitle();
                startFolder = picker->directory().absolutePath();
                foldersOnly = picker->testOption(QFileDialog::ShowDirsOnly);
                linksKept = picker->testOption(QFileDialog::DontResolveSymlinks);
            }
            dismiss(modal);
        });

        QTest::mouseClick(button, Qt::LeftButton);

        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(caption, QStringLiteral("Select Output Directory"));
        QCOMPARE(startFolder, m_output);
        QVERIFY(foldersOnly);
        QVERIFY(linksKept);
        QCOMPARE(MyGlobal::outputDir, m_output);
        QCOMPARE(withoutFileDialogState(changedEntries(before, listTree(m_home))), QStringList());
    }

    // Choosing the same parent folder twice: the first time "Osl_Output#" is
    // made silently and used; the second time the warning comes up, where
    // Abort keeps the previous output folder and "Create Anyway, I know what
    // I'm doing" takes the existing "Osl_Output#".
    void chooseOutDirSameParentTwice()
    {
        Dialog& d = window();
        QPushButton* button = addChooseOutDirButton(d);
        const QString first = m_home + QStringLiteral("/Pictures/Keyed");
        const QString other = m_home + QStringLiteral("/Pictures/Other");
        QVERIFY(QDir().mkpath(first));
        QVERIFY(QDir().mkpath(other));

        QString pick;          // folder the picker answers with
        QString answer;        // text of the warning's button to press
        QString warningText;
        QList<QAbstractButton*> warningButtons;
        QMessageBox::StandardButtons standard;
        QString defaultText;
        QMessageBox::ButtonRole customRole = QMessageBox::InvalidRole;
        QMessageBox::Icon icon = QMessageBox::Warning;
        QString title = QStringLiteral("unset");
        QWidget* parent = &d;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                chooseFolder(picker, pick);
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                warningText = box->text();
                warningButtons = box->buttons();
                standard = box->standardButtons();
                defaultText = box->defaultButton() ? box->defaultButton()->text() : QString();
                if (QAbstractButton* custom = buttonWithText(box, kCreateAnyway))
                    customRole = box->buttonRole(custom);
                icon = box->icon();
                title = box->windowTitle();
                parent = box->parentWidget();
                pressButton(box, answer);
            } else {
                dismiss(modal);
            }
        });
        const QString firstOut = first + QStringLiteral("/Osl_Output#");
        const QString otherOut = other + QStringLiteral("/Osl_Output#");

        // First choice of the folder: made silently.
        pick = first;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(MyGlobal::outputDir, firstOut);
        QVERIFY(QFileInfo(firstOut).isDir());
        QVERIFY(QFile(firstOut + QStringLiteral("/earlier.png")).open(QIODevice::WriteOnly));

        pick = other;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(MyGlobal::outputDir, otherOut);

        // Second choice of the first folder: warned; Abort keeps the previous one.
        pick = first;
        answer = QStringLiteral("Abort");
        const int seenBefore = answerer.seen.size();
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), seenBefore + 2);
        QCOMPARE(answerer.seen.last().className, QStringLiteral("QMessageBox"));
        QCOMPARE(warningText, kWarningText);
        QCOMPARE(warningButtons.size(), 2);
        QCOMPARE(standard, QMessageBox::StandardButtons(QMessageBox::Abort));
        QCOMPARE(defaultText, answer);
        QCOMPARE(customRole, QMessageBox::ActionRole);
        QCOMPARE(icon, QMessageBox::NoIcon);
        QCOMPARE(title, QString());
        QVERIFY(parent == nullptr);
        QCOMPARE(MyGlobal::outputDir, otherOut);

        // And again, now going ahead: the existing folder is used as it is.
        answer = kCreateAnyway;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), seenBefore + 4);
        QCOMPARE(MyGlobal::outputDir, firstOut);
        QVERIFY(QFile::exists(firstOut + QStringLiteral("/earlier.png")));
        QCOMPARE(QDir(first).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{QStringLiteral("Osl_Output#")});
    }

    // When "Osl_Output#" can be neither made nor entered (a file holds the
    // name), going ahead makes the chosen folder itself the output folder.
    void chooseOutDirFallsBackToChosenFolder()
    {
        Dialog& d = window();
        QPushButton* button = addChooseOutDirButton(d);
        const QString chosen = m_home + QStringLiteral("/Blocked");
        QVERIFY(QDir().mkpath(chosen));
        QFile blocker(chosen + QStringLiteral("/Osl_Output#"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        bool warned = false;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                chooseFolder(picker, chosen);
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                warned = box->text() == kWarningText;
                pressButton(box, kCreateAnyway);
            } else {
                dismiss(modal);
            }
        });

        QTest::mouseClick(button, Qt::LeftButton);

        QVERIFY(warned);
        QCOMPARE(MyGlobal::outputDir, chosen);
        QVERIFY(QFileInfo(chosen + QStringLiteral("/Osl_Output#")).isFile());
    }
};

PLENDRA_TEST_MAIN(SaveFoldersTest)
#include "tst_savefolders.moc"
