#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "queue/mailbox.h"

namespace boxlift {

/// Carries the progress of one conversion from the engine's threads to the main one: the first
/// report at once, later ones at most ten times a second with the latest value, the complete one
/// at once. Reports after close() are dropped.
class ProgressRelay : public std::enable_shared_from_this<ProgressRelay> {
public:
    static constexpr std::chrono::milliseconds interval{100};

    /// `deliver` is called on the main thread.
    ProgressRelay(std::shared_ptr<Mailbox> mailbox, std::function<void(double)> deliver);

    // Any thread.
    void report(double fraction);

    // Main thread.
    /// The conversion has ended.
    void close();

private:
    using Clock = std::chrono::steady_clock;

    void postStep();
    void step();
    void waitForInterval();
    std::optional<double> takeDue();
    bool isDue() const;

    const std::shared_ptr<Mailbox> m_mailbox;

    // Main thread.
    const std::function<void(double)> m_deliver;
    Clock::time_point m_nextTime = Clock::time_point::min();

    // Any thread.
    std::mutex m_mutex;
    bool m_hasReports = false;
    std::optional<double> m_first;
    std::optional<double> m_pending; ///< the latest of the later ones
    bool m_isStepComing = false;
    bool m_isClosed = false;
};

} // namespace boxlift
