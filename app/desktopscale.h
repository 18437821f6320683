// SPDX-License-Identifier: MIT
#pragma once

// The window's fixed geometry was drawn for point sizes rendered at 72 dots
// per inch, as on macOS. Sets, before the application object exists, what
// makes Qt draw points at 72 dpi times the desktop's scale: QT_FONT_DPI=72,
// and on X11, where that setting would also hide the desktop's "Xft.dpi"
// (Qt derives the scale from it), the same scale as QT_SCALE_FACTOR instead.
// A QT_FONT_DPI the user set wins, and then nothing is changed.
void drawPointsAt72DpiTimesDesktopScale();

// The "Xft.dpi" resource of the X display in DISPLAY; 0 when there is none,
// no X display, or the program will not draw through X11.
double x11ResourceDpi();
