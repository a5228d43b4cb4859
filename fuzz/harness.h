// What the harnesses share. Every one of them links harness.cpp, whose
// LLVMFuzzerInitialize sends standard output nowhere: the operations under
// test print, and the fuzzer's time belongs to the parsing.
#ifndef WEX_FUZZ_HARNESS_H
#define WEX_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

// The input as two texts, split at its first NUL byte; without one, the
// whole input and an empty text.
std::pair<std::string, std::string> split_at_nul(const uint8_t *data, size_t size);

#endif
