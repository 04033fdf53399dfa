#include "queue/worker_call.h"

#include <algorithm>
#include <array>
#include <utility>

#include <poll.h>

#include "model/cancelled.h"

namespace boxlift {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono_literals::operator""ms;

/// For poll(): rounded up, so that it does not return before the time.
int millisecondsUntil(Clock::time_point time) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now());
    return static_cast<int>(std::clamp(left, 0ms, 3600'000ms).count());
}

} // namespace

WorkerCall::WorkerCall(WorkerProcess& worker, std::stop_token stop,
                       std::chrono::milliseconds patience)
    : m_worker(worker), m_stop(std::move(stop)), m_patience(patience),
      m_onStop(m_stop, Signal{m_wakeUp}) {}

std::string WorkerCall::awaitStart() {
    if (m_worker.isReady())
        return {};
    const worker::Report first = next();
    const auto* ready = std::get_if<worker::Ready>(&first);
    if (!ready || ready->version != worker::protocolVersion)
        throw WorkerLost("it is of another version");
    m_worker.setReady();
    return ready->missingRestraints;
}

worker::Report WorkerCall::ask(const worker::Request& request, std::span<const int> descriptors,
                               const Converter::Progress& progress) {
    try {
        // An idle worker's socket has room for a request.
        m_worker.channel().send(worker::encode(request), descriptors, 0ms);
    } catch (const worker::Channel::Broken& error) {
        throw WorkerLost(error.what());
    }
    m_worker.countRequest();
    while (true) {
        worker::Report report = next();
        const auto* step = std::get_if<worker::Progress>(&report);
        if (!step)
            return report;
        if (!progress)
            throw WorkerLost("it reports what it was not asked for");
        progress(step->fraction);
    }
}

worker::Report WorkerCall::next() {
    try {
        return nextWithin(Clock::now() + m_patience);
    } catch (const worker::Channel::Broken& error) {
        throw WorkerLost(error.what());
    } catch (const worker::MalformedMessage& error) {
        throw WorkerLost(error.what());
    }
}

worker::Report WorkerCall::nextWithin(Clock::time_point deadline) {
    while (true) {
        throwIfStopped(m_stop);
        if (const auto message = m_worker.channel().receive())
            return worker::decodeReport(message->bytes);
        waitForNews(deadline);
    }
}

void WorkerCall::waitForNews(Clock::time_point deadline) {
    std::array<pollfd, 2> sources{{
        {.fd = m_worker.channel().descriptor(), .events = POLLIN, .revents = 0},
        {.fd = m_wakeUp.descriptor(), .events = POLLIN, .revents = 0},
    }};
    const int wait = millisecondsUntil(deadline);
    if (wait == 0)
        throw WorkerLost("it has said nothing for too long");
    ::poll(sources.data(), sources.size(), wait);
}

} // namespace boxlift
