#include "queue/queue.h"

#include "model/convert_error.h"
#include "queue/queue_fixture.h"

namespace boxlift {
namespace {

using test::Gate;
using test::spinUntil;
using testing::ElementsAre;

/// Tidying the list and the two summaries of it.
class QueueList : public test::QueueFixture {};

TEST_F(QueueList, LosesDoneJobsAloneWhenItIsCleared) {
    Gate conversion;
    Gate analysis;
    addDone("done1.mov");
    addFailed("failed.mov");
    addReady("ready.mov");
    addDone("done2.mov");
    holdAt("converting.mov", conversion);
    m_engine.analyzes(input("analyzing.mov"), [&](const auto& stop) {
        analysis.pass(stop);
        return test::filmInfo();
    });
    const auto converting = addReady("converting.mov");
    add("analyzing.mov");
    queue().convert(converting.get());
    ASSERT_TRUE(spinUntilReached(conversion));
    queue().clearFinished();

    EXPECT_THAT(names(), ElementsAre("failed.mov", "ready.mov", "converting.mov", "analyzing.mov"));
    EXPECT_FALSE(queue().task()->isCancelled());
    EXPECT_FALSE(queue().hasFinished());
    conversion.open();
    analysis.open();
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(converting->stateKind(), Job::StateKind::Done);
    EXPECT_TRUE(spinUntilAnalyzed());
}

TEST_F(QueueList, HasFinishedWhileAJobIsDone) {
    const QSignalSpy spy(&queue(), &Queue::hasFinishedChanged);
    const auto job = addDone("a.mov");
    EXPECT_TRUE(queue().hasFinished());
    EXPECT_EQ(spy.count(), 1);
    job->setSize(SizeOption::p720);
    EXPECT_FALSE(queue().hasFinished());
    convert(*job);
    EXPECT_TRUE(queue().hasFinished());
    queue().remove(job.get());
    EXPECT_FALSE(queue().hasFinished());
    EXPECT_EQ(spy.count(), 4);
}

TEST_F(QueueList, CountsAsPendingWhatCanBeConverted) {
    Gate gate;
    EXPECT_EQ(queue().pendingCount(), 0);
    addFailed("failed.mov");
    EXPECT_EQ(queue().pendingCount(), 1);
    const auto ready = addReady("ready.mov");
    EXPECT_EQ(queue().pendingCount(), 2);
    addDone("done.mov");
    EXPECT_EQ(queue().pendingCount(), 2);
    const auto silent = addReady("silent.mov", test::silentInfo());
    EXPECT_EQ(queue().pendingCount(), 3);
    silent->setTarget(Target::m4a);
    EXPECT_EQ(queue().pendingCount(), 2);
    m_engine.analyzes(input("bad.mov"),
                      [](const auto&) -> MediaInfo { throw ConvertError("No."); });
    addAnalyzed("bad.mov");
    EXPECT_EQ(queue().pendingCount(), 2);

    holdAt("ready.mov", gate);
    queue().convert(ready.get());
    ASSERT_TRUE(spinUntilReached(gate));
    EXPECT_EQ(queue().pendingCount(), 1);
    queue().remove(ready.get());
    ASSERT_TRUE(spinUntilIdle());
    EXPECT_EQ(queue().pendingCount(), 1);
}

TEST_F(QueueList, LosesAJobOfAnyState) {
    for (const auto& job : {addDone("a.mov"), addFailed("b.mov"), addReady("c.mov"), add("d.mov")})
        queue().remove(job.get());

    EXPECT_TRUE(names().empty());
    EXPECT_EQ(queue().pendingCount(), 0);
    EXPECT_FALSE(queue().hasFinished());
}

TEST_F(QueueList, KeepsTheOrderOfTheOthers) {
    for (const char* name : {"a", "b", "c", "d"})
        add(name);
    queue().remove(queue().jobs().at(1).get());

    EXPECT_THAT(names(), ElementsAre("a", "c", "d"));
}

class QueueDefaults : public test::QueueFixture {
protected:
    void setDefaults(Target target, SizeOption size, bool removeAudio) {
        queue().setDefaultTarget(target);
        queue().setDefaultSize(size);
        queue().setDefaultRemoveAudio(removeAudio);
    }

