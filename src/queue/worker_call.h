#pragma once

#include <chrono>
#include <span>
#include <stdexcept>
#include <stop_token>
#include <string>

#include "engine/converter.h"
#include "queue/wake_up.h"
#include "queue/worker_process.h"
#include "worker/protocol/message.h"

namespace boxlift {

/// The worker has died, says nothing for too long, or says what it must not.
class WorkerLost : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One request to a worker and its answer. Blocks; not the main thread. Whatever the worker does, a
/// stop is heard at once, and what it sends is either what a worker may say or ends the call.
class WorkerCall {
public:
    /// `patience` is how long the worker may say nothing.
    WorkerCall(WorkerProcess& worker, std::stop_token stop, std::chrono::milliseconds patience);

    /// Waits until the worker has started, and returns which restraints the system lacks for it.
    /// Throws Cancelled and WorkerLost.
    std::string awaitStart();
    /// Returns the final report. Throws Cancelled and WorkerLost, after which the worker is of no
    /// more use. Reports of progress go to `progress`; without it there must be none.
    worker::Report ask(const worker::Request& request, std::span<const int> descriptors,
                       const Converter::Progress& progress);

private:
    worker::Report next();
    worker::Report nextWithin(std::chrono::steady_clock::time_point deadline);
    void waitForNews(std::chrono::steady_clock::time_point deadline);

    struct Signal {
        WakeUp& wakeUp;
        void operator()() const noexcept { wakeUp.signal(); }
    };

    WorkerProcess& m_worker;
    const std::stop_token m_stop;
    const std::chrono::milliseconds m_patience;
    WakeUp m_wakeUp;
    const std::stop_callback<Signal> m_onStop;
};

} // namespace boxlift
