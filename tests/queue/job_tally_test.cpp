#include "queue/job_tally.h"

#include "model/convert_error.h"
#include "queue/job_fixture.h"

namespace boxlift {
namespace {

using test::Gate;
using test::spinUntil;

class JobTallyTest : public test::JobFixture {
protected:
    void expectCounts(int pending, int done) const {
        EXPECT_EQ(m_tally.pendingCount(), pending);
        EXPECT_EQ(m_tally.doneCount(), done);
    }

    JobTally m_tally;
    const QSignalSpy m_pendingSpy{&m_tally, &JobTally::pendingCountChanged};
    const QSignalSpy m_doneSpy{&m_tally, &JobTally::hasDoneChanged};
};

TEST_F(JobTallyTest, CountsNothingAtFirst) {
    expectCounts(0, 0);
}

TEST_F(JobTallyTest, CountsJobsAsTheyAreWhenItBeginsToWatch) {
    const std::shared_ptr<Job> jobs[] = {
        makeReadyJob("a.mov"), makeDoneJob("b.mov"), makeFailedJob("c.mov", "It broke."),
        makeJob("d.mov"), makeReadyJob("e.mov", {.target = Target::aac}, test::silentInfo())};
    for (const auto& job : jobs)
        m_tally.watch(*job);

    expectCounts(2, 1);
}

TEST_F(JobTallyTest, FollowsAJobFromItsAnalysisToItsEnd) {
    Gate gate;
    const auto job = makeJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto&, const auto& stop) {
        gate.pass(stop);
        return Mode::boxlift;
    });
    m_tally.watch(*job);
    expectCounts(0, 0);
    analyze(*job);
    expectCounts(1, 0);
    runToGate(*job, gate);
    expectCounts(0, 0);
    gate.open();
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
    expectCounts(0, 1);
    job->setSize(SizeOption::p720);
    expectCounts(1, 0);
    job->setTarget(Target::m4a);
    expectCounts(1, 0);
    EXPECT_EQ(m_pendingSpy.count(), 3);
    EXPECT_EQ(m_doneSpy.count(), 2);
}

TEST_F(JobTallyTest, FollowsABlocker) {
    const auto job = makeReadyJob("a.mov", {}, test::silentInfo());
    m_tally.watch(*job);
    job->setTarget(Target::m4a);
    expectCounts(0, 0);
    job->setTarget(Target::mov);
    expectCounts(1, 0);
}

TEST_F(JobTallyTest, CountsAFailedJobAgain) {
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("It broke.");
    });
    m_tally.watch(*job);
    run(*job);

    expectCounts(1, 0);
}

TEST_F(JobTallyTest, TellsOfTheFirstDoneJobAndOfTheLastAlone) {
    const auto a = makeDoneJob("a.mov");
    const auto b = makeDoneJob("b.mov");
    m_tally.watch(*a);
    m_tally.watch(*b);
    EXPECT_EQ(m_doneSpy.count(), 1);

    m_tally.forget(*a);
    EXPECT_EQ(m_doneSpy.count(), 1);
    m_tally.forget(*b);
    EXPECT_EQ(m_doneSpy.count(), 2);
    expectCounts(0, 0);
}

TEST_F(JobTallyTest, DoesNotCountAJobThatItForgot) {
    const auto job = makeReadyJob("a.mov");
    m_tally.watch(*job);
    m_tally.forget(*job);
    expectCounts(0, 0);
    run(*job);

    expectCounts(0, 0);
    EXPECT_EQ(m_pendingSpy.count(), 2);
}

TEST_F(JobTallyTest, TellsOfAChangeWhenTheNewCountsStand) {
    const auto job = makeReadyJob("a.mov");
    std::vector<int> counts;
    QObject::connect(&m_tally, &JobTally::pendingCountChanged,
                     [&] { counts.push_back(m_tally.pendingCount()); });
    m_tally.watch(*job);
    run(*job);

    EXPECT_THAT(counts, testing::ElementsAre(1, 0));
}

} // namespace
} // namespace boxlift
