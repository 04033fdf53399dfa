#include "queue/job.h"

#include <thread>

#include <QMetaEnum>

#include "model/convert_error.h"
#include "queue/file_url.h"
#include "queue/job_fixture.h"
#include "queue/property_mirror.h"

namespace boxlift {
namespace {

using test::filmInfo;
using test::Gate;
using test::PropertyMirror;
using test::songInfo;
using test::spinUntil;

class JobProperties : public test::JobFixture {
protected:
    static QVariant read(const Job& job, const char* property) { return job.property(property); }
};

TEST_F(JobProperties, AreConstantOrHaveASignal) {
    EXPECT_EQ(test::silentProperties(Job::staticMetaObject), QStringList());
}

TEST_F(JobProperties, OfANewJobAreEmpty) {
    const auto job = makeJob("a.mov");

    EXPECT_EQ(read(*job, "id"), job->id());
    EXPECT_EQ(read(*job, "url"), fileUrl(input("a.mov")));
    EXPECT_EQ(read(*job, "fileName"), "a.mov");
    EXPECT_EQ(read(*job, "hasInfo"), false);
    EXPECT_EQ(read(*job, "hasVideo"), false);
    EXPECT_EQ(read(*job, "hasAudio"), false);
    EXPECT_EQ(read(*job, "summary"), "");
    EXPECT_EQ(read(*job, "state").value<Job::StateKind>(), Job::StateKind::Analyzing);
    EXPECT_EQ(read(*job, "output"), QUrl());
    EXPECT_EQ(read(*job, "seconds"), 0.0);
    EXPECT_EQ(read(*job, "message"), "");
    EXPECT_EQ(read(*job, "progress"), 0.0);
    EXPECT_EQ(read(*job, "blocker"), "");
    EXPECT_EQ(read(*job, "hasPlan"), false);
    EXPECT_EQ(read(*job, "planDetail"), "");
    EXPECT_EQ(read(*job, "canConvert"), false);
}

TEST_F(JobProperties, TellWhatTheAnalysisFound) {
    const auto job = makeReadyJob("a.mov");

    EXPECT_EQ(read(*job, "hasInfo"), true);
    EXPECT_EQ(read(*job, "hasVideo"), true);
    EXPECT_EQ(read(*job, "hasAudio"), true);
    EXPECT_EQ(read(*job, "summary"), QString::fromStdString(filmInfo().summary()));
    EXPECT_EQ(read(*job, "state").value<Job::StateKind>(), Job::StateKind::Ready);
    EXPECT_EQ(read(*job, "canConvert"), true);
}

TEST_F(JobProperties, TellThePlanOrTheBlocker) {
    const auto job = makeReadyJob("song.wav", {}, songInfo());
    EXPECT_EQ(read(*job, "hasPlan"), true);
    EXPECT_EQ(read(*job, "planMode").value<Job::ModeKind>(), Job::ModeKind::Boxlift);
    EXPECT_EQ(read(*job, "planDetail"), QString::fromStdString(job->plan()->detail));

    job->setTarget(Target::aac);
    EXPECT_EQ(read(*job, "planMode").value<Job::ModeKind>(), job->plan()->mode == Mode::boxlift
                                                                 ? Job::ModeKind::Boxlift
                                                                 : Job::ModeKind::Reencode);
    job->setTarget(Target::mp4);
    EXPECT_EQ(read(*job, "hasPlan"), false);
    EXPECT_EQ(read(*job, "planDetail"), "");
    EXPECT_EQ(read(*job, "blocker"), "This is an audio file. Choose M4A or AAC audio only.");
}

TEST_F(JobProperties, TellHowTheConversionEnded) {
    const auto job = makeDoneJob("a.mov");
    const auto& done = std::get<Done>(job->state());

    EXPECT_EQ(read(*job, "state").value<Job::StateKind>(), Job::StateKind::Done);
    EXPECT_EQ(read(*job, "output"), fileUrl(done.output));
    EXPECT_EQ(read(*job, "usedMode").value<Job::ModeKind>(), Job::ModeKind::Boxlift);
    EXPECT_EQ(read(*job, "seconds"), done.seconds);
    EXPECT_EQ(read(*job, "progress"), 1.0);

    const auto failed = makeFailedJob("b.mov", "It broke — sorry.");
    EXPECT_EQ(read(*failed, "state").value<Job::StateKind>(), Job::StateKind::Failed);
    EXPECT_EQ(read(*failed, "message"), "It broke — sorry.");
    EXPECT_EQ(read(*failed, "output"), QUrl());
}

TEST_F(JobProperties, NameTheKindsOfStateInTheirOrder) {
    const auto kinds = QMetaEnum::fromType<Job::StateKind>();

    ASSERT_EQ(kinds.keyCount(), static_cast<int>(std::variant_size_v<Job::State>));
    const auto is = [](Job::StateKind kind, const Job::State& state) {
        return static_cast<std::size_t>(kind) == state.index();
    };
    EXPECT_TRUE(is(Job::StateKind::Analyzing, Analyzing{}));
    EXPECT_TRUE(is(Job::StateKind::Ready, Ready{}));
    EXPECT_TRUE(is(Job::StateKind::Converting, Converting{}));
    EXPECT_TRUE(is(Job::StateKind::Done, Done{}));
    EXPECT_TRUE(is(Job::StateKind::Failed, Failed{}));
}

TEST_F(JobProperties, SetTargetAndSizeByTheirPositions) {
    const auto job = makeReadyJob("a.mov");
    for (std::size_t i = 0; i < allTargets.size(); ++i) {
        EXPECT_TRUE(job->setProperty("target", static_cast<int>(i)));
        EXPECT_EQ(job->target(), allTargets.at(i));
        EXPECT_EQ(read(*job, "target"), static_cast<int>(i));
        EXPECT_EQ(read(*job, "targetIsAudio"), isAudio(allTargets.at(i)));
    }
    for (std::size_t i = 0; i < allSizeOptions.size(); ++i) {
        EXPECT_TRUE(job->setProperty("size", static_cast<int>(i)));
        EXPECT_EQ(job->size(), allSizeOptions.at(i));
        EXPECT_EQ(read(*job, "size"), static_cast<int>(i));
    }
    EXPECT_TRUE(job->setProperty("removeAudio", true));
    EXPECT_TRUE(job->removeAudio());
}

TEST_F(JobProperties, TakeNoPositionOutsideOfTheLists) {
    const auto job = makeDoneJob("a.mov");
    for (const int index : {-1, 4, 1000}) {
        job->setProperty("target", index);
        job->setProperty("size", index);
    }

    EXPECT_EQ(job->target(), Target::mp4);
    EXPECT_EQ(job->size(), SizeOption::original);
    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
}

TEST_F(JobProperties, RunTheSettingsChangedRuleForTheSamePosition) {
    const auto job = makeDoneJob("a.mov");
    job->setProperty("target", job->targetIndex());

    EXPECT_EQ(job->state(), Job::State(Ready{}));
}

TEST_F(JobProperties, ShowABrokenNameAsWellAsTheyCan) {
    EXPECT_EQ(read(*makeJob("caf\xE9.mov"), "fileName"), QString("caf\uFFFD.mov"));
    EXPECT_EQ(read(*makeJob("50% \"x\" #1?.mov"), "fileName"), "50% \"x\" #1?.mov");
}

TEST_F(JobProperties, TellOfEachChangeOfAnAnalysisAndARun) {
    Gate gate;
    m_engine.analyzes(input("song.wav"), [](const auto&) { return songInfo(); });
    m_engine.converts(input("song.wav"), [&](const auto&, const auto& progress, const auto& stop) {
        progress(0.5);
        gate.pass(stop);
        return Mode::boxlift;
    });
    const auto job = makeJob("song.wav");
    const PropertyMirror mirror(*job);
    analyze(*job);
    EXPECT_EQ(mirror.outdated(), QStringList());

    runToGate(*job, gate);
    ASSERT_TRUE(spinUntil([&] { return job->progress() == 0.5; }));
    EXPECT_EQ(mirror.outdated(), QStringList());

    gate.open();
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
    EXPECT_EQ(mirror.outdated(), QStringList());
}

TEST_F(JobProperties, TellOfEachChangeOfASetting) {
    for (const auto& job : {makeReadyJob("a.mov"), makeDoneJob("b.mov"),
                            makeFailedJob("c.mov", "It broke."), makeJob("d.mov")}) {
        const PropertyMirror mirror(*job);
        job->setTarget(Target::m4a);
        EXPECT_EQ(mirror.outdated(), QStringList());
        job->setSize(SizeOption::p720);
        EXPECT_EQ(mirror.outdated(), QStringList());
        job->setRemoveAudio(true);
        EXPECT_EQ(mirror.outdated(), QStringList());
    }
}

TEST_F(JobProperties, TellOfABlockerThatComesAndGoes) {
    const auto job = makeReadyJob("a.mov", {}, test::silentInfo());
    const QSignalSpy spy(job.get(), &Job::canConvertChanged);
    const PropertyMirror mirror(*job);
    job->setTarget(Target::aac);
    job->setTarget(Target::m4a);
    EXPECT_EQ(mirror.outdated(), QStringList());
    EXPECT_EQ(spy.count(), 1);

    job->setTarget(Target::mp4);
    EXPECT_EQ(mirror.outdated(), QStringList());
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(JobProperties, DoNotTellOfASettingThatStaysTheSame) {
    const auto job = makeReadyJob("a.mov");
    const QSignalSpy targets(job.get(), &Job::targetChanged);
    const QSignalSpy sizes(job.get(), &Job::sizeChanged);
    const QSignalSpy audio(job.get(), &Job::removeAudioChanged);
    job->setTarget(Target::mp4);
    job->setSize(SizeOption::original);
    job->setRemoveAudio(false);

    EXPECT_EQ(targets.count() + sizes.count() + audio.count(), 0);
}

} // namespace
} // namespace boxlift
