#include "bench/timed_turns.h"

#include <algorithm>
#include <utility>

#include <QCoreApplication>
#include <poll.h>

namespace boxlift::bench {

namespace {

/// Timers show in no descriptor.
constexpr int longestWaitMilliseconds = 5;

} // namespace

void TimedTurns::turn() {
    waitForWork();
    const auto start = Clock::now();
    QCoreApplication::processEvents();
    m_longest = std::max(m_longest, secondsSince(start));
}

void TimedTurns::waitForWork() const {
    pollfd waited{.fd = m_descriptor, .events = POLLIN, .revents = 0};
    ::poll(&waited, 1, longestWaitMilliseconds);
}

Seconds TimedTurns::takeLongest() {
    return std::exchange(m_longest, Seconds(0));
}

} // namespace boxlift::bench
