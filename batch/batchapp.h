// SPDX-License-Identifier: MIT
#pragma once

// A whole plendra-batch run: checks what it was given, keys the photos named,
// watches the folders when asked, and gives the exit status.

#include "batch/batchoptions.h"

namespace batch {

// Needs a QCoreApplication; runs its event loop until the run ends.
int runBatch(const BatchOptions& options);

} // namespace batch
