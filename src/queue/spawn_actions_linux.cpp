#include "queue/spawn_actions.h"

namespace boxlift {

int inheritNothingElse(posix_spawn_file_actions_t& actions, short&, int end) {
    return ::posix_spawn_file_actions_addclosefrom_np(&actions, end);
}

} // namespace boxlift
