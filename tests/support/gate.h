#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace boxlift::test {

/// Holds up threads until it is opened, so that a test says when something goes on. Any thread.
class Gate {
public:
    /// Waits until the gate is open. Throws Cancelled after a stop, and std::runtime_error when
    /// nobody opens it.
    void pass(const std::stop_token& stop = {});
    void open();
    /// Whether somebody came to the gate, who may have passed it since.
    bool wasReached() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable_any m_changed;
    bool m_isOpen = false;
    bool m_wasReached = false;
};

} // namespace boxlift::test
