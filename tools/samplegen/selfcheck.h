// SPDX-License-Identifier: MIT
#pragma once

// Keys a generated photo the way the program does after a click on the
// backdrop, and measures how much of the backdrop goes and how much of the
// person wrongly goes with it.

#include <QImage>
#include <QString>

namespace samplegen {

// `photo` is the photo as read back from its file, `truth` the generator's
// region map of it. Prints one line per click point. Keyed previews over
// `background` (already the photo's size) are written into `viewDir`.
// Returns false when a click misses the targets.
bool checkKeying(const QString& name, const QImage& photo, const QImage& truth, const QImage& background,
                 const QString& viewDir);

} // namespace samplegen
