// SPDX-License-Identifier: MIT
// Both "Add" buttons open their file dialog at the photographers' usual
// starting point, "/Users", whatever the machine.

#include "tests/fixture/windowfixture.h"

#include "mainwindow/dialog.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace widgettest;

namespace {

// What the file dialog showed when it came up.
struct StartSeen
{
    bool answered = false;
    bool widgetBased = false;
    QString directory;   // the folder the dialog lists
    QString fileNameBox; // the text of its file name box
};

// Answers the next file dialog with Escape, noting where it started.
void noteStartAndCancel(std::shared_ptr<StartSeen> seen)
{
    ModalAnswerer::answerNext([seen](QWidget* modal) {
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        if (!dialog)
            return false;
        auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        seen->widgetBased = edit && edit->isVisible();
        seen->directory = dialog->directory().absolutePath();
        seen->fileNameBox = edit ? edit->text() : QString();
        seen->answered = true;
        QTest::keyClick(dialog, Qt::Key_Escape);
        return true;
    });
}

} // namespace

class TestAddStartFolder : public QObject
{
    Q_OBJECT

private slots:
    void addDialogStartsAtUsers_data();
    void addDialogStartsAtUsers();
};

void TestAddStartFolder::addDialogStartsAtUsers_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("FOREGROUNDS") << QStringLiteral("AddForegGround");
    QTest::newRow("BACKGROUNDS") << QStringLiteral("AddBackground");
}

void TestAddStartFolder::addDialogStartsAtUsers()
{
    QFETCH(QString, button);
    Window w;
    QVERIFY(w.ok());
    auto* add = w.dialog->findChild<QPushButton*>(button);
    QVERIFY2(add, qPrintable(button));

    auto seen = std::make_shared<StartSeen>();
    noteStartAndCancel(seen);
    clickButton(add);

    QVERIFY(seen->answered);
    QVERIFY2(seen->widgetBased, "the file dialog must be Qt's own, with a file name box");
    // Qt's own dialog lists the start folder when it exists. When it does not
    // (a Linux machine has no /Users), it lists the folder above it, "/", and
    // puts the missing folder's name, "Users", into the file name box. Either
    // way the listed folder joined with the box gives back the start folder.
    QCOMPARE(QDir::cleanPath(QDir(seen->directory).filePath(seen->fileNameBox)), QStringLiteral("/Users"));
    if (QFileInfo(QStringLiteral("/Users")).isDir()) {
        QCOMPARE(seen->directory, QStringLiteral("/Users"));
        QCOMPARE(seen->fileNameBox, QString());
    } else {
        QCOMPARE(seen->directory, QStringLiteral("/"));
        QCOMPARE(seen->fileNameBox, QStringLiteral("Users"));
    }
}

PLENDRA_TEST_MAIN(TestAddStartFolder)
#include "tst_addstartfolder.moc"
