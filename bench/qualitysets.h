// SPDX-License-Identifier: MIT
#pragma once

// The quality bench's photos: a tuning set of made subjects (its own seeds),
// and a held-out set of made subjects on other seeds plus the real photos with
// true mattes. Keyers are tuned on the first only; every reported figure is
// on the second.

#include "tools/groundtruth/canvas.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace quality {

struct BenchPhoto
{
    QString name;
    std::uint64_t seed = 0; // chooses the backdrop shade, ramp and noise
    bool real = false;
    std::shared_ptr<const groundtruth::TrueMatte> truth;
};

enum class PhotoSet { Tuning, HeldOut };

// Made in parallel on the pool; the real photos are read from the matting
// folder when it is there (a line on stderr says when they are left out).
std::vector<BenchPhoto> benchPhotos(PhotoSet set, const QString& mattingFolder);

} // namespace quality
