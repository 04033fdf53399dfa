#include "queue/wake_up.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace boxlift {

namespace {

void configure(int descriptor) {
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::fcntl(descriptor, F_SETFL, O_NONBLOCK);
}

} // namespace

WakeUp::WakeUp() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    m_read = ends[0];
    m_write = ends[1];
    configure(m_read);
    configure(m_write);
}

WakeUp::~WakeUp() {
    ::close(m_read);
    ::close(m_write);
}

void WakeUp::signal() noexcept {
    // Fails only when it is readable already.
    const char byte = 0;
    [[maybe_unused]] const ssize_t result = ::write(m_write, &byte, 1);
}

void WakeUp::clear() noexcept {
    std::array<char, 256> bytes{};
    while (::read(m_read, bytes.data(), bytes.size()) > 0) {
    }
}

} // namespace boxlift
