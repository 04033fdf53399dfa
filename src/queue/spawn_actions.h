#pragma once

#include <spawn.h>

namespace boxlift {

/// Has a new process begin without any of this one's descriptors but the standard streams and those
/// that `actions` makes, all of them below `end`. Adds to the actions and the flags. 0 or errno.
int inheritNothingElse(posix_spawn_file_actions_t& actions, short& flags, int end);

} // namespace boxlift
