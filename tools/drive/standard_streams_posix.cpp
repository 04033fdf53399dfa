#include "drive/standard_streams.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace boxlift::drive {

namespace {

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

/// Whether it is worth trying again: interrupted, or a descriptor that does not wait by itself.
bool canWriteLater(int descriptor) {
    if (errno == EINTR)
        return true;
    if (errno != EAGAIN && errno != EWOULDBLOCK)
        return false;
    pollfd waited{.fd = descriptor, .events = POLLOUT, .revents = 0};
    return ::poll(&waited, 1, -1) > 0 || errno == EINTR;
}

} // namespace

void prepareStandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Read-only: who writes to a stream that the caller has closed is told. The lowest free number
    // is taken, so going upwards fills exactly the one that is missing.
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (!isOpen(descriptor))
            ::open("/dev/null", O_RDONLY);
    }
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written > 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (written == 0 || !canWriteLater(descriptor))
            return false;
    }
    return true;
}

bool writeToStandardOutput(std::string_view text) {
    return writeAll(STDOUT_FILENO, text);
}

} // namespace boxlift::drive
