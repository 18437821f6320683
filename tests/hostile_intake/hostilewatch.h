// SPDX-License-Identifier: MIT
#pragma once

// Pieces of the hostile watched-folder and choosing tests: file times, the
// hot folder chosen through the Preset dialog, reports of what FOREGROUNDS
// lists, and the shared log.

#include "tests/hostile_intake/hostileintake.h"

#include <QDateTime>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

class Dialog;
class QListWidget;

namespace hostiletest {

inline constexpr int kWatchTimeoutMs = 10000;

// A fixed moment plus `minutes`, for modification times in a known order.
QDateTime minutesIn(int minutes);

// Sets the modification time of the file at `path`.
bool setModified(const QString& path, const QDateTime& when);

// Writes two photos five minutes apart: a green backdrop shot at `older`, a
// blue one at `newer` (folders made as needed).
bool writeOlderAndNewer(const QString& older, const QString& newer);

// Gives the corpus files of `folder` distinct times in corpus order, with
// `newest` (a file name) the newest of all; returns the listed names of the
// folder (files with an image ending), oldest first.
QStringList orderByTime(const HostileCase& c, const QString& folder, const QString& newest, bool* ok);

// Presses "PreSets" (shown for the test), picks `folder` with "Browse" in Qt's
// own folder dialog and closes the Preset window from its title bar.
bool choosePresetFolder(Dialog& d, const QString& folder);

// Reports the file name of each item FOREGROUNDS gains.
void reportListedNames(Dialog& d);

// Removes `path` as soon as FOREGROUNDS lists it: between the listing and the
// loading of the photo.
void removeWhenListed(Dialog& d, const QString& path);

// What the program has written to the shared log so far.
QString readLog();

// The last row of `list` whose text is `text`, or -1.
int rowOf(const QListWidget* list, const QString& text);

// Drops `path` at (10, 10) on `list`'s viewport as the desktop does; the last
// row that lists it, or -1 (also when the drop was refused).
int dropAndFindRow(QListWidget* list, const QString& path);

} // namespace hostiletest
