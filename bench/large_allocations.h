#pragma once

#include <cstddef>

namespace boxlift::bench {

/// The least that counts as large: less than the brightness of a picture of 720 lines takes, more
/// than a compressed one.
constexpr std::size_t largeAllocation = 512 * 1024;

/// How many allocations of that size this program and its libraries have made so far. Any thread.
std::size_t largeAllocations();

} // namespace boxlift::bench
