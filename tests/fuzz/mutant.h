#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace boxlift::test {

/// A file that was damaged on purpose.
struct Mutant {
    std::string bytes{};
    /// What was done to it, in order.
    std::string damage{};
};

/// Damages a file in one to three places: bits are flipped, pieces cut out, swapped or doubled, the
/// end is cut off, sizes and counts are made to lie. The same for the same file and number.
Mutant mutate(std::string_view file, std::uint32_t number);

} // namespace boxlift::test
