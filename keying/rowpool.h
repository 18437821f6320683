// SPDX-License-Identifier: MIT
#pragma once

// Rows of an image worked on over Qt's shared pool: the soft keyer's passes
// (its clean plate, its matte and its composite) and the several-background
// mask and composites hand their rows out through it. QtGui-free; safe on any
// thread.

#include <QtGlobal>

#include <functional>

namespace keying {

// How many threads a pass over `pixels` pixels in `height` rows takes when the
// caller asks for `wanted` (0: one for small images, every core of the pool
// for large ones). At least 1, at most one per row.
int rowThreadsFor(qsizetype pixels, int height, int wanted);

// Calls `rows(first, end)` for short runs of rows covering [0, height) on up
// to `threads` threads, and returns when every row is done. This thread works
// runs too; helpers come from Qt's pool only when a pool thread is free at
// once, so a batch keying several photos at a time never waits on the pool.
void runRowsOnPool(int height, int threads, const std::function<void(int first, int end)>& rows);

} // namespace keying
