// SPDX-License-Identifier: MIT
#pragma once

// Shared pieces of the hostile keying and output tests that need no widget:
// the composite worked out pixel by pixel apart from the window, the format a
// saved file must have, and the reading of a child's standard error after a
// named assertion. The window itself comes from the window fixture.

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

namespace hostileoutput {

// The photo file keyed as the window keys it: loaded afresh, a palette turned
// into 32-bit pixels (a palette cannot hold the background's colours), the key
// colour read where a press at `at` in a view of `viewSize` lands, then every
// backdrop pixel replaced, one pixel at a time, by `background`'s.
QImage keyedComposite(const QString& photoPath, const QImage& background, QPoint at, QSize viewSize);

// The background file as the window holds it for a photo of `size`.
QImage fittedBackground(const QString& backgroundPath, QSize size);

// What the image format of a saved file must be, by the suffix of the photo
// it was made from (the name Qt's reader gives it).
QByteArray formatForSuffix(const QString& fileName);

// The text the fatal assertion prints for the condition `condition` written
// in `sourceFile` (a path below the source folder), line taken from the file.
QString assertionLine(const QString& sourceFile, const QString& condition);

// Lines of a child's standard error that report a sanitizer finding.
QStringList sanitizerReports(const QByteArray& standardError);

} // namespace hostileoutput
