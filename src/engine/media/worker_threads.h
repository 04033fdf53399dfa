#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace boxlift::media {

/// Threads that work for one result: the first that fails ends them all. Started and joined by one
/// owner; the destructor aborts and joins.
class WorkerThreads {
public:
    /// `wakeAll` is called on an abort, possibly more than once, on any thread: it makes whatever
    /// waits return.
    explicit WorkerThreads(std::function<void()> wakeAll) : m_wakeAll(std::move(wakeAll)) {}
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    // The owner's thread.
    /// `name` has at most 15 characters.
    void start(const char* name, std::function<void()> work);
    void join();
    /// Throws what the first thread to fail threw.
    void rethrow();

    // Any thread.
    void abort();
    bool isAborted() const { return m_isAborted.load(); }

private:
    void fail(std::exception_ptr error);

    std::function<void()> m_wakeAll;
    std::atomic<bool> m_isAborted = false;
    std::mutex m_mutex;
    std::exception_ptr m_error;
    std::vector<std::thread> m_threads;
};

} // namespace boxlift::media
