// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the hostile keying and output tests: the composite worked
// out pixel by pixel apart from the window, real presses and clicks on the
// window's lists and preview, drops on BACKGROUNDS, and the reading of a
// child's standard error after a named assertion.

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QString>
#include <QStringList>

class Dialog;
class QListWidget;
class QListWidgetItem;

namespace hostileoutput {

// The photo file keyed as the window keys it: loaded afresh, a palette turned
// into 32-bit pixels (a palette cannot hold the background's colours), the key
// colour read where a press at `at` in a view of `viewSize` lands, then every
// backdrop pixel replaced, one pixel at a time, by `background`'s.
QImage keyedComposite(const QString& photoPath, const QImage& background, QPoint at, QSize viewSize);

// The background file as the window holds it for a photo of `size`.
QImage fittedBackground(const QString& backgroundPath, QSize size);

// A real left click on the row of `item` (scrolled into view first).
void clickItem(QListWidget* list, QListWidgetItem* item);
// Drops `path` onto the list's viewport as a file address from the desktop.
void dropFile(QListWidget* list, const QString& path);
// A real press of the left button on the preview, at exactly `at`.
void pressPreview(Dialog& dialog, QPoint at);
// The preview's viewport size.
QSize previewViewportSize(Dialog& dialog);

// The four corners of the preview's viewport, its centre and a point on the
// backdrop near the top-left corner.
QList<QPoint> previewPressPoints(Dialog& dialog);

// What the image format of a saved file must be, by the suffix of the photo
// it was made from (the name Qt's reader gives it).
QByteArray formatForSuffix(const QString& fileName);

// The text the fatal assertion prints for the condition `condition` written
// in `sourceFile` (a path below the source folder), line taken from the file.
QString assertionLine(const QString& sourceFile, const QString& condition);

// Lines of a child's standard error that report a sanitizer finding.
QStringList sanitizerReports(const QByteArray& standardError);

} // namespace hostileoutput
