// SPDX-License-Identifier: MIT
#include "batch/report.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

namespace batch {

namespace {

QString colourName(QRgb key)
{
    return QStringLiteral("#%1").arg(key & 0xFFFFFFu, 6, 16, QLatin1Char('0')).toUpper();
}

QString clockText(qint64 seconds)
{
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

ReportStyle reportStyleFor(bool json, bool watch)
{
    if (json)
        return ReportStyle::Json;
    return (!watch && ::isatty(STDERR_FILENO)) ? ReportStyle::Progress : ReportStyle::Lines;
}

QByteArray jsonLine(const PhotoResult& r, const QJsonObject& extra)
{
    QJsonObject o = extra;
    o.insert(QStringLiteral("name"), QFileInfo(r.photo).fileName());
    o.insert(QStringLiteral("photo"), r.photo);
    o.insert(QStringLiteral("output"), r.error.isEmpty() ? QJsonValue(r.output) : QJsonValue());
    // With several backgrounds, every composite; "output" is the first.
    if (r.outputs.size() > 1)
        o.insert(QStringLiteral("outputs"), r.error.isEmpty() ? QJsonValue(QJsonArray::fromStringList(r.outputs)) : QJsonValue());
    o.insert(QStringLiteral("keyColour"), r.key ? QJsonValue(colourName(*r.key)) : QJsonValue());
    o.insert(QStringLiteral("replacedShare"), r.replacedShare >= 0 ? QJsonValue(r.replacedShare) : QJsonValue());
    o.insert(QStringLiteral("ms"), r.ms);
    o.insert(QStringLiteral("skipped"), r.skipped);
    o.insert(QStringLiteral("error"), r.error.isEmpty() ? QJsonValue() : QJsonValue(r.error));
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

Reporter::Reporter(ReportStyle style, std::FILE* out, std::FILE* err)
    : m_style(style), m_out(out), m_err(err)
{
    m_clock.start();
}

void Reporter::addToTotal(int photos)
{
    m_total += photos;
}

void Reporter::photoDone(const PhotoResult& r)
{
    ++m_done;
    if (!r.error.isEmpty()) {
        ++m_failed;
        if (m_progressShown)
            std::fputs("\n", m_err);
        m_progressShown = false;
        std::fprintf(m_err, "plendra-batch: %s: %s\n", qUtf8Printable(r.photo), qUtf8Printable(r.error));
    }
    if (m_style == ReportStyle::Json) {
        std::fprintf(m_out, "%s\n", jsonLine(r).constData());
    } else if (m_style == ReportStyle::Lines && r.error.isEmpty()) {
        if (r.skipped)
            std::fprintf(m_out, "skipped %s: already keyed (%s)\n", qUtf8Printable(r.photo), qUtf8Printable(r.output));
        else
            std::fprintf(m_out, "keyed %s -> %s (%lld ms)\n", qUtf8Printable(r.photo),
                         qUtf8Printable(r.outputs.size() > 1 ? r.outputs.join(QStringLiteral(", ")) : r.output),
                         static_cast<long long>(r.ms));
    }
    std::fflush(m_out);
    if (m_style == ReportStyle::Progress)
        drawProgress();
    std::fflush(m_err);
}

void Reporter::problem(const QString& text)
{
    ++m_failed;
    std::fprintf(m_err, "plendra-batch: %s\n", qUtf8Printable(text));
    std::fflush(m_err);
}

void Reporter::waiting(const QString& photo, const QString& reason)
{
    std::fprintf(m_err, "plendra-batch: %s: waiting: %s\n", qUtf8Printable(photo), qUtf8Printable(reason));
    std::fflush(m_err);
}

void Reporter::retrying(const PhotoResult& r, int attempt, qint64 waitMs)
{
    std::fprintf(m_err, "plendra-batch: %s: %s; trying again in %lld s (try %d failed)\n", qUtf8Printable(r.photo),
                 qUtf8Printable(r.error), static_cast<long long>((waitMs + 999) / 1000), attempt);
    std::fflush(m_err);
    if (m_style == ReportStyle::Json) {
        const QJsonObject extra{{QStringLiteral("attempt"), attempt}, {QStringLiteral("retryInMs"), waitMs}};
        std::fprintf(m_out, "%s\n", jsonLine(r, extra).constData());
        std::fflush(m_out);
    }
}

void Reporter::recovered(const PhotoResult& r, int attempts)
{
    std::fprintf(m_err, "plendra-batch: %s: written on try %d: the output works again\n", qUtf8Printable(r.photo), attempts);
    std::fflush(m_err);
    if (m_style != ReportStyle::Json) {
        photoDone(r);
        return;
    }
    ++m_done;
    std::fprintf(m_out, "%s\n", jsonLine(r, {{QStringLiteral("attempt"), attempts}}).constData());
    std::fflush(m_out);
}

void Reporter::notice(const QString& text, const QString& event)
{
    std::fprintf(m_err, "plendra-batch: %s\n", qUtf8Printable(text));
    std::fflush(m_err);
    if (m_style == ReportStyle::Json) {
        const QJsonObject o{{QStringLiteral("event"), event}, {QStringLiteral("text"), text}};
        std::fprintf(m_out, "%s\n", QJsonDocument(o).toJson(QJsonDocument::Compact).constData());
        std::fflush(m_out);
    }
}

void Reporter::drawProgress()
{
    const double seconds = qMax<qint64>(1, m_clock.elapsed()) / 1000.0;
    const double rate = m_done / seconds;
    const qint64 left = rate > 0 ? qint64((m_total - m_done) / rate + 0.5) : 0;
    std::fprintf(m_err, "\r%d of %d photos, %.1f photos/s, %s left ", m_done, m_total, rate,
                 qUtf8Printable(clockText(left)));
    m_progressShown = true;
}

void Reporter::finish()
{
    if (m_progressShown)
        std::fputs("\n", m_err);
    m_progressShown = false;
    std::fflush(m_err);
}

} // namespace batch
