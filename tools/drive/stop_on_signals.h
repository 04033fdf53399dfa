#pragma once

#include <atomic>
#include <stop_token>
#include <thread>

namespace boxlift::drive {

/// While it lives, interrupt and terminate signals request a stop instead of ending the process;
/// afterwards they are left pending. Made on the main thread before other threads are, which take
/// over what it sets up.
class StopOnSignals {
public:
    StopOnSignals();
    ~StopOnSignals();
    StopOnSignals(const StopOnSignals&) = delete;
    StopOnSignals& operator=(const StopOnSignals&) = delete;

    std::stop_token token() const { return m_stop.get_token(); }

private:
    void waitForSignals();

    std::stop_source m_stop;
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};

} // namespace boxlift::drive
