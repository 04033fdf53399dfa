#include "engine/media/worker_threads.h"

#include "engine/media/thread_name.h"

namespace boxlift::media {

WorkerThreads::~WorkerThreads() {
    abort();
    join();
}

void WorkerThreads::start(const char* name, std::function<void()> work) {
    m_threads.emplace_back([this, name, work = std::move(work)] {
        setThreadName(name);
        try {
            work();
        } catch (...) {
            fail(std::current_exception());
        }
    });
}

void WorkerThreads::join() {
    for (std::thread& thread : m_threads)
        if (thread.joinable())
            thread.join();
}

void WorkerThreads::rethrow() {
    const std::lock_guard lock(m_mutex);
    if (m_error)
        std::rethrow_exception(m_error);
}

void WorkerThreads::abort() {
    m_isAborted.store(true);
    m_wakeAll();
}

void WorkerThreads::fail(std::exception_ptr error) {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_error)
            m_error = std::move(error);
    }
    abort();
}

} // namespace boxlift::media
