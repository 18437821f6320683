// SPDX-License-Identifier: MIT
#include "bench/qualitykeyers.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cmath>

namespace quality {

namespace {

constexpr int kFfmpegTimeoutMs = 300000;

// The grids the filters are tuned over. colorkey's similarity is a distance
// in RGB, chromakey's in the chroma plane, where the same photo's useful
// values are smaller; the tuned values of a first run fell inside both.
constexpr int kSimilarityCount = 6;
constexpr int kBlendCount = 5;
constexpr int kGridSize = kSimilarityCount * kBlendCount;
constexpr double kColorkeySimilarities[kSimilarityCount] = {0.03, 0.05, 0.07, 0.1, 0.14, 0.2};
constexpr double kColorkeyBlends[kBlendCount] = {0.0, 0.1, 0.2, 0.3, 0.45};
constexpr double kChromakeySimilarities[kSimilarityCount] = {0.01, 0.02, 0.04, 0.07, 0.1, 0.14};
constexpr double kChromakeyBlends[kBlendCount] = {0.0, 0.05, 0.1, 0.15, 0.25};

// A straight RGBA frame as ffmpeg's rawvideo writes it.
groundtruth::KeyedMatte keyedFromRaw(const QByteArray& bytes, int width, int height)
{
    groundtruth::KeyedMatte k;
    const qsizetype pixels = static_cast<qsizetype>(width) * height;
    if (bytes.size() != pixels * 4)
        return k;
    k.width = width;
    k.height = height;
    k.alpha.resize(static_cast<size_t>(pixels));
    k.colour.resize(k.alpha.size());
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData());
    for (size_t i = 0; i < k.alpha.size(); ++i, p += 4) {
        k.colour[i] = groundtruth::Rgb{p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f};
        k.alpha[i] = p[3] / 255.0f;
    }
    return k;
}

class FfmpegKeyer : public Keyer
{
public:
    FfmpegKeyer(QString ffmpeg, FfmpegFilter filter) : m_ffmpeg(std::move(ffmpeg)), m_filter(filter) {}
    QString id() const override
    {
        return m_filter == FfmpegFilter::Colorkey ? QStringLiteral("colorkey") : QStringLiteral("chromakey");
    }
    QString title() const override
    {
        return m_filter == FfmpegFilter::Colorkey ? QStringLiteral("ffmpeg colorkey")
                                                  : QStringLiteral("ffmpeg chromakey+despill");
    }
    int settingCount() const override { return kGridSize; }
    QString settingLabel(int s) const override
    {
        return QStringLiteral("similarity %1 blend %2").arg(similarity(s)).arg(blend(s));
    }

    std::vector<KeyResult> key(const ShotPhoto& shot, const std::vector<int>& settings) const override
    {
        std::vector<KeyResult> results(settings.size());
        if (settings.empty())
            return results;
        const QString out = shot.workDir + QLatin1Char('/') + id();
        QDir().mkpath(out);
        const auto& k = shot.keyColour;
        const QString colour = QStringLiteral("0x%1%2%3")
                                   .arg(std::lround(k.r * 255), 2, 16, QLatin1Char('0'))
                                   .arg(std::lround(k.g * 255), 2, 16, QLatin1Char('0'))
                                   .arg(std::lround(k.b * 255), 2, 16, QLatin1Char('0'));
        const bool green = shot.condition.screen == groundtruth::Screen::Green;
        const bool grid = settings.size() > 1;
        QString graph = QStringLiteral("[0:v]split=%1").arg(settings.size());
        for (size_t i = 0; i < settings.size(); ++i)
            graph += QStringLiteral("[i%1]").arg(i);
        QStringList outputs;
        QStringList args = {QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"), QStringLiteral("error"),
                            QStringLiteral("-nostdin"), QStringLiteral("-y"), QStringLiteral("-i"), shot.photoPath};
        QStringList maps;
        for (size_t i = 0; i < settings.size(); ++i) {
            const int s = settings[i];
            graph += QStringLiteral(";[i%1]").arg(i);
            if (m_filter == FfmpegFilter::Colorkey) {
                graph += QStringLiteral("format=rgba,colorkey=%1:%2:%3").arg(colour).arg(similarity(s)).arg(blend(s));
            } else {
                // Full chroma resolution: left to itself the graph may pick a
                // subsampled format, which would blur the key before it is made.
                graph += QStringLiteral("format=yuva444p,chromakey=%1:%2:%3,despill=type=%4")
                             .arg(colour).arg(similarity(s)).arg(blend(s))
                             .arg(green ? QStringLiteral("green") : QStringLiteral("blue"));
            }
            graph += QStringLiteral(",format=rgba[o%1]").arg(i);
            // A tuning grid's many frames go out as raw RGBA: as lossless as PNG,
            // without the encoding and decoding that made up most of the run.
            // A single setting's output is an RGBA PNG, to look at.
            const QString file = out + (grid ? QStringLiteral("/%1.rgba") : QStringLiteral("/%1.png")).arg(s);
            outputs << file;
            maps << QStringLiteral("-map") << QStringLiteral("[o%1]").arg(i) << QStringLiteral("-frames:v")
                 << QStringLiteral("1");
            if (grid)
                maps << QStringLiteral("-f") << QStringLiteral("rawvideo");
            maps << file;
        }
        args << QStringLiteral("-filter_complex") << graph << maps;
        QProcess p;
        p.start(m_ffmpeg, args);
        const bool finished = p.waitForFinished(kFfmpegTimeoutMs);
        if (!finished || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
            if (p.state() != QProcess::NotRunning) {
                p.kill();
                p.waitForFinished();
            }
            const QString why = QStringLiteral("ffmpeg failed on %1: %2")
                                    .arg(shot.photoPath, QString::fromLocal8Bit(p.readAllStandardError()).trimmed());
            for (KeyResult& r : results)
                r.error = why;
            return results;
        }
        for (size_t i = 0; i < settings.size(); ++i) {
            const QString& file = outputs[static_cast<int>(i)];
            if (grid) {
                QFile raw(file);
                if (raw.open(QIODevice::ReadOnly))
                    results[i].matte = keyedFromRaw(raw.readAll(), shot.photo.width(), shot.photo.height());
                raw.close();
                QFile::remove(file);
            } else {
                results[i].matte = groundtruth::keyedFromImage(QImage(file));
            }
            if (results[i].matte.alpha.empty())
                results[i].error = QStringLiteral("ffmpeg wrote no readable %1").arg(file);
        }
        return results;
    }

private:
    double similarity(int s) const
    {
        return (m_filter == FfmpegFilter::Colorkey ? kColorkeySimilarities : kChromakeySimilarities)[s / kBlendCount];
    }
    double blend(int s) const
    {
        return (m_filter == FfmpegFilter::Colorkey ? kColorkeyBlends : kChromakeyBlends)[s % kBlendCount];
    }

    QString m_ffmpeg;
    FfmpegFilter m_filter;
};

} // namespace

std::unique_ptr<Keyer> ffmpegKeyer(const QString& ffmpeg, FfmpegFilter filter)
{
    return std::make_unique<FfmpegKeyer>(ffmpeg, filter);
}

} // namespace quality
