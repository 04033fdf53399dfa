#pragma once

#include <chrono>

namespace boxlift::bench {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

inline Seconds secondsSince(Clock::time_point start) {
    return Clock::now() - start;
}

/// Turns the event loop and times each turn without the waiting: so long the main thread was held,
/// and a window would have stood still. Main thread.
class TimedTurns {
public:
    /// `descriptor` becomes readable when there is something to do.
    explicit TimedTurns(int descriptor) : m_descriptor(descriptor) {}

    template <typename Condition>
    void until(Condition isTrue) {
        while (!isTrue())
            turn();
    }

    /// Since the last call.
    Seconds takeLongest();

private:
    void turn();
    void waitForWork() const;

    const int m_descriptor;
    Seconds m_longest{0};
};

} // namespace boxlift::bench
