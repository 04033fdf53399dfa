#include "worker/parent.h"

#include <csignal>

#include <sys/prctl.h>

namespace boxlift::worker {

void askToBeEnded() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace boxlift::worker
