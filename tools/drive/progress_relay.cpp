#include "drive/progress_relay.h"

#include <utility>

namespace boxlift::drive {

void ProgressRelay::report(double fraction) {
    {
        const std::scoped_lock lock(m_mutex);
        if (m_isClosed)
            return;
        (m_hasReports ? m_pending : m_first) = fraction;
        m_hasReports = true;
    }
    m_changed.notify_one();
}

void ProgressRelay::close() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isClosed = true;
    }
    m_changed.notify_one();
}

std::optional<double> ProgressRelay::next() {
    std::unique_lock lock(m_mutex);
    while (true) {
        if (m_first)
            return take(m_first);
        if (m_pending == m_printed)
            m_pending.reset();
        if (isDue())
            return take(m_pending);
        if (m_isClosed)
            return std::nullopt;
        wait(lock);
    }
}

bool ProgressRelay::isDue() const {
    return m_pending && (*m_pending >= 1.0 || Clock::now() >= m_nextTime);
}

std::optional<double> ProgressRelay::take(std::optional<double>& value) {
    m_nextTime = Clock::now() + interval;
    m_printed = std::exchange(value, std::nullopt);
    return m_printed;
}

void ProgressRelay::wait(std::unique_lock<std::mutex>& lock) {
    if (m_pending)
        m_changed.wait_until(lock, m_nextTime);
    else
        m_changed.wait(lock);
}

} // namespace boxlift::drive
