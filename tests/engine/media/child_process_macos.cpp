#include "engine/media/child_process.h"

namespace boxlift::media::test {

// There are none to begin with.
bool forbidUnnamedFiles() {
    return true;
}

} // namespace boxlift::media::test
