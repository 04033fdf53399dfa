#include "queue/queue.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "queue/file_url.h"
#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

using namespace std::chrono_literals;
using test::Gate;
using test::spinFor;
using test::spinUntil;
using testing::IsEmpty;
using testing::Le;
using testing::Lt;
using testing::SizeIs;

/// What the end of the application meets: whatever goes on is stopped and waited for.
class QueueEnd : public test::QueueFixture {
protected:
    /// Ends the queue; nothing holds its jobs any more.
    void expectNothingLeft() {
        std::vector<std::weak_ptr<Job>> jobs(queue().jobs().begin(), queue().jobs().end());
        endQueue();
        for (const auto& job : jobs)
            EXPECT_TRUE(job.expired());
        spinFor(20ms);
    }

    /// Conversions of the job go on until they are stopped, and then for a while.
    void hangOn(const std::string& name) {
        m_engine.converts(input(name), [this](const auto&, const auto& progress, const auto& stop) {
            progress(0.5);
            try {
                m_never.pass(stop);
            } catch (const Cancelled&) {
                std::this_thread::sleep_for(20ms);
                progress(0.75);
                m_hasEnded = true;
                throw;
            }
            return Mode::boxlift;
        });
    }

    Gate m_never;
    std::atomic<bool> m_hasEnded = false;
};

TEST_F(QueueEnd, OfAnEmptyQueueIsQuiet) {
    expectNothingLeft();
}

TEST_F(QueueEnd, StopsARunAndWaitsForIt) {
    hangOn("a.mov");
    addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(m_never));
    expectNothingLeft();

    EXPECT_TRUE(m_hasEnded);
    EXPECT_THAT(m_engine.conversions(), SizeIs(1));
}

TEST_F(QueueEnd, StopsTheRunOfOneJobAndWaitsForIt) {
    hangOn("a.mov");
    queue().convert(addReady("a.mov").get());
    ASSERT_TRUE(spinUntilReached(m_never));
    expectNothingLeft();

    EXPECT_TRUE(m_hasEnded);
}

TEST_F(QueueEnd, WaitsForARunningJobThatWasRemoved) {
    hangOn("a.mov");
    auto job = addReady("a.mov");
    const std::weak_ptr<Job> weak = job;
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().remove(job.get());
    job.reset();
    expectNothingLeft();

    EXPECT_TRUE(m_hasEnded);
    EXPECT_TRUE(weak.expired());
}

TEST_F(QueueEnd, BeginsNoRunThatHadNotBegun) {
    addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    expectNothingLeft();

    EXPECT_THAT(m_engine.conversions(), IsEmpty());
}

TEST_F(QueueEnd, BeginsNoRunOfOneJobThatHadNotBegun) {
    queue().convert(addReady("a.mov").get());
    expectNothingLeft();

    EXPECT_THAT(m_engine.conversions(), IsEmpty());
}

TEST_F(QueueEnd, BeginsNoAnalysisThatHadNotBegun) {
    queue().addPaths({input("a.mov"), input("b.mov")});
    expectNothingLeft();

    EXPECT_THAT(m_engine.analyses(), IsEmpty());
}

TEST_F(QueueEnd, StopsAnalysesAndDropsThoseThatWait) {
    std::atomic<unsigned> begun = 0;
    std::vector<std::filesystem::path> paths;
    for (int i = 0; i < 1000; ++i) {
        paths.push_back(input(std::to_string(i)));
        m_engine.analyzes(paths.back(), [this, &begun](const auto& stop) {
            // A thread may still take one between the stop and its own end.
            begun += stop.stop_requested() ? 0 : 1;
            m_never.pass(stop);
            return test::filmInfo();
        });
    }
    queue().addPaths(paths);
    ASSERT_TRUE(spinUntilReached(m_never));
    spinFor(50ms);
    const auto start = std::chrono::steady_clock::now();
    expectNothingLeft();

    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_THAT(begun.load(), Le(std::thread::hardware_concurrency()));
    EXPECT_THAT(m_engine.analyses().size(), Lt(500u));
}

TEST_F(QueueEnd, StopsAnalysesOfJobsThatWereRemoved) {
    m_engine.analyzes(input("a.mov"), [this](const auto& stop) {
        m_never.pass(stop);
        return test::filmInfo();
    });
    auto job = add("a.mov");
    const std::weak_ptr<Job> weak = job;
    ASSERT_TRUE(spinUntilReached(m_never));
    queue().remove(job.get());
    job.reset();
    expectNothingLeft();

    EXPECT_TRUE(weak.expired());
}

TEST_F(QueueEnd, TakesNoDroppedFileThatArrivesLater) {
    std::function<void(std::optional<QUrl>)> deliver;
    queue().handleDrop({[&](auto given) { deliver = std::move(given); }});
    endQueue();
    deliver(fileUrl(input("a.mov")));
    spinFor(20ms);

    EXPECT_THAT(m_engine.analyses(), IsEmpty());
}

TEST_F(QueueEnd, TakesNoDroppedFileWhoseTurnHadNotCome) {
    queue().handleDrop(QList{fileUrl(input("a.mov"))});
    expectNothingLeft();

    EXPECT_THAT(m_engine.analyses(), IsEmpty());
}

TEST_F(QueueEnd, DropsReportsThatComeLater) {
    Converter::Progress late;
    m_engine.converts(input("a.mov"), [&](const auto&, const auto& progress, const auto&) {
        late = progress;
        return Mode::boxlift;
    });
    convert(*addReady("a.mov"));
    expectNothingLeft();
    late(0.5);
    spinFor(20ms);
}

TEST_F(QueueEnd, ComesWhileReportsAreWaitingForTheirTime) {
    m_engine.converts(input("a.mov"), [&](const auto&, const auto& progress, const auto& stop) {
        for (int i = 0; i < 10; ++i)
            progress(i / 10.0);
        m_never.pass(stop);
        return Mode::boxlift;
    });
    const auto job = addReady("a.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(m_never));
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Converting; }));
    endQueue();
    spinFor(150ms);

    EXPECT_EQ(job->state(), Job::State(Ready{}));
}

TEST_F(QueueEnd, ComesDuringTheDepartureOfRemovedJobs) {
    for (int i = 0; i < 10; ++i)
        add(std::to_string(i));
    ASSERT_TRUE(spinUntilAnalyzed());
    while (!queue().jobs().empty())
        queue().remove(queue().jobs().back().get());
    expectNothingLeft();
}

} // namespace
} // namespace boxlift
