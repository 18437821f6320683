// SPDX-License-Identifier: MIT
// plendra-batch: keys a whole shoot, and every new shot of a hot folder, as
// the window would. No display is needed: images only, no widgets.
#include "batch/batchapp.h"
#include "batch/batchoptions.h"
#include "state/imagelimits.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const batch::ParsedCommandLine parsed = batch::parseCommandLine(QCoreApplication::arguments());
    if (!parsed.runs) {
        std::fputs(qUtf8Printable(parsed.standardOutput), stdout);
        std::fputs(qUtf8Printable(parsed.standardError), stderr);
        return parsed.exitCode;
    }
    // The same limit as the window: 100-megapixel photos load, absurd ones do not.
    allowLargePhotos();
    return batch::runBatch(parsed.options);
}
