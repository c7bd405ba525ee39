#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What clang's fuzzer, or the replay program in its place, calls.
extern "C" {
/// Tries one input; a finding ends the process.
int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);
/// Called once before the first input.
int LLVMFuzzerInitialize(int* argc, char*** argv);
}

/// Ends the process when something that must hold does not, in every build.
#define MUST_HOLD(condition)                                                                                 \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition);              \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)
