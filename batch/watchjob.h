// SPDX-License-Identifier: MIT
#pragma once

// Keying one photo of a watched folder: the photo file read once, and, when
// a photo of that name was keyed before, compared by content with it, so
// that a photo merely copied or touched is not keyed again while one
// replaced under the same name is. The digest of what was keyed comes back
// for the journal.

#include "batch/keyjob.h"

namespace batch {

// `keyedHash`: the content digest recorded for this photo, empty when none.
// A photo whose bytes have that digest comes back `skipped`, not keyed.
PhotoResult keyWatchedPhoto(const KeySettings& settings, Layers& layers, const QString& photoPath,
                            const QStringList& outputPaths, const QByteArray& keyedHash);

} // namespace batch
