// SPDX-License-Identifier: MIT
// The built program on a virtual screen: click the backdrop, press "Save
// Image", and find the composite in Documents/Plendra with the desktop opener
// called on the folder and then on the file.
#include "tests/output/savecheck.h"
#include "tests/support/testsupport.h"

#include <QCoreApplication>
#include <QTest>

class SaveEndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    void keyAndSaveInTheRunningProgram()
    {
        outputtest::ProgramUnderTest built;
        built.samplesDir = QStringLiteral(PLENDRA_BUILD_DIR);
        built.screenshotPath = QCoreApplication::applicationDirPath() + QStringLiteral("/output_save_e2e.png");
        outputtest::checkKeyAndSave(built);
    }
};

PLENDRA_TEST_MAIN(SaveEndToEndTest)
#include "tst_save_e2e.moc"
