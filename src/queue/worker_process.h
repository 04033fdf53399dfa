#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <sys/types.h>

#include "worker/protocol/channel.h"
#include "worker/protocol/role.h"

namespace boxlift {

/// A running boxlift-worker and the socket to it. One thread at a time.
class WorkerProcess {
public:
    /// The process lives no longer than the calling thread. Throws std::system_error when it cannot
    /// be started.
    static std::unique_ptr<WorkerProcess> start(const std::filesystem::path& program,
                                                worker::Role role);
    /// Ends it.
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    worker::Channel& channel() { return m_channel; }
    worker::Role role() const { return m_role; }
    pid_t id() const { return m_id; }

    bool isReady() const { return m_isReady; }
    void setReady() { m_isReady = true; }
    /// How many requests it was sent.
    int requestCount() const { return m_requestCount; }
    void countRequest() { ++m_requestCount; }

    /// Whether it has ended by itself.
    bool hasEnded();
    /// Kills it if it still lives, and says for the log how it ended.
    std::string end();

private:
    WorkerProcess(pid_t id, worker::Descriptor socket, worker::Role role);

    pid_t m_id;
    const worker::Role m_role;
    worker::Channel m_channel;
    bool m_isReady = false;
    int m_requestCount = 0;
};

} // namespace boxlift
