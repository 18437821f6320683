// SPDX-License-Identifier: MIT
#include "output/outputchoices.h"


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
