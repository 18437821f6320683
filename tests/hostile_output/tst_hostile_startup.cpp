// SPDX-License-Identifier: MIT
// Start-up of the real program in a home without "Documents", and in one whose
// "Documents" is a file.
#include "tests/support/desktopsession.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/testsupport.h"

#include <QGuiApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

// What the desktop session itself may leave in a home (X authority and the
// like), which the program does not write.
QStringList withoutSessionFiles(QStringList changed)
{
    changed.removeIf([](const QString& p) { return p.startsWith(QLatin1Char('.')); });
    return changed;
}

} // namespace

class HostileStartupTest : public QObject
{
    Q_OBJECT

private slots:
    // Designed outcome: the window opens; "Documents" and "Plendra" in it are
    // made and nothing else; closing ends the program with 0.
    void homeWithoutDocuments()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());
        QVERIFY(QFileInfo(home.path() + QStringLiteral("/Documents/Plendra")).isDir());
        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
        const QMap<QString, QByteArray> after = testsupport::snapshotTree(home.path());
        QCOMPARE(withoutSessionFiles(after.keys()),
                 QStringList({QStringLiteral("Documents"), QStringLiteral("Documents/Plendra")}));
    }

    // Designed outcome: nothing reported, the window opens all the same, the
    // file named "Documents" is left byte for byte and nothing is made.
    void homeWhoseDocumentsIsAFile()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        QFile documents(home.path() + QStringLiteral("/Documents"));
        QVERIFY(documents.open(QIODevice::WriteOnly));
        QVERIFY(documents.write("my shopping list\n") > 0);
        documents.close();
        const QMap<QString, QByteArray> before = testsupport::snapshotTree(home.path());

        testsupport::DesktopSession app(home.path());
        QVERIFY(app.start());
        QVERIFY(app.key(QStringLiteral("Escape")));
        QCOMPARE(app.waitForExit(), 0);
        QCOMPARE(withoutSessionFiles(testsupport::treeDifferences(before, testsupport::snapshotTree(home.path()))),
                 QStringList());
        QVERIFY(QFileInfo(home.path() + QStringLiteral("/Documents")).isFile());
    }
};

PLENDRA_TEST_MAIN(HostileStartupTest)
#include "tst_hostile_startup.moc"
