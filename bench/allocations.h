#pragma once

#include <cstddef>

namespace boxlift::bench {

/// The least that counts as large: less than the brightness of a picture of 720 lines takes, more
/// than a compressed one.
constexpr std::size_t largeAllocation = 512 * 1024;

/// How many allocations this program and its libraries have made so far, and how many of those were
/// large. Any thread.
struct Allocations {
    std::size_t all = 0;
    std::size_t large = 0;
};
Allocations allocations();

} // namespace boxlift::bench
