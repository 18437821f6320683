// SPDX-License-Identifier: MIT
#include "tests/support/recordingopener.h"

#include <QFile>

namespace testsupport {

QString openerName()
{
#ifdef Q_OS_MACOS
    return QStringLiteral("open");
#else
    return QStringLiteral("xdg-open");
#endif
}

RecordingOpener::RecordingOpener()
{
    if (!m_dir.isValid())
        return;
    QFile script(m_dir.path() + QLatin1Char('/') + openerName());
    if (!script.open(QIODevice::WriteOnly))
        return;
    const QByteArray record = recordPath().toLocal8Bit();
    script.write("#!/bin/sh\n"
                 "# Stands in for the desktop opener: one line per call, each argument\n"
                 "# followed by the unit separator.\n"
                 "for arg in \"$@\"; do printf '%s\\037' \"$arg\"; done >> '" + record + "'\n"
                 "printf '\\n' >> '" + record + "'\n");
    script.close();
    m_valid = script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                                    QFile::ExeGroup);
}

bool RecordingOpener::isValid() const { return m_valid; }

QString RecordingOpener::folder() const { return m_dir.path(); }

QString RecordingOpener::recordPath() const { return m_dir.path() + QStringLiteral("/calls.txt"); }

QByteArray RecordingOpener::pathWithOpenerFirst() const
{
    return m_dir.path().toLocal8Bit() + ':' + qgetenv("PATH");
}

void RecordingOpener::putFirstOnPath() const
{
    if (!qgetenv("PATH").startsWith(m_dir.path().toLocal8Bit() + ':'))
        qputenv("PATH", pathWithOpenerFirst());
}

QList<QStringList> RecordingOpener::calls() const
{
    QList<QStringList> all;
    QFile record(recordPath());
    if (!record.open(QIODevice::ReadOnly))
        return all;
    const QList<QByteArray> lines = record.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.isEmpty())
            continue;
        QStringList args = QString::fromLocal8Bit(line).split(QChar(0x1f));
        args.removeLast(); // every argument ends with a separator
        all << args;
    }
    return all;
}

void RecordingOpener::forgetCalls() const { QFile::remove(recordPath()); }

} // namespace testsupport
