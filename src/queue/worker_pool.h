#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace boxlift {

/// A few threads that do work in the order in which it comes.
class WorkerPool {
public:
    /// Something to do. Its maker owns it and keeps it until one of the two has been called.
    class Work {
    public:
        virtual void run() noexcept = 0;
        /// Called instead of run() when the pool ends first.
        virtual void abandon() noexcept = 0;

    protected:
        ~Work() = default;
    };

    /// The threads carry `name` (15 bytes at most) and start when there is work for them. Where not
    /// even one can be had, the pool ends.
    WorkerPool(std::string name, unsigned threadCount);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // The thread that made it.
    void submit(Work& work);
    /// Waits for the work that is being done; the rest, and what comes later, is abandoned.
    void end();

private:
    bool enqueue(Work& work);
    bool isShortOfThreads();
    void startThread();
    void workLoop();
    Work* next();

    const std::string m_name;
    const unsigned m_threadCount;
    std::vector<std::thread> m_threads;

    // Any thread.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Work*> m_waiting;
    unsigned m_idleThreads = 0;
    bool m_isEnded = false;
};

} // namespace boxlift
