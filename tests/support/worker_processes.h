#pragma once

#include <string_view>
#include <vector>

#include <sys/types.h>

namespace boxlift::test {

/// The living workers of a process for "analysis" or "conversion", the oldest first.
std::vector<pid_t> workersOf(pid_t parent, std::string_view role);

/// Whether a process, ended and not waited for included, is still there.
bool isRunning(pid_t process);

/// The size in bytes of the file without a name, or with a hidden one, in `folder` that a process
/// holds open; -1 when there is none.
off_t openOutputSize(pid_t process, std::string_view folder);

} // namespace boxlift::test
