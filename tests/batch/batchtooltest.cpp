// SPDX-License-Identifier: MIT
#include "tests/batch/batchtooltest.h"

#include "tests/support/testsupport.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <unistd.h>

namespace batchtest {

namespace {

QStringList linesOf(const QByteArray& text)
{
    QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace

QString ToolTestCase::folder(const QString& name)
{
    const QString path = m_dir.filePath(QStringLiteral("%1-%2").arg(name).arg(++m_round));
    return QDir().mkpath(path) ? path : QString();
}

void ToolTestCase::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_background = m_dir.filePath(QStringLiteral("background.png"));
    QVERIFY(testsupport::writeImage(background(), m_background));
}

QString toolPath()
{
    return QStringLiteral(PLENDRA_BATCH_EXE);
}

QStringList ToolRun::outputLines() const { return linesOf(standardOutput); }
QStringList ToolRun::errorLines() const { return linesOf(standardError); }

bool ToolRun::sanitizerReported() const
{
    return standardError.contains("Sanitizer") || standardError.contains("runtime error:");
}

ToolRun runTool(const QStringList& arguments, bool withoutFileOverrides, int timeoutMs)
{
    QProcess process;
    QString program = toolPath();
    QStringList args = arguments;
    if (withoutFileOverrides && ::geteuid() == 0) {
        const QString caps = QStringLiteral("-dac_override,-dac_read_search");
        args.prepend(program);
        args.prepend(QStringLiteral("--inh-caps=") + caps);
        args.prepend(QStringLiteral("--bounding-set=") + caps);
        program = QStringLiteral("setpriv");
    }
    process.start(program, args);
    ToolRun run;
    run.started = process.waitForStarted(30000);
    if (!run.started)
        return run;
    process.closeWriteChannel();
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    run.crashed = process.exitStatus() != QProcess::NormalExit;
    run.exitCode = process.exitCode();
    run.standardOutput = process.readAllStandardOutput();
    run.standardError = process.readAllStandardError();
    return run;
}

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace batchtest
