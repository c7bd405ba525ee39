#pragma once

#include "tests/support/must_hold.h"

#include <cstddef>
#include <cstdint>

// What clang's fuzzer, or the replay program in its place, calls.
extern "C" {
/// Tries one input; a finding ends the process.
int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);
/// Called once before the first input.
int LLVMFuzzerInitialize(int* argc, char*** argv);
}
