#include "worker/protocol/sockets.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <sys/socket.h>

namespace boxlift::worker {

std::pair<Descriptor, Descriptor> connectedSockets() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

int sendFlags() {
    return MSG_DONTWAIT | MSG_NOSIGNAL;
}

int receiveFlags() {
    return MSG_DONTWAIT | MSG_CMSG_CLOEXEC;
}

} // namespace boxlift::worker
