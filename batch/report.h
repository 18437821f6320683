// SPDX-License-Identifier: MIT
#pragma once

// What a run tells as it goes: a JSON line per photo for scripts, a plain
// line per photo when not on a terminal (and for every photo a watch keys),
// a progress line on a terminal, and each failure on stderr. A watch also
// tells each retry and each recovery, on stderr and in JSON.

#include "batch/keyjob.h"

#include <QElapsedTimer>
#include <QJsonObject>

#include <cstdio>

namespace batch {

enum class ReportStyle {
    Progress, // a terminal: one line redrawn with done, rate and time left
    Lines,    // a line per photo
    Json,     // a JSON object per photo
};

class Reporter
{
public:
    Reporter(ReportStyle style, std::FILE* out, std::FILE* err);

    // More photos joined the run (a watch adds them as they arrive).
    void addToTotal(int photos);
    void photoDone(const PhotoResult& result);
    // A name the run could not take at all (no such file, not a photo).
    void problem(const QString& text);
    // A watched photo not whole yet; it is keyed once it is.
    void waiting(const QString& photo, const QString& reason);
    // A try of a watched photo that failed on the output side, and the wait
    // before the next: one line on stderr, and in JSON.
    void retrying(const PhotoResult& result, int attempt, qint64 waitMs);
    // A watched photo written after failed tries: one line on stderr that
    // says the output works again, and its usual line (in JSON, with the
    // number of tries).
    void recovered(const PhotoResult& result, int attempts);
    // A line about the watch itself (how a folder is watched, a folder gone,
    // back, or made again): on stderr, and in JSON as an event of that kind.
    void notice(const QString& text, const QString& event);
    // Ends the progress line, if one is shown.
    void finish();

    int done() const { return m_done; }
    int failed() const { return m_failed; }

private:
    void drawProgress();

    ReportStyle m_style;
    std::FILE* m_out;
    std::FILE* m_err;
    int m_total = 0;
    int m_done = 0;
    int m_failed = 0;
    bool m_progressShown = false;
    QElapsedTimer m_clock;
};

// The style a run uses: JSON when asked, progress when stderr is a terminal
// and the run is not a watch, lines otherwise.
ReportStyle reportStyleFor(bool json, bool watch);

// One photo's JSON object, without the line's end; `extra` adds members.
QByteArray jsonLine(const PhotoResult& result, const QJsonObject& extra = {});

} // namespace batch
