// SPDX-License-Identifier: MIT
#include "tests/hostile_output/hostileoutputcase.h"

#include "state/globals.h"
#include "state/imagelimits.h"
#include "tests/fixture/windowfixture.h"
#include "tests/hostile_output/hostileoutputsupport.h"
#include "tests/support/foldertree.h"
#include "tests/support/hostilecorpus.h"

#include <QDir>
#include <QTest>

namespace hostileoutput {

std::unique_ptr<widgettest::Window> openChildWindow(const QString& outputDir)
{
    allowLargePhotos();
    widgettest::resetGlobals();
    MyGlobal::appDir = qEnvironmentVariable("PLENDRA_HOSTILE_SAMPLES");
    MyGlobal::outputDir = outputDir.isEmpty() ? QDir::homePath() + QStringLiteral("/Documents/Plendra") : outputDir;
    return std::make_unique<widgettest::Window>(widgettest::WindowSetup::onTheGlobalsAsSet());
}

void HostileOutputTestCase::initTestCase()
{
    allowLargePhotos(); // as the program does at start
    m_home = QDir::homePath();
    QVERIFY(m_home.startsWith(QDir::tempPath()));
    QVERIFY(m_root.isValid());
    QVERIFY(m_childTmp.isValid());
    m_samples = m_root.path() + QStringLiteral("/samples");
    QVERIFY(testsupport::makeSampleFolder(m_samples));
    addInputs();
    if (QTest::currentTestFailed())
        return;
    m_inputs = testsupport::snapshotTree(m_root.path());
    QVERIFY(m_opener.isValid());
    m_opener.putFirstOnPath();
}

void HostileOutputTestCase::init()
{
    // An empty home holding the output folder that start-up makes.
    m_output = testsupport::emptyHomeWithOutputFolder(m_home);
    QVERIFY(!m_output.isEmpty());
    widgettest::resetGlobals();
    MyGlobal::appDir = m_samples;
    MyGlobal::outputDir = m_output;
    m_opener.forgetCalls();
    m_homeAtStart = testsupport::snapshotTree(m_home);
}

void HostileOutputTestCase::cleanup()
{
    QCOMPARE(testsupport::treeDifferences(m_inputs, testsupport::snapshotTree(m_root.path())), QStringList());
}

QStringList HostileOutputTestCase::homeChanges(const QStringList& allowed) const
{
    QStringList changed = testsupport::treeDifferences(m_homeAtStart, testsupport::snapshotTree(m_home));
    for (const QString& a : allowed)
        changed.removeAll(a);
    return changed;
}

testsupport::ChildRun HostileOutputTestCase::runChild(const QString& name, QProcessEnvironment env, QStringList* filesLeft,
                                                      bool withoutFileOverrides) const
{
    QTemporaryDir childTmp(m_childTmp.path() + QStringLiteral("/run-XXXXXX"));
    if (!childTmp.isValid())
        return {};
    if (!env.contains(QStringLiteral("PLENDRA_HOSTILE_SAMPLES")))
        env.insert(QStringLiteral("PLENDRA_HOSTILE_SAMPLES"), m_samples);
    env.insert(QStringLiteral("TMPDIR"), childTmp.path());
    const testsupport::ChildRun run = withoutFileOverrides ? testsupport::runChildScenarioWithoutFileOverrides(name, env)
                                                           : testsupport::runChildScenario(name, env);
    // The child's own home and temporary files: folders only, no file.
    const QMap<QString, QByteArray> left = testsupport::snapshotTree(childTmp.path());
    for (auto it = left.cbegin(); it != left.cend(); ++it) {
        if (filesLeft && it.value() != "folder")
            filesLeft->append(it.key());
    }
    return run;
}

void HostileOutputTestCase::checkStoppedOn(const testsupport::ChildRun& run, const QString& expected,
                                           const QStringList& filesLeft)
{
    QVERIFY(run.started);
    QVERIFY2(!run.standardOutput.contains("survived"), run.standardOutput.constData());
    QVERIFY2(run.crashed, run.standardError.constData());
    const QString err = QString::fromLocal8Bit(run.standardError);
    QCOMPARE(err.count(QStringLiteral("failed assertion")), 1);
    QVERIFY2(err.endsWith(expected + QLatin1Char('\n')), qPrintable(err));
    QCOMPARE(sanitizerReports(run.standardError), QStringList());
    QCOMPARE(filesLeft, QStringList());
}

} // namespace hostileoutput
