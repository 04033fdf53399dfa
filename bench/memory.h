#pragma once

#include <cstddef>

namespace boxlift::bench {

/// What of this process is in memory.
std::size_t residentBytes();

/// Gives memory that is free but still held back to the system, so that what is taken next shows.
void giveBackFreeMemory();

} // namespace boxlift::bench
