// SPDX-License-Identifier: MIT
#pragma once

// The output sizes and formats a user can pick. They are offered, and a custom
// size is remembered, but saving always writes the composite at its own size
// in its foreground's format.

struct OutputSize
{
    int index;
    int width;   // -1: the picture's own size
    int height;
};

struct OutputFormat
{
    int flag;
    const char* name;
};

inline constexpr int kOutputSizeCount = 5;
inline constexpr int kOutputFormatCount = 6;
// The "Custom Size" entry of the size box comes after the table's rows.
inline constexpr int kCustomSizeIndex = 5;

extern OutputSize OutputSizes[kOutputSizeCount];
extern const OutputFormat OutputFormats[kOutputFormatCount];
