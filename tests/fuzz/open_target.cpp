#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/exercise.h"

/// Any bytes, opened and analysed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    boxlift::test::analyzeBytes({reinterpret_cast<const char*>(data), size});
    return 0;
}
