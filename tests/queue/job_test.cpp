#include "queue/job.h"

#include <functional>
#include <stdexcept>
#include <thread>

#include "engine/media/error.h"
#include "model/cancelled.h"
#include "model/convert_error.h"
#include "queue/job_fixture.h"

namespace boxlift {
namespace {

using test::filmInfo;
using test::Gate;
using test::JobLog;
using test::silentInfo;
using test::songInfo;
using test::spinUntil;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* noAudioTrack = "This file has no audio track to extract.";
constexpr const char* audioFile = "This is an audio file. Choose M4A or AAC audio only.";

class JobTest : public test::JobFixture {
protected:
    /// The state in which an analysis ends that throws this.
    template <typename Error>
    Job::State stateAfter(Error error) {
        m_engine.analyzes(input("a.mov"), [error](const auto&) -> MediaInfo { throw error; });
        const auto job = makeJob("a.mov");
        analyze(*job);
        EXPECT_EQ(job->info(), std::nullopt);
        EXPECT_FALSE(job->canConvert());
        return job->state();
    }
};

/// The assignments that run the settings-changed rule; each takes another value than the default
/// when `other`, else the default.
struct Setting {
    const char* name;
    std::function<void(Job&, bool other)> assign;
};

const Setting settings[] = {
    {"target", [](Job& job, bool other) { job.setTarget(other ? Target::mov : Target::mp4); }},
    {"size",
     [](Job& job, bool other) { job.setSize(other ? SizeOption::p720 : SizeOption::original); }},
    {"removeAudio", [](Job& job, bool other) { job.setRemoveAudio(other); }},
};

TEST_F(JobTest, BeginsWithoutInfoAndWithTheSettingsThatItIsGiven) {
    const JobSettings given{Target::mov, SizeOption::p720, true};
    const auto job = makeJob("a.mov", given);

    EXPECT_EQ(job->path(), input("a.mov"));
    EXPECT_EQ(job->url(), QUrl::fromLocalFile(QString::fromStdString(input("a.mov").native())));
    EXPECT_EQ(job->info(), std::nullopt);
    EXPECT_EQ(job->state(), Job::State(Analyzing{}));
    EXPECT_EQ(job->progress(), 0.0);
    EXPECT_EQ((JobSettings{job->target(), job->size(), job->removeAudio()}), given);
    EXPECT_EQ(job->blocker(), std::nullopt);
    EXPECT_EQ(job->plan(), std::nullopt);
    EXPECT_FALSE(job->canConvert());
}

TEST_F(JobTest, HasAnIdOfItsOwn) {
    const auto a = makeJob("a.mov");
    const auto twin = makeJob("a.mov");

    EXPECT_FALSE(a->id().isNull());
    EXPECT_EQ(a->id().version(), QUuid::Random);
    EXPECT_NE(a->id(), twin->id());
}

TEST_F(JobTest, StoresWhatTheAnalysisFindsAndIsReady) {
    const auto job = makeJob("a.mov");
    analyze(*job);

    EXPECT_THAT(m_engine.analyses(), ElementsAre(input("a.mov")));
    EXPECT_EQ(job->info(), filmInfo());
    EXPECT_EQ(job->state(), Job::State(Ready{}));
    EXPECT_TRUE(job->canConvert());
}

TEST_F(JobTest, StaysAnalyzingWhileTheAnalysisGoesOn) {
    Gate gate;
    m_engine.analyzes(input("a.mov"), [&](const auto& stop) {
        gate.pass(stop);
        return filmInfo();
    });
    const auto job = makeJob("a.mov");
    job->analyze();
    ASSERT_TRUE(spinUntil([&] { return gate.wasReached(); }));

    EXPECT_EQ(job->state(), Job::State(Analyzing{}));
    EXPECT_EQ(job->info(), std::nullopt);
    EXPECT_FALSE(job->canConvert());
    gate.open();
    EXPECT_TRUE(spinUntil([&] { return job->state() == Job::State(Ready{}); }));
}

TEST_F(JobTest, IsAnalyzedOffTheMainThreadAndChangesOnIt) {
    const auto mainThread = std::this_thread::get_id();
    std::thread::id engineThread;
    std::vector<std::thread::id> signalThreads;
    m_engine.analyzes(input("a.mov"), [&](const auto&) {
        engineThread = std::this_thread::get_id();
        return filmInfo();
    });
    const auto job = makeJob("a.mov");
    const auto note = [&] { signalThreads.push_back(std::this_thread::get_id()); };
    QObject::connect(job.get(), &Job::infoChanged, note);
    QObject::connect(job.get(), &Job::stateChanged, note);
    analyze(*job);

    EXPECT_NE(engineThread, mainThread);
    EXPECT_THAT(signalThreads, ElementsAre(mainThread, mainThread));
}

TEST_F(JobTest, IsSwitchedToM4aWhenTheFileHasNoVideo) {
    for (const Target target : {Target::mp4, Target::mov}) {
        const auto job = makeReadyJob("song.wav", {.target = target}, songInfo());

        EXPECT_EQ(job->target(), Target::m4a);
        EXPECT_EQ(job->blocker(), std::nullopt);
        EXPECT_TRUE(job->canConvert());
    }
}

TEST_F(JobTest, KeepsTheTargetThatSuitsTheFile) {
    for (const Target target : allTargets)
        EXPECT_EQ(makeReadyJob("film.mov", {.target = target})->target(), target);
    for (const Target target : {Target::m4a, Target::aac})
        EXPECT_EQ(makeReadyJob("song.wav", {.target = target}, songInfo())->target(), target);
}

TEST_F(JobTest, IsSwitchedBeforeItIsReady) {
    m_engine.analyzes(input("song.wav"), [](const auto&) { return songInfo(); });
    const auto job = makeJob("song.wav");
    std::vector<Target> targets;
    QObject::connect(job.get(), &Job::stateChanged, [&] { targets.push_back(job->target()); });
    analyze(*job);

    EXPECT_THAT(targets, ElementsAre(Target::m4a));
}

TEST_F(JobTest, ShowsTheSentenceOfAnAnalysisThatFails) {
    EXPECT_EQ(stateAfter(ConvertError("Not this one.")), Job::State(Failed{"Not this one."}));
    EXPECT_EQ(stateAfter(ConvertError("")), Job::State(Failed{""}));
}

TEST_F(JobTest, ShowsASentenceForAnyOtherErrorOfTheAnalysis) {
    using media::ErrorKind;
    const media::Error unreadable(ErrorKind::sourceUnreadable, "read", "a.mov", "I/O error");
    const std::string known(media::sentence(ErrorKind::sourceUnreadable));
    const std::string unknown(media::sentence(ErrorKind::unknown));

    EXPECT_EQ(stateAfter(unreadable), Job::State(Failed{known}));
    EXPECT_EQ(stateAfter(std::runtime_error("vector::at")), Job::State(Failed{unknown}));
    EXPECT_EQ(stateAfter(Cancelled()), Job::State(Failed{unknown}));
    EXPECT_EQ(stateAfter(7), Job::State(Failed{unknown}));
}

TEST_F(JobTest, StaysAnalyzingWhenTheApplicationEndsMeanwhile) {
    Gate never;
    m_engine.analyzes(input("a.mov"), [&](const auto& stop) -> MediaInfo {
        never.pass(stop);
        return {};
    });
    const auto job = makeJob("a.mov");
    job->analyze();
    ASSERT_TRUE(spinUntil([&] { return never.wasReached(); }));
    const JobLog log(*job);
    m_workers.end();

    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_EQ(job.use_count(), 1);
}

TEST_F(JobTest, LivesUntilItsAnalysisHasEnded) {
    Gate gate;
    m_engine.analyzes(input("a.mov"), [&](const auto& stop) {
        gate.pass(stop);
        return filmInfo();
    });
    auto job = makeJob("a.mov");
    const std::weak_ptr<Job> weak = job;
    job->analyze();
    job.reset();
    EXPECT_FALSE(weak.expired());

    gate.open();
    EXPECT_TRUE(spinUntil([&] { return weak.expired(); }));
}

struct BlockerRow {
    const char* name;
    MediaInfo info;
    Target target;
    std::optional<std::string> blocker;
};

const BlockerRow blockers[] = {
    {"film, mp4", filmInfo(), Target::mp4, {}},
    {"film, mov", filmInfo(), Target::mov, {}},
    {"film, m4a", filmInfo(), Target::m4a, {}},
    {"film, aac", filmInfo(), Target::aac, {}},
    {"silent film, mp4", silentInfo(), Target::mp4, {}},
    {"silent film, mov", silentInfo(), Target::mov, {}},
    {"silent film, m4a", silentInfo(), Target::m4a, noAudioTrack},
    {"silent film, aac", silentInfo(), Target::aac, noAudioTrack},
    {"song, mp4", songInfo(), Target::mp4, audioFile},
    {"song, mov", songInfo(), Target::mov, audioFile},
    {"song, m4a", songInfo(), Target::m4a, {}},
    {"song, aac", songInfo(), Target::aac, {}},
    {"neither, mp4", {}, Target::mp4, audioFile},
    {"neither, mov", {}, Target::mov, audioFile},
    {"neither, m4a", {}, Target::m4a, noAudioTrack},
    {"neither, aac", {}, Target::aac, noAudioTrack},
};

TEST_F(JobTest, IsBlockedWhereTheTargetNeedsATrackThatIsMissing) {
    for (const BlockerRow& row : blockers) {
        const auto job = makeReadyJob("a.mov", {}, row.info);
        job->setTarget(row.target);

        EXPECT_EQ(job->blocker(), row.blocker) << row.name;
        EXPECT_EQ(job->plan().has_value(), !row.blocker) << row.name;
        EXPECT_EQ(job->canConvert(), !row.blocker) << row.name;
        EXPECT_EQ(job->state(), Job::State(Ready{})) << row.name;
    }
}

TEST_F(JobTest, PlansWithTheSettingsOfTheMoment) {
    const auto job = makeReadyJob("a.mov");

    EXPECT_EQ(job->plan(), Converter::plan(filmInfo(), Target::mp4, SizeOption::original, false));
    job->setSize(SizeOption::p720);
    EXPECT_EQ(job->plan(), Converter::plan(filmInfo(), Target::mp4, SizeOption::p720, false));
    job->setRemoveAudio(true);
    EXPECT_EQ(job->plan(), Converter::plan(filmInfo(), Target::mp4, SizeOption::p720, true));
    job->setTarget(Target::aac);
    EXPECT_EQ(job->plan(), Converter::plan(filmInfo(), Target::aac, SizeOption::p720, true));
}

TEST_F(JobTest, CanBeConvertedWhenReadyOrFailedAndNeitherWhileConvertingNorWhenDone) {
    Gate gate;
    const auto job = makeReadyJob("a.mov");
    EXPECT_TRUE(job->canConvert());
    m_engine.converts(job->path(), [&](const auto&, const auto&, const auto& stop) -> Mode {
        gate.pass(stop);
        throw ConvertError("It broke.");
    });
    runToGate(*job, gate);
    EXPECT_FALSE(job->canConvert());

    gate.open();
    ASSERT_TRUE(spinUntil([&] { return job->state() == Job::State(Failed{"It broke."}); }));
    EXPECT_TRUE(job->canConvert());
    EXPECT_FALSE(makeDoneJob("b.mov")->canConvert());
}

TEST_F(JobTest, ThatFailedCannotBeConvertedWithABlocker) {
    const auto job = makeFailedJob("a.mov", "It broke.");
    ASSERT_TRUE(job->canConvert());
    m_engine.analyzes(input("b.mov"), [](const auto&) { return silentInfo(); });

    const auto silent = makeJob("b.mov");
    analyze(*silent);
    m_engine.converts(silent->path(), [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("It broke.");
    });
    run(*silent);
    silent->setTarget(Target::m4a);
    EXPECT_EQ(silent->state(), Job::State(Failed{"It broke."}));
    EXPECT_FALSE(silent->canConvert());
}

TEST_F(JobTest, ThatIsDoneIsReadyAgainAfterAnAssignmentOfAnotherValue) {
    for (const Setting& setting : settings) {
        const auto job = makeDoneJob("a.mov");
        ASSERT_EQ(job->progress(), 1.0);
        const JobLog log(*job);
        setting.assign(*job, true);

        EXPECT_THAT(log.events(), ElementsAre("ready", "0")) << setting.name;
        EXPECT_TRUE(job->canConvert()) << setting.name;
    }
}

TEST_F(JobTest, ThatIsDoneIsReadyAgainAfterAnAssignmentOfTheSameValue) {
    for (const Setting& setting : settings) {
        const auto job = makeDoneJob("a.mov");
        const JobLog log(*job);
        setting.assign(*job, false);

        EXPECT_THAT(log.events(), ElementsAre("ready", "0")) << setting.name;
    }
}

TEST_F(JobTest, ThatFailedKeepsItsMessageWhenASettingIsAssigned) {
    for (const Setting& setting : settings) {
        const auto job = makeFailedJob("a.mov", "It broke.");
        setting.assign(*job, true);

        EXPECT_EQ(job->state(), Job::State(Failed{"It broke."})) << setting.name;
    }
}

TEST_F(JobTest, ThatIsAnalyzedOrReadyKeepsItsStateWhenASettingIsAssigned) {
    for (const Setting& setting : settings) {
        const auto job = makeJob("a.mov");
        const JobLog log(*job);
        setting.assign(*job, true);
        EXPECT_THAT(log.events(), IsEmpty()) << setting.name;

        analyze(*job);
        setting.assign(*job, false);
        EXPECT_THAT(log.events(), ElementsAre("ready")) << setting.name;
    }
}

TEST_F(JobTest, ThatIsConvertingGoesOnWhenASettingIsAssigned) {
    Gate gate;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto& stop) {
        progress(0.5);
        gate.pass(stop);
        return Mode::boxlift;
    });
    runToGate(*job, gate);
    ASSERT_TRUE(spinUntil([&] { return job->progress() == 0.5; }));
    for (const Setting& setting : settings)
        setting.assign(*job, true);

    EXPECT_EQ(job->state(), Job::State(Converting{}));
    EXPECT_EQ(job->progress(), 0.5);
    gate.open();
    EXPECT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
    EXPECT_EQ(job->target(), Target::mov);
}

} // namespace
} // namespace boxlift
