// SPDX-License-Identifier: MIT
#include "tests/batch/watchtest.h"

#include "keying/pipeline.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace batchtest {

WatchSetup::WatchSetup()
{
    const QString background = m_dir.filePath(QStringLiteral("bg.png"));
    if (m_dir.isValid() && testsupport::writeImage(testsupport::backgroundPicture(120, 80, 3), background))
        m_background = background;
}

QString WatchSetup::folder(const QString& name)
{
    const QString path = m_dir.filePath(QStringLiteral("%1-%2").arg(name).arg(++m_round));
    return QDir().mkpath(path) ? path : QString();
}

QStringList WatchSetup::watchArgs(const QString& in, const QString& out, const QStringList& extra) const
{
    return QStringList{QStringLiteral("--watch"), QStringLiteral("--settle"), QString::number(kSettleMs),
                       QStringLiteral("-b"), m_background, QStringLiteral("-k"), QStringLiteral("4,4"),
                       QStringLiteral("-o"), out}
        + extra + QStringList{in};
}

QImage WatchSetup::expectedComposite(const QString& photo, const QString& background)
{
    const QImage p = keying::photoAsKeyed(photo, 0);
    const QImage bg(background.isEmpty() ? m_background : background);
    const QString saved = m_dir.filePath(QStringLiteral("expected-%1-").arg(++m_round) + QFileInfo(photo).fileName());
    if (!keying::saveComposite(keying::composite(p, keying::fittedBackground(bg, p.size()), QPoint(4, 4)), saved))
        return QImage();
    return QImage(saved);
}

QByteArray jpegBytes(int w, int h, quint32 seed)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.jpg"));
    if (!testsupport::writeImage(testsupport::studioShot(w, h, QColor(40, 180, 60), seed), path))
        return QByteArray();
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace batchtest
