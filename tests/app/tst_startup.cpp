// SPDX-License-Identifier: MIT
// Start-up as a process: the output folder, the log, the exit status.
#include "tests/support/desktopsession.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool writeStaleLog()
{
    QFile log(QStringLiteral("/tmp/log.txt"));
    if (!log.open(QIODevice::WriteOnly))
        return false;
    return log.write("left over from an earlier run\n") > 0;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void startMakesTheOutputFolderAndTruncatesTheLog()
    {
        QTemporaryDir home;
        QVERIFY(writeStaleLog());
        QVERIFY(QFileInfo(QStringLiteral("/tmp/log.txt")).size() > 0);

        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());
        QCOMPARE(app.windowSize(), QSize(817, 539));
        QVERIFY(QFileInfo(home.path() + "/Documents/Plendra").isDir());
        QCOMPARE(QFileInfo(QStringLiteral("/tmp/log.txt")).size(), 0);

        // Closing without accepting ends the process with the dialog's result.
        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
    }

    void startingTwiceLeavesOneOutputFolder()
    {
        QTemporaryDir home;
        for (int run = 0; run < 2; ++run) {
            QVERIFY(writeStaleLog());
            testsupport::DesktopSession app(home.path());
            QVERIFY(app.start());
            QCOMPARE(QFileInfo(QStringLiteral("/tmp/log.txt")).size(), 0);
            QVERIFY(app.key(QStringLiteral("Escape")));
            QCOMPARE(app.waitForExit(), 0);
        }
        QCOMPARE(QDir(home.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({"Documents"}));
        QCOMPARE(QDir(home.path() + "/Documents").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({"Plendra"}));
        QVERIFY(QDir(home.path() + "/Documents/Plendra").isEmpty());
    }

    void existingDocumentsAreLeftAlone()
    {
        QTemporaryDir home;
        QVERIFY(QDir().mkpath(home.path() + "/Documents/Plendra"));
        QFile keep(home.path() + "/Documents/Plendra/earlier.JPG");
        QVERIFY(keep.open(QIODevice::WriteOnly));
        keep.write("an earlier composite");
        keep.close();
        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());
        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
        QVERIFY(keep.open(QIODevice::ReadOnly));
        QCOMPARE(keep.readAll(), QByteArray("an earlier composite"));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
