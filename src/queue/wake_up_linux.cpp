#include "queue/wake_up.h"

#include <cerrno>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace boxlift {

WakeUp::WakeUp() : m_read(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_write(m_read) {
    if (m_read < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeUp::~WakeUp() {
    ::close(m_read);
}

void WakeUp::signal() noexcept {
    // Fails only when it is readable already.
    [[maybe_unused]] const int result = eventfd_write(m_write, 1);
}

void WakeUp::clear() noexcept {
    eventfd_t ignored = 0;
    [[maybe_unused]] const int result = eventfd_read(m_read, &ignored);
}

} // namespace boxlift
