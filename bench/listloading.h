// SPDX-License-Identifier: MIT
#pragma once

// Whole jobs of the two lists with large photo libraries: the start-up with
// 0, 10 and 50 photos of 24 megapixels in "Bkg" (time until the window is
// drawn, time until every icon is filled) and an Add of 50 such photos (time
// the window is busy, time until every icon is filled, peak memory), each set
// against its floor: the bare decodes it cannot avoid.

#include <QString>

inline constexpr const char* kAddPeakChildFlag = "--add-peak-child";

// Registers the start-up benchmarks (Google Benchmark, one run each, manual
// time = until the window is drawn; counter icons_s = until every icon).
void registerListLoadingBenchmarks();

// Prints the start-up table and the ratios to the floors from the results.
void printListLoadingSummary(double bareDecodeSeconds);

// Seconds of one bare decode of the 24 MP library photo (best of three).
double bareLibraryDecodeSeconds();

// In the parent: runs the Add of 50 in a fresh process and prints its figures.
int runAddPeakChild(const QString& executable);
// In the child.
int addPeakChild(int argc, char** argv);
