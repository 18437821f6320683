// SPDX-License-Identifier: MIT
#pragma once

// Broken invariants stop the program: it prints
//   <unit>:<line>: failed assertion `<condition>'
// on standard error and aborts. Active in every build type, release included,
// because a composite made from mismatched images must never reach the disk.
[[noreturn]] void plendraAssertionFailed(const char* unit, unsigned line, const char* condition);

// `unit` names the source unit in the message (for example "dialog").
#define PLENDRA_ASSERT(unit, condition) PLENDRA_ASSERT_AT(unit, __LINE__, condition)

// For checks whose reported line is a fixed, published number.
#define PLENDRA_ASSERT_AT(unit, line, condition) \
    ((condition) ? static_cast<void>(0) : plendraAssertionFailed(unit, line, #condition))
