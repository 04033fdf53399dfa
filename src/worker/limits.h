#pragma once

#include <cstdint>

#include "worker/protocol/role.h"

namespace boxlift::worker {

/// Bytes: 512 MiB for an analysis, half of the machine's memory for a conversion.
std::uint64_t memoryLimit(Role role);

/// From now on this process gets no more memory than that, no core file is written of what it has
/// read, and it has few descriptors. What a system refuses is left out: the sandbox does not rest
/// on it. Memory that is asked for beyond the limit is refused, which ends the operation or the
/// process.
///
/// Note: [which memory counts] What is limited is RLIMIT_DATA: memory of its own that can be
/// written, as the heap and the stacks of threads. RLIMIT_AS would count address space as well that
/// costs nothing, such as the code of the libraries and the 64 MiB that each arena of the heap
/// reserves, so that a bound of use would have to lie far above the need.
void limitResources(Role role);

} // namespace boxlift::worker
