#include "queue/queue.h"

#include <atomic>
#include <thread>

#include "model/convert_error.h"
#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::Gate;
using test::spinFor;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

class QueueRun : public test::QueueFixture {};

TEST_F(QueueRun, OfAllConvertsReadyAndFailedJobsInTheirOrder) {
    const auto blocked = addReady("blocked.mov", test::silentInfo());
    blocked->setTarget(Target::m4a);
    const auto done = addDone("done.mov");
    const auto failed = addFailed("failed.mov");
    const auto ready = addReady("ready.mov");
    const auto doneBefore = done->state();
    const std::size_t before = converted().size();
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    auto names = converted();
    names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_THAT(names, ElementsAre("failed.mov", "ready.mov"));
    EXPECT_EQ(blocked->state(), Job::State(Ready{}));
    EXPECT_EQ(done->state(), doneBefore);
    EXPECT_EQ(failed->stateKind(), Job::StateKind::Done);
    EXPECT_EQ(ready->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueRun, IsRunningAtOnceAndBeginsInALaterTurn) {
    const auto job = addReady("a.mov");
    queue().startAll();
    EXPECT_TRUE(queue().isRunning());
    EXPECT_EQ(job->state(), Job::State(Ready{}));

    EXPECT_TRUE(spinUntilIdle());
    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueRun, IsOneRunWhenItIsStartedTwice) {
    addReady("a.mov");
    addReady("b.mov");
    const QSignalSpy running(&queue(), &Queue::isRunningChanged);
    const QSignalSpy tasks(&queue(), &Queue::taskChanged);
    queue().startAll();
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());
    spinFor(20ms);

    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
    EXPECT_EQ(running.count(), 2);
    EXPECT_EQ(tasks.count(), 1);
}

TEST_F(QueueRun, IsShortWhenThereIsNothingToConvert) {
    addDone("a.mov");
    const QSignalSpy running(&queue(), &Queue::isRunningChanged);
    queue().startAll();
    EXPECT_TRUE(queue().isRunning());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(running.count(), 2);
    EXPECT_THAT(converted(), ElementsAre("a.mov"));
}

TEST_F(QueueRun, TakesTheListAsItIsWhenItsFirstTurnComes) {
    const auto a = addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    queue().remove(a.get());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("b.mov"));
}

TEST_F(QueueRun, DoesNotTakeFilesThatAreAddedMeanwhile) {
    Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    EXPECT_EQ(queue().pendingCount(), 0);
    const auto late = addReady("b.mov");
    EXPECT_EQ(queue().pendingCount(), 1);
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("a.mov"));
    EXPECT_EQ(late->state(), Job::State(Ready{}));
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueRun, SkipsAJobThatIsStillAnalyzedWhenItsTurnComes) {
    Gate analysis;
    m_engine.analyzes(input("a.mov"), [&](const auto& stop) {
        analysis.pass(stop);
        return test::filmInfo();
    });
    const auto slow = add("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("b.mov"));
    EXPECT_EQ(slow->state(), Job::State(Analyzing{}));
    analysis.open();
    EXPECT_TRUE(spinUntilAnalyzed());
}

TEST_F(QueueRun, TakesAJobWhoseAnalysisEndsBeforeItsTurn) {
    Gate conversion;
    Gate analysis;
    holdAt("a.mov", conversion);
    m_engine.analyzes(input("b.mov"), [&](const auto& stop) {
        analysis.pass(stop);
        return test::filmInfo();
    });
    addReady("a.mov");
    add("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(conversion));
    analysis.open();
    ASSERT_TRUE(spinUntil([&] { return queue().pendingCount() == 1; }));
    conversion.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueRun, TakesAJobOfItsListThatWasRemovedMeanwhile) {
    Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    const auto removed = addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    queue().remove(removed.get());
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
    EXPECT_EQ(removed->stateKind(), Job::StateKind::Done);
    EXPECT_THAT(names(), ElementsAre("a.mov"));
}

TEST_F(QueueRun, PassesAJobThatIsBlockedWhenItsTurnComes) {
    Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    const auto silent = addReady("b.mov", test::silentInfo());
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    silent->setTarget(Target::m4a);
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("a.mov"));
}

TEST_F(QueueRun, ReadsTheOutputFolderForEachJob) {
    Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    queue().setOutputDir(m_folder.path() / "elsewhere");
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_engine.conversions().at(0).output, output("a.mp4"));
    EXPECT_EQ(m_engine.conversions().at(1).output, m_folder.path() / "elsewhere" / "b.mp4");
}

