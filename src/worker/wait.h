#pragma once

namespace boxlift::worker {

/// Returns when there is something to read, if only the end.
void waitUntilReadable(int descriptor);

/// Returns when the other end of a socket is closed, whatever there is to read.
void waitUntilClosed(int socket);

} // namespace boxlift::worker
