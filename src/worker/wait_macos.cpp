#include "worker/wait.h"

#include <poll.h>
#include <sys/event.h>

#include "worker/protocol/descriptor.h"

namespace boxlift::worker {

void waitUntilReadable(int descriptor) {
    pollfd awaited{.fd = descriptor, .events = POLLIN, .revents = 0};
    while (::poll(&awaited, 1, -1) < 0) {
    }
}

void waitUntilClosed(int socket) {
    const Descriptor events(::kqueue());
    struct kevent change {};
    EV_SET(&change, socket, EVFILT_READ, EV_ADD | EV_CLEAR, 0, 0, nullptr);
    struct kevent event {};
    do
        ::kevent(events.get(), &change, 1, &event, 1, nullptr);
    while (!(event.flags & EV_EOF));
}

} // namespace boxlift::worker
