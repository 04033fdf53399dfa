#include "queue/worker_stock.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "engine/media/error.h"
#include "engine/media/thread_name.h"

namespace boxlift {

namespace {

using std::chrono_literals::operator""s;

/// After so long without need one worker of each kind stays.
constexpr auto surplusTime = 10s;

} // namespace

WorkerStock::WorkerStock(std::filesystem::path program)
    : m_program(std::move(program)),
      m_thread([this](const std::stop_token& stop) { startAll(stop); }) {}

WorkerStock::~WorkerStock() = default;

std::unique_ptr<WorkerProcess> WorkerStock::take(worker::Role role) {
    if (auto waiting = takeWaiting(role))
        return waiting;
    auto start = std::make_unique<Start>();
    auto started = start->get_future();
    place({role, std::move(start)});
    return started.get();
}

std::unique_ptr<WorkerProcess> WorkerStock::takeWaiting(worker::Role role) {
    const std::lock_guard lock(m_mutex);
    // The system may have ended one to get at its memory.
    std::erase_if(m_waiting, [](const auto& worker) { return worker->hasEnded(); });
    const auto found = std::ranges::find(m_waiting, role, [](auto& one) { return one->role(); });
    if (found == m_waiting.end())
        return nullptr;
    auto worker = std::move(*found);
    m_waiting.erase(found);
    return worker;
}

void WorkerStock::giveBack(std::unique_ptr<WorkerProcess> worker) {
    const std::lock_guard lock(m_mutex);
    m_waiting.push_back(std::move(worker));
    m_changed.notify_one();
}

void WorkerStock::prepare(worker::Role role) {
    {
        const std::lock_guard lock(m_mutex);
        const bool isThere = std::ranges::any_of(
            m_waiting, [&](const auto& worker) { return worker->role() == role; });
        const bool isOrdered = std::ranges::any_of(
            m_orders, [&](const Order& order) { return order.role == role && !order.start; });
        if (isThere || isOrdered)
            return;
    }
    place({role, nullptr});
}

void WorkerStock::place(Order order) {
    const std::lock_guard lock(m_mutex);
    m_orders.push_back(std::move(order));
    m_changed.notify_one();
}

void WorkerStock::startAll(const std::stop_token& stop) {
    media::setThreadName("boxlift.stock");
    while (!stop.stop_requested()) {
        if (auto order = nextOrder(stop))
            fill(std::move(*order));
        else
            takeSurplus();
    }
}

/// Nothing when there has long been more than is needed, or a stop was asked for.
std::optional<WorkerStock::Order> WorkerStock::nextOrder(const std::stop_token& stop) {
    const auto isOrdered = [this] { return !m_orders.empty(); };
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, stop,
                   [&] { return isOrdered() || m_waiting.size() > worker::allRoles.size(); });
    if (!m_changed.wait_for(lock, stop, surplusTime, isOrdered))
        return std::nullopt;
    Order order = std::move(m_orders.front());
    m_orders.pop_front();
    return order;
}

void WorkerStock::fill(Order order) {
    try {
        auto worker = WorkerProcess::start(m_program, order.role);
        if (order.start)
            order.start->set_value(std::move(worker));
        else
            giveBack(std::move(worker));
    } catch (const std::exception& error) {
        // Who needs a worker that nobody waits for yet will try again.
        if (order.start)
            order.start->set_exception(std::current_exception());
        else
            media::logError(error);
    }
}

/// Those that stay are the first of their kind.
std::vector<std::unique_ptr<WorkerProcess>> WorkerStock::takeSurplus() {
    const std::lock_guard lock(m_mutex);
    std::vector<std::unique_ptr<WorkerProcess>> surplus;
    for (const worker::Role role : worker::allRoles) {
        bool isFirst = true;
        for (auto& worker : m_waiting)
            if (worker && worker->role() == role && !std::exchange(isFirst, false))
                surplus.push_back(std::move(worker));
    }
    std::erase(m_waiting, nullptr);
    return surplus;
}

} // namespace boxlift
