#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzTargets.h"

/// What libFuzzer calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Read(FUZZ_TARGET, {reinterpret_cast<const char*>(data), size});
    return 0;
}