TEST_F(QueueRun, GoesOnAfterAFailure) {
    const auto bad = addReady("a.mov");
    m_engine.converts(bad->path(), [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("It broke.");
    });
    const auto good = addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(bad->state(), Job::State(Failed{"It broke."}));
    EXPECT_EQ(good->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueRun, ConvertsOneAtATime) {
    std::atomic<int> now = 0;
    std::atomic<int> most = 0;
    for (int i = 0; i < 20; ++i) {
        const auto job = addReady(std::to_string(i));
        m_engine.converts(job->path(), [&](const auto&, const auto&, const auto&) {
            most = std::max(most.load(), ++now);
            std::this_thread::sleep_for(1ms);
            --now;
            return Mode::boxlift;
        });
    }
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(most, 1);
    EXPECT_EQ(converted().size(), 20u);
}

TEST_F(QueueRun, GivesTwoFilesOfOneNameTwoOutputs) {
    addReady("x/a.mov");
    addReady("y/a.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_engine.conversions().at(0).output, output("a.mp4"));
    EXPECT_EQ(m_engine.conversions().at(1).output, output("a 2.mp4"));
}

TEST_F(QueueRun, OfOneJobLeavesTheOthersAlone) {
    const auto a = addReady("a.mov");
    const auto b = addReady("b.mov");
    queue().convert(b.get());
    EXPECT_TRUE(queue().isRunning());
    EXPECT_EQ(b->state(), Job::State(Ready{}));
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(converted(), ElementsAre("b.mov"));
    EXPECT_EQ(a->state(), Job::State(Ready{}));
}

TEST_F(QueueRun, OfOneJobIsRefusedDuringARun) {
    Gate gate;
    holdAt("a.mov", gate);
    const auto a = addReady("a.mov");
    const auto b = addReady("b.mov");
    queue().convert(a.get());
    const Task* task = queue().task();
    queue().convert(b.get());
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    queue().convert(b.get());
    queue().startAll();
    EXPECT_EQ(queue().task(), task);
    gate.open();
    ASSERT_TRUE(spinUntilIdle());
    spinFor(20ms);

    EXPECT_THAT(converted(), ElementsAre("a.mov"));
    EXPECT_EQ(b->state(), Job::State(Ready{}));
}

TEST_F(QueueRun, OfOneJobIsRefusedWhenItCannotBeConverted) {
    const auto done = addDone("a.mov");
    const auto blocked = addReady("b.mov", test::silentInfo());
    blocked->setTarget(Target::aac);
    const QSignalSpy running(&queue(), &Queue::isRunningChanged);
    queue().convert(done.get());
    queue().convert(blocked.get());
    queue().convert(add("c.mov").get());
    queue().convert(nullptr);

    EXPECT_FALSE(queue().isRunning());
    EXPECT_EQ(running.count(), 0);
}

TEST_F(QueueRun, OfOneJobRetriesAFailedOne) {
    const auto job = addFailed("a.mov");
    convert(*job);

    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueRun, OfOneJobTakesSettingsAndFolderOfItsFirstTurn) {
    const auto job = addReady("a.mov");
    queue().convert(job.get());
    job->setTarget(Target::mov);
    queue().setOutputDir(m_folder.path() / "elsewhere");
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(m_engine.conversions().at(0).output, m_folder.path() / "elsewhere" / "a.mov");
}

TEST_F(QueueRun, LeavesItsTaskInPlaceAndTheNextHasAnother) {
    addReady("a.mov");
    queue().startAll();
    Task* first = queue().task();
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(queue().task(), first);
    first->cancel();

    addReady("b.mov");
    queue().startAll();
    EXPECT_FALSE(queue().task()->isCancelled());
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueRun, DoesNotComeBackToAJobThatIsReadyAgain) {
    Gate gate;
    holdAt("b.mov", gate);
    const auto a = addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    a->setSize(SizeOption::p720);
    gate.open();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(a->state(), Job::State(Ready{}));
    EXPECT_THAT(converted(), ElementsAre("a.mov", "b.mov"));
}

TEST_F(QueueRun, IsOverBeforeItSaysSo) {
    addReady("a.mov");
    std::vector<bool> values;
    QObject::connect(&queue(), &Queue::isRunningChanged,
                     [&] { values.push_back(queue().isRunning()); });
    queue().startAll();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(values, ElementsAre(true, false));
}

TEST_F(QueueRun, CountsItsJobs) {
    addDone("done.mov");
    addFailed("failed.mov");
    addReady("ready.mov");
    m_engine.converts(input("failed.mov"),
                      [](const auto&...) -> Mode { throw ConvertError("no"); });
    std::vector<std::string> current;
    QObject::connect(&queue(), &Queue::runAdvanced, &queue(), [&] {
        EXPECT_EQ(queue().runCounts().planned, 2);
        current.push_back(queue().current()->path().filename().string());
    });
    queue().startAll();
    EXPECT_EQ(queue().runCounts(), RunCounts());
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_THAT(current, ElementsAre("failed.mov", "ready.mov"));
    EXPECT_EQ(queue().runCounts(), (RunCounts{.planned = 2, .done = 1, .failed = 1}));
    EXPECT_EQ(queue().current(), nullptr);
}

TEST_F(QueueRun, CountsNothingOfAJobThatWasStopped) {
    Gate gate;
    holdAt("a.mov", gate);
    addReady("a.mov");
    addReady("b.mov");
    queue().startAll();
    ASSERT_TRUE(spinUntilReached(gate));
    queue().task()->cancel();
    ASSERT_TRUE(spinUntilIdle());

    EXPECT_EQ(queue().runCounts(), (RunCounts{.planned = 2}));
}

} // namespace
} // namespace boxlift
