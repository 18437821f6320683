// SPDX-License-Identifier: MIT
#pragma once

// What a plendra-batch run is asked to do, read from its command line.

#include "batch/optiontable.h"

#include <QByteArray>
#include <QPoint>
#include <QRgb>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

namespace batch {

struct BatchOptions
{
    QStringList backgrounds;        // empty only with `transparent`
    std::optional<QPoint> keyPoint; // photo pixel the key colour is taken from
    std::optional<QRgb> keyColour;  // or a fixed key colour
    bool autoKey = false;           // or the backdrop's own colour, found in each photo
    QString overlay;                // a frame or logo drawn on top; empty: none
    QSize printSize;                // invalid: the photo's own size
    QString outputFolder;           // empty: the window's output folder
    QByteArray format;              // "jpg", "png", "tif", "bmp"; empty: the photo's own suffix
    int quality = -1;               // -1: the writer's default, as the window writes
    bool transparent = false;
    bool soft = false;              // the soft keyer (soft edges, colour recovered)
    bool watch = false;
    int jobs = 0;                   // 0: one per core
    int shard = 1;                  // take share `shard` of `shards`
    int shards = 1;
    bool json = false;
    int settleMs = 1000;            // how long a polled photo must stay unchanged
    bool poll = false;              // poll the watched folders even where events arrive
    QStringList inputs;             // photos and folders, as given
};

// The outcome of reading the command line: options to run with, or the text
// to print and the exit status when the run ends right away (help, version,
// usage error).
struct ParsedCommandLine
{
    BatchOptions options;
    bool runs = false;
    int exitCode = 0;
    QString standardOutput;
    QString standardError;
};

// `arguments` includes the program name first, as QCoreApplication gives it.
ParsedCommandLine parseCommandLine(const QStringList& arguments);

} // namespace batch
