// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// Peak memory of a click on a large photo, measured in a fresh process: the
// benchmark starts itself again with this flag, a sample folder and the size.
inline constexpr const char* kPeakMemoryChildFlag = "--peak-memory-child";

// In the parent: writes the photos, runs the child, prints what it reports.
int runPeakMemoryChild(const QString& executable, int megapixels);

// In the child: opens the window on the folder's photos and measures.
int peakMemoryChild(int argc, char** argv);
