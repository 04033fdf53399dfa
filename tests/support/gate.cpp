#include "support/gate.h"

#include <stdexcept>

#include "model/cancelled.h"
#include "support/event_loop.h"

namespace boxlift::test {

void Gate::pass(const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    m_wasReached = true;
    if (m_changed.wait_for(lock, stop, patience, [this] { return m_isOpen; }))
        return;
    if (stop.stop_requested())
        throw Cancelled();
    throw std::runtime_error("nobody opened the gate");
}

void Gate::open() {
    const std::scoped_lock lock(m_mutex);
    m_isOpen = true;
    m_changed.notify_all();
}

bool Gate::wasReached() const {
    const std::scoped_lock lock(m_mutex);
    return m_wasReached;
}

} // namespace boxlift::test
