#include "queue/job.h"

#include <chrono>
#include <thread>

#include "model/cancelled.h"
#include "queue/job_fixture.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using test::Gate;
using test::JobLog;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

/// The reports of a conversion on their way to the job.
class JobProgress : public test::JobFixture {};

TEST_F(JobProgress, PublishesReportsOnTheMainThread) {
    const auto mainThread = std::this_thread::get_id();
    std::vector<std::thread::id> threads;
    Gate gate;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto& stop) {
        std::thread([&] { progress(0.25); }).join();
        gate.pass(stop);
        return Mode::boxlift;
    });
    QObject::connect(job.get(), &Job::progressChanged,
                     [&] { threads.push_back(std::this_thread::get_id()); });
    runToGate(*job, gate);

    EXPECT_TRUE(spinUntil([&] { return job->progress() == 0.25; }));
    EXPECT_THAT(threads, ElementsAre(mainThread));
    gate.open();
    EXPECT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
}

TEST_F(JobProgress, DropsReportsThatComeAfterItsEnd) {
    Converter::Progress late;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto&) {
        late = progress;
        return Mode::boxlift;
    });
    run(*job);
    const JobLog log(*job);
    late(0.5);
    spinFor(250ms);

    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_EQ(job->progress(), 1.0);
}

TEST_F(JobProgress, DropsReportsOfAnEarlierRun) {
    Converter::Progress late;
    Gate gate;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto&) -> Mode {
        late = progress;
        throw Cancelled();
    });
    run(*job);
    m_engine.converts(job->path(), [&](const auto&, const auto&, const auto& stop) {
        gate.pass(stop);
        return Mode::boxlift;
    });
    runToGate(*job, gate);
    late(0.5);
    spinFor(250ms);

    EXPECT_EQ(job->progress(), 0.0);
    gate.open();
    EXPECT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
}

TEST_F(JobProgress, IsNotKeptAliveByReports) {
    Converter::Progress late;
    auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto&) {
        late = progress;
        return Mode::boxlift;
    });
    run(*job);
    const std::weak_ptr<Job> weak = job;
    job.reset();

    EXPECT_TRUE(weak.expired());
    late(0.5);
    spinFor(50ms);
}

TEST_F(JobProgress, PublishesAtMostTenReportsASecond) {
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [](const auto&, const auto& progress, const auto&) {
        for (int i = 1; i < 500; ++i) {
            progress(i / 500.0);
            std::this_thread::sleep_for(1ms);
        }
        progress(1.0);
        return Mode::boxlift;
    });
    const QSignalSpy spy(job.get(), &Job::progressChanged);
    const auto start = std::chrono::steady_clock::now();
    run(*job);
    const auto elapsed = std::chrono::steady_clock::now() - start;

    // The first and the last besides those of the intervals.
    EXPECT_LE(spy.count(), 2 + elapsed / 100ms);
    EXPECT_GE(spy.count(), 4);
    EXPECT_EQ(job->progress(), 1.0);
}

} // namespace
} // namespace boxlift
