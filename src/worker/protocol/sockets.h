#pragma once

#include <utility>

#include "worker/protocol/descriptor.h"

/// What systems do differently about local sockets.
namespace boxlift::worker {

/// Two ends of a stream that close with exec. Throws std::system_error.
std::pair<Descriptor, Descriptor> connectedSockets();

/// Flags of sendmsg() and recvmsg() that never wait; that raise no signal; that let no descriptor
/// stay open over exec.
int sendFlags();
int receiveFlags();

} // namespace boxlift::worker
