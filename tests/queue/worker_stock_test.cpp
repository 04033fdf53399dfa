#include "queue/worker_stock.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

namespace boxlift {
namespace {

using std::chrono_literals::operator""ms;
using worker::Role;

bool isAlive(pid_t id) {
    return ::kill(id, 0) == 0;
}

class WorkerStockTest : public testing::Test {
protected:
    WorkerStock m_stock{BOXLIFT_FAKE_WORKER};
};

} // namespace

TEST_F(WorkerStockTest, GivesOutWorkersOfTheRoleThatIsAskedFor) {
    const auto analysis = m_stock.take(Role::analysis);
    const auto conversion = m_stock.take(Role::conversion);
    EXPECT_EQ(analysis->role(), Role::analysis);
    EXPECT_EQ(conversion->role(), Role::conversion);
    EXPECT_NE(analysis->id(), conversion->id());
}

TEST_F(WorkerStockTest, GivesOutAgainWhatWasGivenBack) {
    auto worker = m_stock.take(Role::analysis);
    const pid_t id = worker->id();
    m_stock.giveBack(std::move(worker));
    EXPECT_NE(m_stock.take(Role::conversion)->id(), id);
    EXPECT_EQ(m_stock.take(Role::analysis)->id(), id);
}

TEST_F(WorkerStockTest, DoesNotGiveOutTheDead) {
    auto worker = m_stock.take(Role::analysis);
    const pid_t id = worker->id();
    m_stock.giveBack(std::move(worker));
    ::kill(id, SIGKILL);
    std::this_thread::sleep_for(100ms);
    const auto other = m_stock.take(Role::analysis);
    EXPECT_NE(other->id(), id);
    EXPECT_TRUE(isAlive(other->id()));
}

TEST_F(WorkerStockTest, EndsWorkersThatAreThrownAway) {
    auto worker = m_stock.take(Role::analysis);
    const pid_t id = worker->id();
    ASSERT_TRUE(isAlive(id));
    worker.reset();
    EXPECT_FALSE(isAlive(id));
}

TEST(WorkerStock, EndsWhatIsInItAndWhatItHasStarted) {
    auto stock = std::make_unique<WorkerStock>(BOXLIFT_FAKE_WORKER);
    auto kept = stock->take(Role::analysis);
    auto returned = stock->take(Role::analysis);
    const pid_t id = returned->id();
    stock->giveBack(std::move(returned));
    stock->prepare(Role::conversion);
    stock.reset();
    EXPECT_FALSE(isAlive(id));
}

TEST(WorkerStock, ThrowsWhenThereIsNoWorker) {
    WorkerStock stock("/nowhere/boxlift-worker");
    EXPECT_THROW(stock.take(Role::analysis), std::system_error);
    stock.prepare(Role::analysis);
    EXPECT_THROW(stock.take(Role::conversion), std::system_error);
}

} // namespace boxlift
