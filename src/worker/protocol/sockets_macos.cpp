#include "worker/protocol/sockets.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>

namespace boxlift::worker {

std::pair<Descriptor, Descriptor> connectedSockets() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    for (const int end : ends) {
        const int on = 1;
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::setsockopt(end, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
    }
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

int sendFlags() {
    return MSG_DONTWAIT;
}

// A worker, the only one that is sent descriptors, starts no programs.
int receiveFlags() {
    return MSG_DONTWAIT;
}

} // namespace boxlift::worker