    static JobSettings settingsOf(const Job& job) {
        return {job.target(), job.size(), job.removeAudio()};
    }
};

TEST_F(QueueDefaults, AreTakenByAllJobsThatAreNotConverting) {
    Gate gate;
    holdAt("converting.mov", gate);
    const auto ready = addReady("ready.mov");
    const auto done = addDone("done.mov");
    const auto failed = addFailed("failed.mov");
    const auto converting = addReady("converting.mov");
    const auto analyzing = add("analyzing.mov");
    queue().convert(converting.get());
    ASSERT_TRUE(spinUntilReached(gate));
    setDefaults(Target::mov, SizeOption::p1080, true);
    queue().applyDefaultsToAll();

    const JobSettings wanted{Target::mov, SizeOption::p1080, true};
    for (const auto& job : {ready, done, failed, analyzing})
        EXPECT_EQ(settingsOf(*job), wanted) << job->path();
    EXPECT_EQ(settingsOf(*converting), JobSettings());
    EXPECT_EQ(converting->state(), Job::State(Converting{}));
    EXPECT_EQ(done->state(), Job::State(Ready{}));
    EXPECT_EQ(done->progress(), 0.0);
    EXPECT_EQ(failed->state(), Job::State(Failed{"It broke."}));
    gate.open();
    EXPECT_TRUE(spinUntilIdle());
}

TEST_F(QueueDefaults, MakeADoneJobReadyEvenWhenTheyAreTheSame) {
    const auto done = addDone("a.mov");
    queue().applyDefaultsToAll();

    EXPECT_EQ(done->state(), Job::State(Ready{}));
    EXPECT_EQ(done->progress(), 0.0);
    EXPECT_FALSE(queue().hasFinished());
    EXPECT_EQ(queue().pendingCount(), 1);
}

TEST_F(QueueDefaults, LeaveASongOnM4aUnderAVideoDefault) {
    const auto done = addDone("song.wav", test::songInfo());
    queue().applyDefaultsToAll();

    EXPECT_EQ(done->target(), Target::m4a);
    EXPECT_EQ(done->state(), Job::State(Ready{}));
    EXPECT_EQ(done->blocker(), std::nullopt);
}

TEST_F(QueueDefaults, GiveASongAnAudioDefault) {
    const auto song = addReady("song.wav", test::songInfo());
    setDefaults(Target::aac, SizeOption::original, false);
    queue().applyDefaultsToAll();
    EXPECT_EQ(song->target(), Target::aac);

    setDefaults(Target::mov, SizeOption::original, false);
    queue().applyDefaultsToAll();
    EXPECT_EQ(song->target(), Target::m4a);
}

TEST_F(QueueDefaults, BlockASilentFilmUnderAnAudioDefault) {
    const auto silent = addReady("a.mov", test::silentInfo());
    setDefaults(Target::m4a, SizeOption::original, false);
    queue().applyDefaultsToAll();

    EXPECT_EQ(silent->target(), Target::m4a);
    EXPECT_EQ(silent->blocker(), "This file has no audio track to extract.");
    EXPECT_EQ(queue().pendingCount(), 0);
}

TEST_F(QueueDefaults, AreAssignedInTheOrderTargetSizeAudio) {
    const auto job = addReady("a.mov");
    std::vector<std::string> order;
    QObject::connect(job.get(), &Job::targetChanged, [&] { order.emplace_back("target"); });
    QObject::connect(job.get(), &Job::sizeChanged, [&] { order.emplace_back("size"); });
    QObject::connect(job.get(), &Job::removeAudioChanged, [&] { order.emplace_back("audio"); });
    setDefaults(Target::mov, SizeOption::p720, true);
    queue().applyDefaultsToAll();

    EXPECT_THAT(order, ElementsAre("target", "size", "audio"));
}

TEST_F(QueueDefaults, ReachASongThatIsStillAnalyzedWithItsSwitch) {
    Gate gate;
    m_engine.analyzes(input("song.wav"), [&](const auto& stop) {
        gate.pass(stop);
        return test::songInfo();
    });
    const auto song = add("song.wav");
    setDefaults(Target::mov, SizeOption::p720, true);
    queue().applyDefaultsToAll();
    EXPECT_EQ(song->target(), Target::mov);

    gate.open();
    ASSERT_TRUE(spinUntilAnalyzed());
    EXPECT_EQ(song->target(), Target::m4a);
}

} // namespace
} // namespace boxlift
