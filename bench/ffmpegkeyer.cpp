// SPDX-License-Identifier: MIT
#include "bench/qualitykeyers.h"

#include <QDir>
#include <QElapsedTimer>
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
        if (settings.size() == 1)
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
        QStringList args = {QStringLiteral("-hide_banner"), QStringLiteral("-loglevel"), QStringLiteral("error"),
                            QStringLiteral("-nostdin"), QStringLiteral("-y"),
                            // The bench runs photos side by side already.
                            QStringLiteral("-filter_complex_threads"), QStringLiteral("1"),
                            QStringLiteral("-i"), shot.photoPath};
        QString stack;
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
            stack += QStringLiteral("[o%1]").arg(i);
        }
        // A tuning grid's frames come back stacked in one raw RGBA frame on
        // the pipe: as lossless as PNG, without the encoding, decoding and
        // files that otherwise made up most of the tuning. A single setting's
        // output is an RGBA PNG, kept to look at.
        const QString png = out + QStringLiteral("/%1.png").arg(settings.front());
        if (grid) {
            graph += QStringLiteral(";%1vstack=inputs=%2[out]").arg(stack).arg(settings.size());
            args << QStringLiteral("-filter_complex") << graph << QStringLiteral("-map") << QStringLiteral("[out]")
                 << QStringLiteral("-frames:v") << QStringLiteral("1") << QStringLiteral("-f") << QStringLiteral("rawvideo")
                 << QStringLiteral("-pix_fmt") << QStringLiteral("rgba") << QStringLiteral("-");
        } else {
            args << QStringLiteral("-filter_complex") << graph << QStringLiteral("-map") << QStringLiteral("[o0]")
                 << QStringLiteral("-frames:v") << QStringLiteral("1") << png;
        }
        QProcess p;
        p.start(m_ffmpeg, args);
        p.closeWriteChannel();
        QByteArray raw;
        // Read as it comes, so that the pipe never fills while we wait.
        QElapsedTimer clock;
        clock.start();
        while (p.state() != QProcess::NotRunning && clock.elapsed() < kFfmpegTimeoutMs) {
            p.waitForReadyRead(1000);
            raw += p.readAllStandardOutput();
        }
        const bool finished = p.state() == QProcess::NotRunning || p.waitForFinished(1000);
        raw += p.readAllStandardOutput();
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
        const int w = shot.photo.width(), h = shot.photo.height();
        const qsizetype frame = static_cast<qsizetype>(w) * h * 4;
        for (size_t i = 0; i < settings.size(); ++i) {
            if (grid) {
                if (raw.size() == frame * static_cast<qsizetype>(settings.size()))
                    results[i].matte = keyedFromRaw(raw.mid(static_cast<qsizetype>(i) * frame, frame), w, h);
            } else {
                results[i].matte = groundtruth::keyedFromImage(QImage(png));
            }
            if (results[i].matte.alpha.empty())
                results[i].error = grid ? QStringLiteral("ffmpeg gave %1 bytes for %2 frames of %3x%4")
                                              .arg(raw.size()).arg(settings.size()).arg(w).arg(h)
                                        : QStringLiteral("ffmpeg wrote no readable %1").arg(png);
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
