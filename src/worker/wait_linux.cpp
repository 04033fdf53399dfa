#include "worker/wait.h"

#include <poll.h>

namespace boxlift::worker {

namespace {

/// Signals may interrupt it.
void waitFor(int descriptor, short events) {
    pollfd awaited{.fd = descriptor, .events = events, .revents = 0};
    while (::poll(&awaited, 1, -1) < 0) {
    }
}

} // namespace

void waitUntilReadable(int descriptor) {
    waitFor(descriptor, POLLIN);
}

void waitUntilClosed(int socket) {
    waitFor(socket, POLLRDHUP);
}

} // namespace boxlift::worker
