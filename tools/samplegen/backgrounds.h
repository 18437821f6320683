// SPDX-License-Identifier: MIT
#pragma once

// The pictures of the "Bkg" folder: the places the keyed person is put into.

#include <QImage>
#include <QString>

#include <vector>

namespace samplegen {

struct Background
{
    QString fileName;    // suffix in the letter case it is saved with
    QImage image;
    const char* format;  // "JPEG" or "PNG"
    int quality;
};

// The first by name (ignoring case) is the program's background at start.
std::vector<Background> makeBackgrounds();

} // namespace samplegen
