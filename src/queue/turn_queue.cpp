#include "queue/turn_queue.h"

#include <chrono>
#include <utility>

namespace boxlift {

namespace {

using Clock = std::chrono::steady_clock;

/// Half a frame at 60 frames/s.
constexpr std::chrono::milliseconds sliceLength{8};

} // namespace

TurnQueue::TurnQueue() : m_notifier(m_mailbox->descriptor(), QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { runSlice(); });
}

TurnQueue::~TurnQueue() {
    m_mailbox->close();
}

/// What comes meanwhile belongs to a later turn.
void TurnQueue::runSlice() {
    const auto end = Clock::now() + sliceLength;
    std::deque<Mailbox::Work> works = m_mailbox->takeAll();
    while (!works.empty() && Clock::now() < end) {
        const Mailbox::Work work = std::move(works.front());
        works.pop_front();
        work();
    }
    m_mailbox->putBack(std::move(works));
}

void TurnQueue::drain() {
    for (auto works = m_mailbox->takeAll(); !works.empty(); works = m_mailbox->takeAll()) {
        for (const Mailbox::Work& work : works)
            work();
    }
}

} // namespace boxlift
