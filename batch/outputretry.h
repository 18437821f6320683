// SPDX-License-Identifier: MIT
#pragma once

// Photos whose composite could not be written for a reason of the output
// side (a full disk, a folder gone or made read-only, a pulled stick, an I/O
// error) are tried again, each after a growing wait (1 s, 2 s, 4 s ... at
// most a minute), until the output takes them: no shot is lost to a disk
// that fills up and is cleared. An output folder that has disappeared is
// made again before the next try.

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>

namespace batch {

class OutputRetry : public QObject
{
    Q_OBJECT

public:
    explicit OutputRetry(const QString& outputFolder, QObject* parent = nullptr);

    // Counts a failed try of `photo`; returns the wait before the next one
    // (milliseconds), which retryDue() announces.
    qint64 failed(const QString& photo);
    // The tries made so far of a photo that has failed (0 when none).
    int attempts(const QString& photo) const { return m_photos.value(photo).attempts; }
    // True while the photo waits for its next try.
    bool isWaiting(const QString& photo) const;
    // The photo was written, or is no longer to be tried.
    void forget(const QString& photo);
    // Makes the output folder again when it is gone; true when it did.
    bool remakeOutputFolder();

    static qint64 waitBefore(int attempt);

signals:
    void retryDue(const QString& photo);
    // The output folder was gone and has been made again.
    void outputFolderMade(const QString& folder);

private:
    struct Pending
    {
        int attempts = 0;
        qint64 dueMs = -1; // on m_clock; -1 when not waiting
    };

    void due();
    void schedule();

    QString m_outputFolder;
    QHash<QString, Pending> m_photos;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace batch
