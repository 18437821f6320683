// SPDX-License-Identifier: MIT
#pragma once

// Runs the built plendra-batch as a child process, the way scripts run it;
// the base of the tool's test cases.

#include <QByteArray>
#include <QImage>
#include <QObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace batchtest {

QString toolPath();

struct ToolRun
{
    bool started = false;
    bool crashed = false;
    int exitCode = -1;
    QByteArray standardOutput;
    QByteArray standardError;

    QStringList outputLines() const;
    QStringList errorLines() const;
    // True when a sanitizer in the tool reported anything.
    bool sanitizerReported() const;
};

// Runs the tool to its end. Without file overrides, a root run loses the
// capabilities that bypass file permissions, so read-only folders and
// unreadable files behave for it as for any user.
ToolRun runTool(const QStringList& arguments, bool withoutFileOverrides = false, int timeoutMs = 180000);

// Every entry of `folder`, hidden ones too, by name.
QStringList entriesOf(const QString& folder);
// The same without the watch's journals: the composites and anything else.
QStringList compositesIn(const QString& folder);

// The tool running as a child (a watch), its output gathered as it comes.
class RunningTool
{
public:
    explicit RunningTool(const QStringList& arguments);
    ~RunningTool();
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    bool started();
    QStringList lines();
    QString errors();
    // Waits until some output line contains `text`.
    bool waitForLine(const QString& text, int ms = 20000);
    // Waits until standard error holds `text`.
    bool waitForError(const QString& text, int ms = 20000);
    // Output lines that contain `text`.
    int count(const QString& text);
    // Stops the tool with `sig`; its exit status, or -1 when it did not end.
    int stop(int sig);
    // How often the tool's main thread has woken up so far (its context
    // switches); -1 when the system does not tell.
    qint64 mainThreadWakeUps() const;

private:
    QProcess m_process;
    QByteArray m_out;
    QByteArray m_err;
};

// The base of the tool's test cases: a temporary folder for the run, with the
// test case's background picture written into it at the start (its path in
// m_background), and a fresh folder in it for each use.
class ToolTestCase : public QObject
{
    Q_OBJECT

protected:
    virtual QImage background() const = 0;

    // A fresh folder named after `name` (empty when it could not be made).
    QString folder(const QString& name);

    QTemporaryDir m_dir;
    QString m_background;

private slots:
    void initTestCase();

private:
    int m_round = 0;
};

} // namespace batchtest
