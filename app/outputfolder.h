// SPDX-License-Identifier: MIT
#pragma once

// Sets MyGlobal::outputDir at start: a "Plendra" folder under the user's
// "Documents", made (with any missing parents) when it is not there. Nothing
// is reported: when it cannot be made or entered, the output folder is the
// "Documents" path itself, and saving there simply fails later.
void setUpOutputFolder();
