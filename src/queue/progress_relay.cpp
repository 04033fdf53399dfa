#include "queue/progress_relay.h"

#include <utility>

#include <QTimer>

namespace boxlift {

ProgressRelay::ProgressRelay(std::shared_ptr<Mailbox> mailbox, std::function<void(double)> deliver)
    : m_mailbox(std::move(mailbox)), m_deliver(std::move(deliver)) {}

void ProgressRelay::report(double fraction) {
    const std::lock_guard lock(m_mutex);
    if (m_isClosed)
        return;
    (m_hasReports ? m_pending : m_first) = fraction;
    m_hasReports = true;
    // The complete one overtakes the interval.
    if (!m_isStepComing || fraction >= 1.0)
        postStep();
}

void ProgressRelay::postStep() {
    m_isStepComing = true;
    m_mailbox->post([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->step();
    });
}

void ProgressRelay::step() {
    while (const auto fraction = takeDue()) {
        m_nextTime = Clock::now() + interval;
        m_deliver(*fraction);
    }
    waitForInterval();
}

/// Comes back for a report that is not due yet.
void ProgressRelay::waitForInterval() {
    const std::lock_guard lock(m_mutex);
    m_isStepComing = m_pending.has_value() && !m_isClosed;
    if (!m_isStepComing)
        return;
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(m_nextTime - Clock::now());
    QTimer::singleShot(rest, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->step();
    });
}

std::optional<double> ProgressRelay::takeDue() {
    const std::lock_guard lock(m_mutex);
    if (m_isClosed)
        return std::nullopt;
    if (m_first)
        return std::exchange(m_first, std::nullopt);
    return isDue() ? std::exchange(m_pending, std::nullopt) : std::nullopt;
}

bool ProgressRelay::isDue() const {
    return m_pending && (*m_pending >= 1.0 || Clock::now() >= m_nextTime);
}

void ProgressRelay::close() {
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
}

} // namespace boxlift
