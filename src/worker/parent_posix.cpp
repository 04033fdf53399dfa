#include "worker/parent.h"

#include <csignal>
#include <cstdlib>
#include <thread>

#include "worker/wait.h"

namespace boxlift::worker {

void ignoreForeignSignals() {
    // What a terminal or a session sends to all of its processes is the application's to obey. A
    // broken socket and a file that may not grow are errors of the calls that meet them.
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
}

void endWithParent(int socket) {
    std::thread([socket] {
        waitUntilClosed(socket);
        std::_Exit(EXIT_FAILURE);
    }).detach();
}

} // namespace boxlift::worker
