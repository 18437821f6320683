// SPDX-License-Identifier: MIT
#pragma once

// Temporary files that a killed run left in the output folder. Where a file
// system offers no unnamed temporary files (network and FUSE ones), a
// composite is written under a short temporary name first; a run killed
// mid-write leaves it behind. Only names of the tool's own pattern are
// touched, only in its output folder, and only those whose writer is gone.

#include <QString>

namespace batch {

// Removes the abandoned temporary files of `outputFolder`; returns how many.
int removeAbandonedTemporaries(const QString& outputFolder);

} // namespace batch
