// SPDX-License-Identifier: MIT
#pragma once

// The end-to-end check of "Save Image" on a real program: a click on the
// backdrop, "Save Image", and the composite found in Documents/Plendra of a
// fresh home, equal to the keying worked out here, with the desktop opener
// called on the folder and then on the file. Shared by the build tree's test
// and the installed package's. Fails the running test through QVERIFY.

#include <QString>

namespace outputtest {

struct ProgramUnderTest
{
    QString program;          // what to start
    QString workingDirectory; // where to start it
    QString samplesDir;       // where its sample photos and "Bkg" lie
    QString screenshotPath;   // where to keep the screenshot after the save
};

void checkKeyAndSave(const ProgramUnderTest& under);

} // namespace outputtest
