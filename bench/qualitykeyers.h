// SPDX-License-Identifier: MIT
#pragma once

// The keyers the quality bench compares. Each keys one shot photo, with one
// or more of its settings at once (a grid when it is tuned), and hands back
// straight alpha and colour per setting.

#include "tools/groundtruth/mattescore.h"
#include "tools/groundtruth/shooting.h"

#include <QImage>
#include <QPoint>
#include <QString>

#include <memory>
#include <vector>

namespace quality {

// One photo of the bench under one condition, written to disk for the tools.
struct ShotPhoto
{
    QString name;
    groundtruth::Condition condition;
    QImage photo; // RGB32, as every keyer reads it
    QString photoPath; // the same pixels as a PNG file
    QString workDir; // a folder of this shot's own for the keyers' outputs
    QPoint keyPoint; // the click on the backdrop
    groundtruth::Rgb keyColour; // the backdrop colour around the click (9x9 mean)
};

struct KeyResult
{
    groundtruth::KeyedMatte matte;
    QString error; // empty when keyed
};

class Keyer
{
public:
    virtual ~Keyer() = default;
    virtual QString id() const = 0; // its name on the command line: hard, colorkey, ...
    virtual QString title() const = 0; // its row in the tables
    // The settings it can be tuned over; one when it has no knob.
    virtual int settingCount() const { return 1; }
    virtual QString settingLabel(int /*setting*/) const { return QString(); }
    virtual std::vector<KeyResult> key(const ShotPhoto& shot, const std::vector<int>& settings) const = 0;
};

// plendra-batch --transparent -k X,Y, with --soft for the soft keyer.
std::unique_ptr<Keyer> toolKeyer(const QString& tool, bool soft);

// Whether the tool offers --soft (its help lists it).
bool toolHasSoftKeyer(const QString& tool);

// FFmpeg's colorkey, and its chromakey followed by despill, run as a process
// on the photo's PNG with the key colour of the click; tuned over similarity
// and blend. One process writes every setting asked for at once.
enum class FfmpegFilter { Colorkey, ChromakeyDespill };
std::unique_ptr<Keyer> ffmpegKeyer(const QString& ffmpeg, FfmpegFilter filter);

// A classic colour-difference keyer, restated here: alpha from how far the
// backdrop's own channel stands above the other two, against the backdrop's
// own difference; colour unmixed from the backdrop and spill-limited. Tuned
// over where alpha reaches 0 and 1 (its gain and offset).
std::unique_ptr<Keyer> classicKeyer();

} // namespace quality
