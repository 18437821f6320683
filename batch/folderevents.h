// SPDX-License-Identifier: MIT
#pragma once

// The kernel's word about the watched folders (inotify on Linux): a file
// closed after writing or moved in, a file made or touched, a file gone, a
// folder gone. Nothing is delivered, and nothing runs, while nothing happens.

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>

class QSocketNotifier;

namespace batch {

class FolderEvents : public QObject
{
    Q_OBJECT

public:
    explicit FolderEvents(QObject* parent = nullptr);
    ~FolderEvents() override;

    // False where the system offers no such events (or none are left).
    bool isAvailable() const { return m_fd >= 0; }
    // Starts listening to `folder`; false, with the reason, when refused.
    bool add(const QString& folder, QString* why);

signals:
    // A file made (perhaps still being written) or its times changed.
    void touched(const QString& folder, const QByteArray& name);
    // A file closed after writing, or moved into the folder under this name.
    void completed(const QString& folder, const QByteArray& name);
    // A file deleted or moved away.
    void left(const QString& folder, const QByteArray& name);
    // Events were lost (the kernel's queue overflowed): look at everything.
    void overflowed();
    // The folder itself was deleted or moved away; it is no longer listened to.
    void folderGone(const QString& folder);

private:
    void readEvents();

    int m_fd = -1;
    QSocketNotifier* m_notifier = nullptr;
    QHash<int, QString> m_folders; // watch descriptor -> folder
};

} // namespace batch
