#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace boxlift::drive {

/// Carries the progress of one conversion from its threads to the one that prints it: the first
/// report at once, later ones at most ten times a second with the latest value, the complete one
/// at once. Values that repeat and reports after the end are dropped.
class ProgressRelay {
public:
    static constexpr std::chrono::milliseconds interval{100};

    // Any thread.
    void report(double fraction);
    /// The conversion has ended.
    void close();

    // The printing thread.
    /// Waits for the next value to print; nothing at the end.
    std::optional<double> next();

private:
    using Clock = std::chrono::steady_clock;

    bool isDue() const;
    std::optional<double> take(std::optional<double>& value);
    void wait(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_hasReports = false;
    std::optional<double> m_first;
    std::optional<double> m_pending; ///< the latest of the later ones
    std::optional<double> m_printed;
    Clock::time_point m_nextTime = Clock::time_point::min();
    bool m_isClosed = false;
};

} // namespace boxlift::drive
