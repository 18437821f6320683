// SPDX-License-Identifier: MIT
// The installed package as a user meets it: the launcher on PATH, started
// from a fresh home, keys the green sample with a click and saves it.
// Run by package-test.sh once the .deb is installed.
#include "tests/output/savecheck.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

class InstalledSaveTest : public QObject
{
    Q_OBJECT

private slots:
    void keyAndSaveWithTheInstalledProgram()
    {
        const QString launcher = qEnvironmentVariable("PLENDRA_INSTALLED_LAUNCHER", QStringLiteral("/usr/bin/plendra"));
        const QString samples = qEnvironmentVariable("PLENDRA_INSTALLED_DATA", QStringLiteral("/usr/share/plendra"));
        QVERIFY2(QFileInfo(launcher).isExecutable(), qPrintable(launcher + QStringLiteral(" is not installed")));
        const QString shots = QStringLiteral(PLENDRA_BUILD_DIR) + QStringLiteral("/screenshots");
        QDir().mkpath(shots);

        outputtest::ProgramUnderTest installed;
        installed.program = launcher;
        // Started from the menu, the launcher runs wherever the session is;
        // it must find its files by itself.
        installed.workingDirectory = QDir::rootPath();
        installed.samplesDir = samples;
        installed.screenshotPath = shots + QStringLiteral("/installed-save.png");
        outputtest::checkKeyAndSave(installed);
    }
};

PLENDRA_TEST_MAIN(InstalledSaveTest)
#include "tst_installed_save.moc"
