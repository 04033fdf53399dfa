#include "queue/spawn_actions.h"

#include <unistd.h>

namespace boxlift {

int inheritNothingElse(posix_spawn_file_actions_t& actions, short& flags, int) {
    flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
    return ::posix_spawn_file_actions_addinherit_np(&actions, STDERR_FILENO);
}

} // namespace boxlift
