// SPDX-License-Identifier: MIT
// The folders around a save: a home without "Documents" or with a file in its
// place, a read-only or missing output folder, a missing "Bkg" folder.
#include "state/globals.h"
#include "state/imagelimits.h"
#include "output/outputfolder.h"
#include "mainwindow/dialog.h"
#include "tests/hostile_output/hostileoutputcase.h"
#include "tests/hostile_output/hostileoutputsupport.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/foldertree.h"
#include "tests/support/recordingopener.h"
#include "tests/support/hostilecorpus.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace hostileoutput;
using namespace widgettest;

namespace {

const QString kSizeCondition =
    QStringLiteral("m_bkg.height() == m_foreground.height() && m_bkg.width() == m_foreground.width()");
const QPoint kBackdrop(20, 20);

// HOME pointed elsewhere for the life of the object.
class HomeAt
{
public:
    explicit HomeAt(const QString& home)
        : m_saved(qgetenv("HOME"))
    {
        qputenv("HOME", QFile::encodeName(home));
    }
    ~HomeAt() { qputenv("HOME", m_saved); }

private:
    QByteArray m_saved;
};

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

QList<QStringList> openerCallsFor(const QString& folder, const QString& target)
{
    const QString opener = testsupport::openerName() + QLatin1Char(' ');
    return {QProcess::splitCommand(opener + folder).mid(1), QProcess::splitCommand(opener + target).mid(1)};
}

} // namespace

// "Save Image" into an output folder the child may not write to. The child
// first proves that the folder really refuses it, then saves.
PLENDRA_CHILD_SCENARIO("save-into-read-only-folder")
{
    const QString output = qEnvironmentVariable("PLENDRA_HOSTILE_OUTPUT");
    QFile probe(output + QStringLiteral("/probe"));
    if (probe.open(QIODevice::WriteOnly)) {
        probe.close();
        probe.remove();
        std::puts("probe written");
    } else {
        std::puts("probe refused");
    }
    std::fflush(stdout);
    const auto window = openChildWindow(output);
    QVERIFY(window->ok());
    Dialog& d = *window->dialog;
    pressPreview(d, kBackdrop);
    QTest::mouseClick(widgettest::WindowWidgets(d).Run, Qt::LeftButton);
    std::puts(QFileInfo::exists(MyGlobal::outputDir + QStringLiteral("/1green.JPG")) ? "target written" : "target absent");
    std::puts(widgettest::WindowWidgets(d).Run->isEnabled() ? "run enabled" : "run disabled");
}

// No "Bkg" folder: no background is loaded, and a key click stops on the
// size assertion.
PLENDRA_CHILD_SCENARIO("key-click-without-backgrounds")
{
    const auto window = openChildWindow();
    QVERIFY(window->ok());
    Dialog& d = *window->dialog;
    std::printf("backgrounds %d, null %d\n", int(widgettest::WindowWidgets(d).listWidget_Bk->count()),
                int(DialogTestAccess::background(d).isNull()));
    std::fflush(stdout);
    pressPreview(d, kBackdrop);
    std::puts("survived the click");
}

class HostileFoldersTest : public HostileOutputTestCase
{
    Q_OBJECT

private:
    QString m_noBkgSamples;

    // A sample folder without "Bkg", beside the samples.
    void addInputs() override
    {
        m_noBkgSamples = m_root.path() + QStringLiteral("/without-bkg");
        QVERIFY(testsupport::makeSampleFolder(m_noBkgSamples, {}));
        QVERIFY(QDir(m_noBkgSamples + QStringLiteral("/Bkg")).removeRecursively());
        QVERIFY(!QFileInfo::exists(m_noBkgSamples + QStringLiteral("/Bkg")));
    }

private slots:
    // Designed outcome: start-up makes "Documents" and "Plendra" in it, and
    // the output folder is that "Plendra" folder; nothing else is made.
    void homeWithoutDocuments()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        {
            HomeAt at(home.path());
            setUpOutputFolder();
        }
        QCOMPARE(MyGlobal::outputDir, home.path() + QStringLiteral("/Documents/Plendra"));
        const QMap<QString, QByteArray> made = testsupport::snapshotTree(home.path());
        QCOMPARE(made.keys(), QStringList({QStringLiteral("Documents"), QStringLiteral("Documents/Plendra")}));
        QCOMPARE(made.value(QStringLiteral("Documents/Plendra")), QByteArray("folder"));

