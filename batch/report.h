// SPDX-License-Identifier: MIT
#pragma once

// What a run tells as it goes: a JSON line per photo for scripts, a plain
// line per photo when not on a terminal (and for every photo a watch keys),
// a progress line on a terminal, and each failure on stderr.

#include "batch/keyjob.h"

#include <QElapsedTimer>

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

// One photo's JSON object, without the line's end.
QByteArray jsonLine(const PhotoResult& result);

} // namespace batch
