// SPDX-License-Identifier: MIT
#pragma once

// Runs the built plendra-batch as a child process, the way scripts run it;
// the base of the tool's test cases.

#include <QByteArray>
#include <QImage>
#include <QObject>
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
