// SPDX-License-Identifier: MIT
#include "bench/qualitykeyers.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace quality {

namespace {

constexpr int kToolTimeoutMs = 120000;

class ToolKeyer : public Keyer
{
public:
    ToolKeyer(QString tool, bool soft) : m_tool(std::move(tool)), m_soft(soft) {}
    QString id() const override { return m_soft ? QStringLiteral("soft") : QStringLiteral("hard"); }
    QString title() const override
    {
        return m_soft ? QStringLiteral("soft (--soft --transparent -k)") : QStringLiteral("hard (--transparent -k)");
    }
    std::vector<KeyResult> key(const ShotPhoto& shot, const std::vector<int>& settings) const override
    {
        KeyResult r;
        const QString out = shot.workDir + QLatin1Char('/') + id();
        QDir().mkpath(out);
        QStringList args;
        if (m_soft)
            args << QStringLiteral("--soft");
        args << QStringLiteral("--transparent") << QStringLiteral("-k")
             << QStringLiteral("%1,%2").arg(shot.keyPoint.x()).arg(shot.keyPoint.y()) << QStringLiteral("-o") << out
             << QStringLiteral("-j") << QStringLiteral("1") << shot.photoPath;
        QProcess p;
        p.setProcessChannelMode(QProcess::SeparateChannels);
        p.start(m_tool, args);
        if (!p.waitForFinished(kToolTimeoutMs) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
            if (p.state() != QProcess::NotRunning) {
                p.kill();
                p.waitForFinished();
            }
            r.error = QStringLiteral("plendra-batch failed on %1: %2")
                          .arg(shot.photoPath, QString::fromLocal8Bit(p.readAllStandardError()).trimmed());
            return std::vector<KeyResult>(settings.size(), r);
        }
        const QString written = out + QLatin1Char('/') + QFileInfo(shot.photoPath).completeBaseName() + QStringLiteral(".png");
        const QImage keyed(written);
        if (keyed.isNull())
            r.error = QStringLiteral("plendra-batch wrote no readable %1").arg(written);
        else
            r.matte = groundtruth::keyedFromImage(keyed);
        return std::vector<KeyResult>(settings.size(), r);
    }

private:
    QString m_tool;
    bool m_soft;
};

} // namespace

std::unique_ptr<Keyer> toolKeyer(const QString& tool, bool soft)
{
    return std::make_unique<ToolKeyer>(tool, soft);
}

bool toolHasSoftKeyer(const QString& tool)
{
    QProcess p;
    p.start(tool, {QStringLiteral("--help")});
    if (!p.waitForFinished(30000))
        return false;
    return QString::fromLocal8Bit(p.readAllStandardOutput()).contains(QStringLiteral("--soft"));
}

} // namespace quality
