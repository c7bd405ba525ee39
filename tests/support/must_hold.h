#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process when something that must hold does not, in every build.
#define MUST_HOLD(condition)                                                                                 \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition);              \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)
