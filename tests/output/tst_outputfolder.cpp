// SPDX-License-Identifier: MIT
// The output folder a user starts with: "Documents/Plendra" under the home,
// made when it is missing, and "Documents" itself when it cannot be.

#include "output/outputfolder.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool writeFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("x") == 1;
}

} // namespace

class TestOutputFolder : public QObject
{
    Q_OBJECT

private slots:
    void defaultOutputFolder_data();
    void defaultOutputFolder();
    void existingOutputFolderKeepsItsFiles();
};

void TestOutputFolder::defaultOutputFolder_data()
{
    // What the home holds before: folders (ending in "/") and files, by path
    // relative to it; the folder returned, relative to the home.
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("returned");
    QTest::addColumn<bool>("made");

    QTest::newRow("empty home: both folders made") << QStringList{} << "Documents/Plendra" << true;
    QTest::newRow("Documents there") << QStringList{"Documents/"} << "Documents/Plendra" << true;
    QTest::newRow("Plendra there already") << QStringList{"Documents/Plendra/"} << "Documents/Plendra" << true;
    QTest::newRow("Plendra is a file") << QStringList{"Documents/", "Documents/Plendra"} << "Documents" << false;
    QTest::newRow("Documents is a file") << QStringList{"Documents"} << "Documents" << false;
}

void TestOutputFolder::defaultOutputFolder()
{
    QFETCH(QStringList, before);
    QFETCH(QString, returned);
    QFETCH(bool, made);
    QTemporaryDir home;
    QVERIFY(home.isValid());
    for (const QString& entry : before) {
        const QString path = home.path() + QLatin1Char('/') + entry;
        QVERIFY(entry.endsWith(QLatin1Char('/')) ? QDir().mkpath(path) : writeFile(path));
    }

    QCOMPARE(::defaultOutputFolder(home.path()), QDir(home.path()).absolutePath() + QLatin1Char('/') + returned);
    QCOMPARE(QFileInfo(home.path() + QStringLiteral("/Documents/Plendra")).isDir(), made);
}

void TestOutputFolder::existingOutputFolderKeepsItsFiles()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const QString output = home.path() + QStringLiteral("/Documents/Plendra");
    QVERIFY(QDir().mkpath(output));
    QVERIFY(writeFile(output + QStringLiteral("/earlier.jpg")));
    QCOMPARE(::defaultOutputFolder(home.path()), output);
    QCOMPARE(QDir(output).entryList(QDir::Files), QStringList{QStringLiteral("earlier.jpg")});
}

PLENDRA_TEST_MAIN(TestOutputFolder)
#include "tst_outputfolder.moc"
