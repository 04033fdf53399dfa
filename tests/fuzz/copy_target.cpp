#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/exercise.h"

/// Any bytes, copied into another container; which one is a matter of their number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace boxlift::test;
    copyBytes({reinterpret_cast<const char*>(data), size}, typeFor(size), size % 4 == 0);
    return 0;
}
