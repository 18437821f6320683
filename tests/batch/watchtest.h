// SPDX-License-Identifier: MIT
#pragma once

// What every watch test starts from: a background, fresh folders, photo
// bytes, the arguments of a watch and the composite the window would write.

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace batchtest {

class WatchSetup
{
public:
    WatchSetup();
    bool isValid() const { return !m_background.isEmpty(); }
    QString background() const { return m_background; }
    // A fresh folder for one test.
    QString folder(const QString& name);
    // A watch of `in` into `out` with a short settle time, then `extra`.
    QStringList watchArgs(const QString& in, const QString& out, const QStringList& extra = {}) const;
    // What the window's pipeline writes for the complete photo file, read back.
    QImage expectedComposite(const QString& photo, const QString& background = {});

    static const int kSettleMs = 400;

private:
    QTemporaryDir m_dir;
    QString m_background;
    int m_round = 0;
};

// A generated studio shot as JPEG file bytes.
QByteArray jpegBytes(int w, int h, quint32 seed);
// Writes (replaces) the file's content, closing it.
bool writeAll(const QString& path, const QByteArray& bytes);

} // namespace batchtest
