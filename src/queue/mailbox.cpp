#include "queue/mailbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace boxlift {

void Mailbox::post(Work work) {
    const std::lock_guard lock(m_mutex);
    if (m_isClosed)
        return;
    m_waiting.push_back(std::move(work));
    if (m_waiting.size() == 1)
        m_wakeUp.signal();
}

std::deque<Mailbox::Work> Mailbox::takeAll() {
    const std::lock_guard lock(m_mutex);
    m_wakeUp.clear();
    return std::exchange(m_waiting, {});
}

void Mailbox::putBack(std::deque<Work> rest) {
    if (rest.empty())
        return;
    const std::lock_guard lock(m_mutex);
    std::ranges::move(m_waiting, std::back_inserter(rest));
    m_waiting = std::move(rest);
    m_wakeUp.signal();
}

void Mailbox::close() {
    std::deque<Work> dropped;
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    dropped.swap(m_waiting);
}

} // namespace boxlift
