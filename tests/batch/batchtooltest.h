// SPDX-License-Identifier: MIT
#pragma once

// Runs the built plendra-batch as a child process, the way scripts run it.

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

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

} // namespace batchtest
