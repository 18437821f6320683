// SPDX-License-Identifier: MIT
#pragma once

// Helpers of the output tests: a stand-in desktop opener that records how it
// was called, a watcher that answers modal windows as they come up, and
// listings of a folder tree to see what a save wrote.

#include <QList>
#include <QMap>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>

class QWidget;

namespace outputtest {

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

// Calls `answer` once for each modal window that becomes active while it
// runs (polled from a timer, so it also sees windows opened inside nested
// event loops). `seen` keeps the window titles and classes in order. A modal
// window still up 10 seconds after its answer is closed, so that a window
// that refuses to close fails its test instead of hanging the run.
class ModalAnswerer : public QObject
{
public:
    explicit ModalAnswerer(std::function<void(QWidget*)> answer);
    ~ModalAnswerer() override;
    struct Seen
    {
        QString className;
        QString title;
    };
    QList<Seen> seen;

private:
    void poll();
    std::function<void(QWidget*)> m_answer;
    struct Handled
    {
        QPointer<QWidget> widget;
        qint64 at;
        bool closed;
    };
    QList<Handled> m_handled;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

// Every entry below `root` (hidden ones too), by path relative to it: "dir"
// for folders, size and modification time for files.
QMap<QString, QString> listTree(const QString& root);
// The relative paths whose listing differs between two listings.
QStringList changedEntries(const QMap<QString, QString>& before, const QMap<QString, QString>& after);

} // namespace outputtest
