// SPDX-License-Identifier: MIT
#include "tests/batch/batchtooltest.h"

#include "tests/support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>
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

QStringList compositesIn(const QString& folder)
{
    QStringList names = entriesOf(folder);
    names.removeIf([](const QString& name) { return name.startsWith(QStringLiteral(".plendra-journal")); });
    return names;
}

RunningTool::RunningTool(const QStringList& arguments)
{
    m_process.start(toolPath(), arguments);
}

RunningTool::~RunningTool()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

bool RunningTool::started()
{
    return m_process.waitForStarted(30000);
}

QStringList RunningTool::lines()
{
    m_out += m_process.readAllStandardOutput();
    m_err += m_process.readAllStandardError();
    return QString::fromUtf8(m_out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString RunningTool::errors()
{
    lines();
    return QString::fromUtf8(m_err);
}

bool RunningTool::waitForLine(const QString& text, int ms)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        for (const QString& l : lines()) {
            if (l.contains(text))
                return true;
        }
        m_process.waitForReadyRead(100);
    }
    return false;
}

bool RunningTool::waitForError(const QString& text, int ms)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        if (errors().contains(text))
            return true;
        m_process.waitForReadyRead(100);
    }
    return false;
}

int RunningTool::count(const QString& text)
{
    int n = 0;
    for (const QString& l : lines())
        n += l.contains(text) ? 1 : 0;
    return n;
}

int RunningTool::stop(int sig)
{
    ::kill(pid_t(m_process.processId()), sig);
    if (!m_process.waitForFinished(30000) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    lines();
    return m_process.exitCode();
}

qint64 RunningTool::mainThreadWakeUps() const
{
    const qint64 pid = m_process.processId();
    QFile status(QStringLiteral("/proc/%1/task/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    qint64 switches = 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("voluntary_ctxt_switches:") || line.startsWith("nonvoluntary_ctxt_switches:"))
            switches += line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    return switches;
}

} // namespace batchtest
