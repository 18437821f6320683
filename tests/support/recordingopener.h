// SPDX-License-Identifier: MIT
#pragma once

// A stand-in for the desktop opener that records how the program called it.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace testsupport {

// The name the program looks up on PATH to show folders and files.
QString openerName();

// A script with the opener's name in a folder of its own. Each call appends
// one line to its record: every argument followed by the unit separator.
class RecordingOpener
{
public:
    RecordingOpener();
    bool isValid() const;
    QString folder() const;
    // PATH with this opener's folder first.
    QByteArray pathWithOpenerFirst() const;
    // Puts the opener first on this process's PATH (children inherit it).
    void putFirstOnPath() const;
    // The calls so far, each as its list of arguments.
    QList<QStringList> calls() const;
    void forgetCalls() const;

private:
    QString recordPath() const;
    QTemporaryDir m_dir;
    bool m_valid = false;
};

} // namespace testsupport
