#include "queue/worker_pool.h"

#include <system_error>
#include <utility>

#include "engine/media/thread_name.h"

namespace boxlift {

WorkerPool::WorkerPool(std::string name, unsigned threadCount)
    : m_name(std::move(name)), m_threadCount(threadCount) {}

WorkerPool::~WorkerPool() {
    end();
}

void WorkerPool::submit(Work& work) {
    if (!enqueue(work))
        return work.abandon();
    if (m_threads.size() < m_threadCount && isShortOfThreads())
        startThread();
    m_changed.notify_one();
}

bool WorkerPool::enqueue(Work& work) {
    const std::lock_guard lock(m_mutex);
    if (!m_isEnded)
        m_waiting.push_back(&work);
    return !m_isEnded;
}

bool WorkerPool::isShortOfThreads() {
    const std::lock_guard lock(m_mutex);
    return m_waiting.size() > m_idleThreads;
}

void WorkerPool::startThread() {
    try {
        m_threads.emplace_back([this] { workLoop(); });
    } catch (const std::system_error&) {
        // The system is out of threads: fewer will do, but not none.
        if (m_threads.empty())
            return end();
    }
}

void WorkerPool::workLoop() {
    media::setThreadName(m_name);
    while (Work* work = next())
        work->run();
}

WorkerPool::Work* WorkerPool::next() {
    std::unique_lock lock(m_mutex);
    ++m_idleThreads;
    m_changed.wait(lock, [this] { return m_isEnded || !m_waiting.empty(); });
    --m_idleThreads;
    if (m_isEnded)
        return nullptr;
    Work* work = m_waiting.front();
    m_waiting.pop_front();
    return work;
}

void WorkerPool::end() {
    std::deque<Work*> rest;
    {
        const std::lock_guard lock(m_mutex);
        m_isEnded = true;
        rest.swap(m_waiting);
    }
    m_changed.notify_all();
    for (Work* work : rest)
        work->abandon();
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
}

} // namespace boxlift
