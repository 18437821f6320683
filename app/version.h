// SPDX-License-Identifier: MIT
#pragma once

// Shown in the window title after a " v".
inline constexpr char kPlendraVersion[] = "1.3";