        // Starting again finds it and changes nothing.
        {
            HomeAt at(home.path());
            setUpOutputFolder();
        }
        QCOMPARE(MyGlobal::outputDir, home.path() + QStringLiteral("/Documents/Plendra"));
        QCOMPARE(testsupport::snapshotTree(home.path()), made);
    }

    // Designed outcome: "Plendra" cannot be made inside a file named
    // "Documents"; nothing is reported, the output folder is the "Documents"
    // path itself, and the file is left as it was. A save there then fails
    // silently and the opener still runs on both paths.
    void homeWhoseDocumentsIsAFile()
    {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        const QString documents = home.path() + QStringLiteral("/Documents");
        QVERIFY(writeFile(documents, "my shopping list\n"));
        const QMap<QString, QByteArray> before = testsupport::snapshotTree(home.path());
        {
            HomeAt at(home.path());
            setUpOutputFolder();
        }
        QCOMPARE(MyGlobal::outputDir, documents);
        QCOMPARE(testsupport::treeDifferences(before, testsupport::snapshotTree(home.path())), QStringList());

        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        pressPreview(d, kBackdrop);
        QVERIFY(DialogTestAccess::foreground(d) != QImage(m_samples + QStringLiteral("/1green.JPG")));
        QTest::mouseClick(widgettest::WindowWidgets(d).Run, Qt::LeftButton);
        QCOMPARE(testsupport::treeDifferences(before, testsupport::snapshotTree(home.path())), QStringList());
        QCOMPARE(m_opener.calls(), openerCallsFor(documents, documents + QStringLiteral("/1green.JPG")));
        QVERIFY(widgettest::WindowWidgets(d).Run->isEnabled());
        QCOMPARE(homeChanges(), QStringList());
    }

    // Designed outcome: the save into a folder the user may not write to
    // fails silently; the opener still runs on the folder and on the file that
    // was not written; the window goes on (the button enabled again).
    void readOnlyOutputFolder()
    {
        QVERIFY(QFile::setPermissions(m_output, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup
                                                      | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PLENDRA_HOSTILE_OUTPUT"), m_output);
        const testsupport::ChildRun run = runChild(QStringLiteral("save-into-read-only-folder"), env, nullptr, true);
        QVERIFY(QFile::setPermissions(m_output, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

        QVERIFY(run.started);
        QVERIFY2(!run.crashed, run.standardError.constData());
        QCOMPARE(run.exitCode, 0);
        const QByteArray out = run.standardOutput;
        // The permission really took effect in the child.
        QVERIFY2(out.contains("probe refused"), out.constData());
        QVERIFY2(out.contains("target absent"), out.constData());
        QVERIFY2(out.contains("run enabled"), out.constData());
        QCOMPARE(sanitizerReports(run.standardError), QStringList());
        QCOMPARE(m_opener.calls(), openerCallsFor(m_output, m_output + QStringLiteral("/1green.JPG")));
        QCOMPARE(homeChanges(), QStringList());
    }

    // Designed outcome: "Save Image" never makes the output folder: with it
    // gone the save fails silently, nothing appears, and the opener still runs.
    void missingOutputFolderAtSave()
    {
        QVERIFY(QDir(m_output).removeRecursively());
        m_homeAtStart = testsupport::snapshotTree(m_home);
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        Dialog& d = *dFixture.dialog;
        pressPreview(d, kBackdrop);
        QTest::mouseClick(widgettest::WindowWidgets(d).Run, Qt::LeftButton);
        QVERIFY(!QFileInfo::exists(m_output));
        QCOMPARE(homeChanges(), QStringList());
        QCOMPARE(m_opener.calls(), openerCallsFor(m_output, m_output + QStringLiteral("/1green.JPG")));
        QVERIFY(widgettest::WindowWidgets(d).Run->isEnabled());
    }

    // Designed outcome: without a "Bkg" folder the window still opens with the
    // photo shown, BACKGROUNDS empty and no background; nothing is reported.
    // "Save Image" writes the unkeyed photo as the only new file.
    void missingBkgFolderAtStartUp()
    {
        MyGlobal::appDir = m_noBkgSamples;
        widgettest::Window dFixture(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(dFixture.ok());
        const auto [d, ui] = dFixture.parts();
        QCOMPARE(ui->listWidget_Bk->count(), 0);
        QVERIFY(DialogTestAccess::background(d).isNull());
        QVERIFY(MyGlobal::CurSelectionBk.isEmpty());
        QCOMPARE(ui->listWidget->count(), 2);
        const QImage photo(m_noBkgSamples + QStringLiteral("/1green.JPG"));
        QCOMPARE(DialogTestAccess::foreground(d), photo);
        QCOMPARE(DialogTestAccess::preview(d).toImage(), QPixmap::fromImage(photo).toImage());
        QCOMPARE(d.windowTitle(), QStringLiteral("Plendra - photo v1.3"));

        QTest::mouseClick(ui->Run, Qt::LeftButton);
        QCOMPARE(homeChanges(), QStringList({QStringLiteral("Documents/Plendra/1green.JPG")}));
        QCOMPARE(QImage(m_output + QStringLiteral("/1green.JPG")).size(), photo.size());
        QCOMPARE(m_opener.calls(), openerCallsFor(m_output, m_output + QStringLiteral("/1green.JPG")));
    }

    // Designed outcome: with no background loaded, a key click stops the
    // program on the named size assertion, and prints nothing else of note.
    void missingBkgFolderThenKeyClickStops()
    {
        const QString expected = assertionLine(QStringLiteral("mainwindow/dialog_keying.cpp"), kSizeCondition);
        QVERIFY(!expected.isEmpty());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("PLENDRA_HOSTILE_SAMPLES"), m_noBkgSamples);
        QStringList filesLeft;
        const testsupport::ChildRun run = runChild(QStringLiteral("key-click-without-backgrounds"), env, &filesLeft);
        checkStoppedOn(run, expected, filesLeft);
        QVERIFY2(run.standardOutput.contains("backgrounds 0, null 1"), run.standardOutput.constData());
        QCOMPARE(homeChanges(), QStringList());
    }
};

PLENDRA_TEST_MAIN(HostileFoldersTest)
#include "tst_hostile_folders.moc"
