// SPDX-License-Identifier: MIT
#pragma once

// Whether a photo's bytes hold all that its own header and structure say it
// holds, kind by kind, reading only the few bytes that tell.

#include <QByteArray>
#include <QString>

namespace batch {

// Random access to a photo's bytes, from a file or from memory.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    virtual qint64 size() const = 0;
    // At most `count` bytes from `offset`; fewer past the end.
    virtual QByteArray at(qint64 offset, qint64 count) const = 0;
};

// Empty when the photo is whole, or of a kind not judged here; else why it
// looks cut short.
QString cutShortIn(const ByteSource& photo);

} // namespace batch
