#pragma once

namespace boxlift::worker {

/// Leaves this process, for good, the system calls that reading, computing and writing take, and
/// fails all others (seccomp(2)). False where the kernel cannot, or its calls are not known here.
bool filterSyscalls();

} // namespace boxlift::worker
