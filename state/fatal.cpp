// SPDX-License-Identifier: MIT
#include "state/fatal.h"

#include <cstdio>
#include <cstdlib>

void plendraAssertionFailed(const char* unit, unsigned line, const char* condition)
{
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", unit, line, condition);
    std::fflush(stderr);
    std::abort();
}
