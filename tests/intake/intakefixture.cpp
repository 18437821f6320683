// SPDX-License-Identifier: MIT
#include "tests/intake/intakefixture.h"

#include "state/globals.h"
#include "mainwindow/dialog.h"
#include "ui_dialog.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QTest>
#include <QTimer>

namespace intaketest {

Window::Window(const QStringList& backgroundNames)
{
    testsupport::resetGlobals();
    if (!dir.isValid() || !testsupport::makeSampleFolder(dir.path(), backgroundNames))
        return;
    MyGlobal::appDir = dir.path();
    MyGlobal::outputDir = dir.path();
    dialog = std::make_unique<Dialog>();
    dialog->show();
    if (!QTest::qWaitForWindowExposed(dialog.get()))
        dialog.reset();
}

Window::~Window()
{
    dialog.reset();
    testsupport::resetGlobals();
}

void clickRow(QListWidget* list, int row)
{
    QListWidgetItem* item = list->item(row);
    QVERIFY2(item, "no such row");
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualItemRect(item).center());
}

void clickButton(QWidget* button)
{
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, button->rect().center());
}

void pressPreview(Dialog& dialog, int x, int y)
{
    QTest::mousePress(DialogTestAccess::ui(dialog)->graphicsView->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, y));
}

void answerModal(std::function<bool(QWidget*)> handle)
{
    // Polls from the event loop that the modal dialog runs; gives up after a
    // while so that a dialog that never opens does not leave a timer behind.
    auto* timer = new QTimer;
    auto tries = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, tries, handle]() {
        // Stopped while answering: answering may run a nested modal loop.
        timer->stop();
        QWidget* modal = QApplication::activeModalWidget();
        if ((modal && modal->isVisible() && handle(modal)) || ++*tries > 1000)
            timer->deleteLater();
        else
            timer->start();
    });
    timer->start(10);
}

void answerFileDialog(const QStringList& names, std::shared_ptr<FileDialogSeen> seen)
{
    answerModal([names, seen](QWidget* modal) {
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        if (!dialog)
            return false;
        auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        seen->widgetBased = edit && edit->isVisible();
        seen->caption = dialog->windowTitle();
        seen->nameFilters = dialog->nameFilters();
        seen->directory = dialog->directory().absolutePath();
        seen->fileMode = int(dialog->fileMode());
        seen->showDirsOnly = dialog->testOption(QFileDialog::ShowDirsOnly);
        seen->dontResolveSymlinks = dialog->testOption(QFileDialog::DontResolveSymlinks);
        seen->answered = true;
        if (names.isEmpty() || !edit) {
            QTest::keyClick(dialog, Qt::Key_Escape);
            return true;
        }
        QString text;
        if (names.size() == 1) {
            text = names.first();
        } else {
            for (const QString& name : names)
                text += QLatin1Char('"') + name + QStringLiteral("\" ");
        }
        edit->setFocus();
        edit->setText(text);
        QTest::keyClick(edit, Qt::Key_Return);
        return true;
    });
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

bool samePixels(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull() != b.isNull())
        return false;
    return a.convertToFormat(QImage::Format_ARGB32) == b.convertToFormat(QImage::Format_ARGB32);
}

void markPreview(Dialog& dialog)
{
    QGraphicsRectItem* marker = DialogTestAccess::scene(dialog)->addRect(0, 0, 1, 1);
    marker->setData(0, QStringLiteral("intake-test-marker"));
}

bool previewRedrawnSinceMark(Dialog& dialog)
{
    const QList<QGraphicsItem*> items = DialogTestAccess::scene(dialog)->items();
    for (const QGraphicsItem* item : items) {
        if (item->data(0).toString() == QStringLiteral("intake-test-marker"))
            return false;
    }
    return true;
}

QStringList selectedTexts(const QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->isSelected())
            texts << list->item(i)->text();
    }
    return texts;
}

} // namespace intaketest
