#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "queue/worker_process.h"

namespace boxlift {

/// The workers that nobody is using. Starts them ahead, so that nobody waits for a start; ends what
/// is too many. Any thread.
///
/// Note: [who starts workers] A worker ends with the thread that started it. So one thread starts
/// them all, which lives as long as the stock.
class WorkerStock {
public:
    explicit WorkerStock(std::filesystem::path program);
    /// Ends the workers in it.
    ~WorkerStock();
    WorkerStock(const WorkerStock&) = delete;
    WorkerStock& operator=(const WorkerStock&) = delete;

    /// A worker for the caller alone. Throws std::system_error when none can be started.
    std::unique_ptr<WorkerProcess> take(worker::Role role);
    /// One that has done well and can be used again.
    void giveBack(std::unique_ptr<WorkerProcess> worker);
    /// Starts one, if none is waiting, before it is needed.
    void prepare(worker::Role role);

private:
    using Start = std::promise<std::unique_ptr<WorkerProcess>>;

    struct Order {
        worker::Role role;
        /// Who waits for it; without one it is for the stock.
        std::unique_ptr<Start> start;
    };

    std::unique_ptr<WorkerProcess> takeWaiting(worker::Role role);
    void place(Order order);
    void startAll(const std::stop_token& stop);
    std::optional<Order> nextOrder(const std::stop_token& stop);
    void fill(Order order);
    std::vector<std::unique_ptr<WorkerProcess>> takeSurplus();

    const std::filesystem::path m_program;
    std::mutex m_mutex;
    std::condition_variable_any m_changed;
    std::deque<Order> m_orders;
    std::vector<std::unique_ptr<WorkerProcess>> m_waiting;
    std::jthread m_thread;
};

} // namespace boxlift
