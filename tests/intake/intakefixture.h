// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the intake widget tests: a window built on a generated
// sample folder, clicks on list items, and answers to the modal dialogs that
// the list buttons open.

#include "tests/support/testsupport.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class Dialog;
class QFileDialog;
class QListWidget;
class QWidget;

namespace intaketest {

// A main window on its own generated sample folder ("1green.JPG", "blue1.JPG"
// and "Bkg"), shown and exposed on the offscreen platform.
struct Window
{
    QTemporaryDir dir;
    std::unique_ptr<Dialog> dialog;

    explicit Window(const QStringList& backgroundNames = {QStringLiteral("a.jpg"), QStringLiteral("b.png")});
    ~Window();
    bool ok() const { return dialog != nullptr; }
    QString path(const QString& name) const { return dir.path() + QLatin1Char('/') + name; }
};

// A real left click at the centre of the row's rectangle in the list's viewport.
void clickRow(QListWidget* list, int row);
// A real click on a button.
void clickButton(QWidget* button);
// A real press on the preview's viewport at (x, y).
void pressPreview(Dialog& dialog, int x, int y);

// What the answering timer saw of a file dialog.
struct FileDialogSeen
{
    bool answered = false;
    bool widgetBased = false; // Qt's own dialog with a file name line edit, not a native one
    QString caption;
    QStringList nameFilters;
    QString directory;
    int fileMode = -1;
    bool showDirsOnly = false;
    bool dontResolveSymlinks = false;
};

// Waits (from a timer, inside the modal loop that is about to start) for the
// next modal QFileDialog and answers it: types `names` into its file name line
// edit ("a" or "\"a\" \"b\"") and presses Return, or presses Escape when
// `names` is empty. `seen` is filled in before answering.
void answerFileDialog(const QStringList& names, std::shared_ptr<FileDialogSeen> seen);

// Waits for the next modal widget for which `handle` returns true.
void answerModal(std::function<bool(QWidget*)> handle);

// The bytes of a file, to show afterwards that nothing wrote to it.
QByteArray fileBytes(const QString& path);

// Equal size and equal pixels, compared in one format.
bool samePixels(const QImage& a, const QImage& b);

// Puts a marker item into the preview scene. Every preview refresh clears the
// scene, so the marker tells whether the preview was redrawn since.
void markPreview(Dialog& dialog);
bool previewRedrawnSinceMark(Dialog& dialog);

// Texts of the list's selected items, in row order.
QStringList selectedTexts(const QListWidget* list);

} // namespace intaketest
