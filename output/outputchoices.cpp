// SPDX-License-Identifier: MIT
#include "output/outputchoices.h"

#include "mainwindow/dialog.h"
#include "output/customsize.h"

OutputSize OutputSizes[kOutputSizeCount] = {
    {0, -1, -1},
    {1, 640, 480},
    {2, 320, 240},
    {3, 240, 160},
    {4, 120, 120},
};

const OutputFormat OutputFormats[kOutputFormatCount] = {
    {0, "JPG"}, {1, "PNG"}, {1, "TIFF"}, {1, "BMP"}, {1, "PPM"}, {1, "XPM"},
};

// Only "Custom Size" does anything: it asks for the size and remembers it.
// The other entries are offered but not stored, since saving ignores them.
void Dialog::on_comboBox_currentIndexChanged(int index)
{
    if (index != kCustomSizeIndex)
        return;
    CustomSize ask(nullptr);
    ask.exec();
}
