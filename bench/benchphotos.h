// SPDX-License-Identifier: MIT
#pragma once

// Deterministic photos for the benchmarks: a studio shot on a noisy green
// backdrop with a person-like subject covering about a sixth of the frame (so a
// click on the backdrop replaces about 84% of the pixels), and a different,
// colourful photo of the same size to key against.

#include <QImage>
#include <QSize>
#include <QString>

namespace benchphotos {

// 2, 24 and 45 megapixels, in the 3:2 shape of camera sensors.
QSize sizeForMegapixels(int megapixels);

QImage studioShot(QSize size, quint32 seed);
QImage backgroundPhoto(QSize size, quint32 seed);

// Fills `folder` the way the program expects beside its bundle: "1green.JPG"
// (the studio shot as a JPEG), a small "blue1.JPG" and "Bkg/a.jpg" (the
// background photo as a JPEG). Returns false when a file could not be written.
bool makeSampleFolder(const QString& folder, QSize size);

} // namespace benchphotos
