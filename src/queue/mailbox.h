#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "queue/wake_up.h"

namespace boxlift {

/// Where any thread leaves work for the main one. Shared, so that whoever is late may outlive the
/// receiver: what comes after close() is dropped.
class Mailbox {
public:
    using Work = std::function<void()>;

    /// Readable while something waits.
    int descriptor() const { return m_wakeUp.descriptor(); }

    // Any thread.
    /// `work` must not throw. It is not run within this call.
    void post(Work work);

    // The receiver.
    /// In the order in which it came.
    std::deque<Work> takeAll();
    /// What was taken and not done comes first again.
    void putBack(std::deque<Work> rest);
    void close();

private:
    WakeUp m_wakeUp;
    std::mutex m_mutex;
    std::deque<Work> m_waiting;
    bool m_isClosed = false;
};

} // namespace boxlift
