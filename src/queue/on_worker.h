#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <type_traits>

#include "model/cancelled.h"
#include "queue/turn_queue.h"
#include "queue/worker_pool.h"

namespace boxlift {

/// The hop of a coroutine to a worker and back:
///
///     auto hop = onWorker(pool, turns, function);
///     const auto result = co_await hop;
///
/// runs `function` on one of the pool's threads and goes on where it began, on the main thread,
/// with the function's result or its exception; with Cancelled when the pool ends first.
///
/// Note: [temporaries in co_await] g++ 12 destroys capturing lambdas and braced aggregates twice
/// when they are temporaries within a co_await expression. So the function is taken as an lvalue,
/// and the hop is named before it is awaited.
template <typename Function>
class OnWorker final : WorkerPool::Work {
public:
    using Result = std::invoke_result_t<Function&>;

    OnWorker(WorkerPool& pool, TurnQueue& turns, Function& function)
        : m_pool(pool), m_turns(turns), m_function(function) {}
    OnWorker(const OnWorker&) = delete;
    OnWorker& operator=(const OnWorker&) = delete;

    // An awaiter of its own: a coroutine may copy what it awaits.
    auto operator co_await() noexcept { return Awaiter{*this}; }

private:
    struct Awaiter {
        OnWorker& hop;

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> handle) const { hop.start(handle); }
        Result await_resume() const { return hop.result(); }
    };

    void start(std::coroutine_handle<> handle) {
        m_handle = handle;
        m_pool.submit(*this);
    }

    Result result() {
        if (m_error)
            std::rethrow_exception(m_error);
        return std::move(*m_result);
    }

    // A worker.
    void run() noexcept override {
        try {
            m_result.emplace(m_function());
        } catch (...) {
            m_error = std::current_exception();
        }
        m_turns.mailbox()->post(m_handle);
    }

    void abandon() noexcept override {
        m_error = std::make_exception_ptr(Cancelled());
        m_turns.mailbox()->post(m_handle);
    }

    WorkerPool& m_pool;
    TurnQueue& m_turns;
    Function& m_function;
    std::coroutine_handle<> m_handle;
    std::optional<Result> m_result;
    std::exception_ptr m_error;
};

template <typename Function>
OnWorker<Function> onWorker(WorkerPool& pool, TurnQueue& turns, Function& function) {
    return {pool, turns, function};
}

} // namespace boxlift
