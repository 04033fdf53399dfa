#include "queue/queue.h"

#include "queue/file_url.h"
#include "queue/property_mirror.h"
#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

using testing::IsEmpty;

class QueueTest : public test::QueueFixture {};

TEST_F(QueueTest, BeginsEmptyIdleAndWithTheDefaultsOfTheApplication) {
    EXPECT_THAT(queue().jobs(), IsEmpty());
    EXPECT_FALSE(queue().isRunning());
    EXPECT_EQ(queue().defaultTarget(), Target::mp4);
    EXPECT_EQ(queue().defaultSize(), SizeOption::original);
    EXPECT_FALSE(queue().defaultRemoveAudio());
    EXPECT_EQ(queue().task(), nullptr);
    EXPECT_FALSE(queue().hasFinished());
    EXPECT_EQ(queue().pendingCount(), 0);
}

TEST_F(QueueTest, HasAConstantOrASignalForEachProperty) {
    EXPECT_EQ(test::silentProperties(Queue::staticMetaObject), QStringList());
}

TEST_F(QueueTest, GivesItsJobsAsAList) {
    const auto job = add("a.mov");
    auto* list = queue().property("jobs").value<JobList*>();

    ASSERT_EQ(list, queue().jobList());
    EXPECT_EQ(list->data(list->index(0), JobList::jobRole).value<Job*>(), job.get());
}

TEST_F(QueueTest, SetsDefaultsByTheirPositions) {
    const test::PropertyMirror mirror(queue());
    for (std::size_t i = 0; i < allTargets.size(); ++i) {
        queue().setProperty("defaultTarget", static_cast<int>(i));
        EXPECT_EQ(queue().defaultTarget(), allTargets.at(i));
        EXPECT_EQ(queue().property("defaultTargetIsAudio"), isAudio(allTargets.at(i)));
        EXPECT_EQ(mirror.outdated(), QStringList());
    }
    for (std::size_t i = 0; i < allSizeOptions.size(); ++i) {
        queue().setProperty("defaultSize", static_cast<int>(i));
        EXPECT_EQ(queue().defaultSize(), allSizeOptions.at(i));
        EXPECT_EQ(mirror.outdated(), QStringList());
    }
    queue().setProperty("defaultRemoveAudio", true);
    EXPECT_TRUE(queue().defaultRemoveAudio());
    EXPECT_EQ(mirror.outdated(), QStringList());
}

TEST_F(QueueTest, TakesNoPositionOutsideOfTheLists) {
    for (const int index : {-1, 4, 1000}) {
        queue().setProperty("defaultTarget", index);
        queue().setProperty("defaultSize", index);
    }

    EXPECT_EQ(queue().defaultTarget(), Target::mp4);
    EXPECT_EQ(queue().defaultSize(), SizeOption::original);
}

TEST_F(QueueTest, LeavesJobsAloneWhenADefaultIsSet) {
    const auto ready = addReady("a.mov");
    const auto done = addDone("b.mov");
    queue().setDefaultTarget(Target::mov);
    queue().setDefaultSize(SizeOption::p720);
    queue().setDefaultRemoveAudio(true);

    for (const auto& job : {ready, done}) {
        EXPECT_EQ(job->target(), Target::mp4);
        EXPECT_EQ(job->size(), SizeOption::original);
        EXPECT_FALSE(job->removeAudio());
    }
    EXPECT_EQ(done->stateKind(), Job::StateKind::Done);
}

TEST_F(QueueTest, TellsOfEachChangeOfARun) {
    test::Gate gate;
    holdAt("b.mov", gate);
    const test::PropertyMirror mirror(queue());
    addReady("a.mov");
    addReady("b.mov");
    EXPECT_EQ(mirror.outdated(), QStringList());
    queue().startAll();
    EXPECT_EQ(mirror.outdated(), QStringList());
    ASSERT_TRUE(spinUntilReached(gate));
    EXPECT_EQ(mirror.outdated(), QStringList());
    EXPECT_EQ(queue().property("hasFinished"), true);
    gate.open();
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(mirror.outdated(), QStringList());
    queue().startAll();
    queue().clearFinished();
    EXPECT_EQ(mirror.outdated(), QStringList());
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(mirror.outdated(), QStringList());
}

} // namespace
} // namespace boxlift
