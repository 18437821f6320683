// SPDX-License-Identifier: MIT
#include "tests/output/outputtestsupport.h"

#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QWidget>

namespace outputtest {

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

ModalAnswerer::ModalAnswerer(std::function<void(QWidget*)> answer)
    : m_answer(std::move(answer))
{
    m_clock.start();
    m_timer.setInterval(20);
    QObject::connect(&m_timer, &QTimer::timeout, this, [this] { poll(); });
    m_timer.start();
}

ModalAnswerer::~ModalAnswerer() { m_timer.stop(); }

void ModalAnswerer::poll()
{
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible())
        return;
    for (Handled& done : m_handled) {
        if (done.widget != modal)
            continue;
        if (!done.closed && m_clock.elapsed() - done.at > 10000) {
            done.closed = true;
            if (auto* dialog = qobject_cast<QDialog*>(modal))
                dialog->reject();
            else
                modal->close();
        }
        return;
    }
    m_handled << Handled{QPointer<QWidget>(modal), m_clock.elapsed(), false};
    seen << Seen{QString::fromLatin1(modal->metaObject()->className()), modal->windowTitle()};
    m_answer(modal);
}

QMap<QString, QString> listTree(const QString& root)
{
    QMap<QString, QString> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    const int prefix = QDir(root).absolutePath().size() + 1;
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        const QString relative = info.absoluteFilePath().mid(prefix);
        if (info.isDir())
            entries.insert(relative, QStringLiteral("dir"));
        else
            entries.insert(relative, QString::number(info.size()) + QLatin1Char('@') +
                                         QString::number(info.lastModified().toMSecsSinceEpoch()));
    }
    return entries;
}

QStringList changedEntries(const QMap<QString, QString>& before, const QMap<QString, QString>& after)
{
    QSet<QString> keys;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        keys.insert(it.key());
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        keys.insert(it.key());
    QStringList changed;
    for (const QString& key : std::as_const(keys)) {
        if (before.value(key) != after.value(key))
            changed << key;
    }
    changed.sort();
    return changed;
}

} // namespace outputtest
