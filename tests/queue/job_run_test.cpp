#include "queue/job.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "engine/media/error.h"
#include "model/cancelled.h"
#include "model/convert_error.h"
#include "queue/job_fixture.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::ConvertCall;
using test::filmInfo;
using test::Gate;
using test::JobLog;
using test::patience;
using test::spinFor;
using test::spinUntil;
using test::writeFile;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;
using testing::VariantWith;

class JobRun : public test::JobFixture {
protected:
    /// What a conversion of a file with this name is called on to write.
    fs::path chosenOutput(const std::string& name, const JobSettings& settings = {}) {
        run(*makeReadyJob(name, settings));
        return m_engine.conversions().back().output;
    }

    template <typename Error>
    void fails(const Job& job, Error error) {
        m_engine.converts(job.path(),
                          [error](const auto&, const auto&, const auto&) -> Mode { throw error; });
    }
};

TEST_F(JobRun, ChangesNothingWithoutInfo) {
    const auto job = makeJob("a.mov");
    const JobLog log(*job);
    job->run(outputDir(), {});
    spinFor(50ms);

    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_THAT(m_engine.conversions(), IsEmpty());
    EXPECT_FALSE(fs::exists(outputDir()));
}

TEST_F(JobRun, HandsFileInfoSettingsAndOutputToTheEngine) {
    const auto job = makeReadyJob("a.mov", {Target::mov, SizeOption::p1080, true});
    run(*job);

    EXPECT_THAT(m_engine.conversions(),
                ElementsAre(ConvertCall{input("a.mov"), filmInfo(), Target::mov, SizeOption::p1080,
                                        true, output("a.mov")}));
}

TEST_F(JobRun, IsConvertingAtOnceFromProgressZero) {
    Gate gate;
    const auto job = makeFailedJob("a.mov", "It broke.");
    m_engine.converts(job->path(), [&](const auto&, const auto&, const auto& stop) {
        gate.pass(stop);
        return Mode::boxlift;
    });
    job->run(outputDir(), {});

    EXPECT_EQ(job->state(), Job::State(Converting{}));
    EXPECT_EQ(job->progress(), 0.0);
    gate.open();
    EXPECT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));
}

TEST_F(JobRun, StartsOverFromProgressZero) {
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [](const auto&, const auto& progress, const auto&) -> Mode {
        progress(0.5);
        std::this_thread::sleep_for(20ms);
        throw ConvertError("It broke.");
    });
    run(*job);
    ASSERT_EQ(job->progress(), 0.5);
    m_engine.converts(job->path(), test::copyAtOnce);
    const JobLog log(*job);
    run(*job);

    EXPECT_THAT(log.events().at(0), "converting");
    EXPECT_THAT(log.events().at(1), "0");
}

TEST_F(JobRun, ReachesProgressOneBeforeItIsDone) {
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(),
                      [](const auto&, const auto&, const auto&) { return Mode::reencode; });
    const JobLog log(*job);
    run(*job);

    EXPECT_THAT(log.events(), ElementsAre("converting", "1", "done"));
}

TEST_F(JobRun, EndsWithTheOutputTheUsedModeAndTheElapsedSeconds) {
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [](const auto&, const auto&, const auto&) {
        std::this_thread::sleep_for(60ms);
        return Mode::reencode;
    });
    const auto start = std::chrono::steady_clock::now();
    run(*job);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

    EXPECT_THAT(job->state(),
                VariantWith<Done>(
                    AllOf(Field(&Done::output, output("a.mp4")), Field(&Done::mode, Mode::reencode),
                          Field(&Done::seconds, AllOf(Ge(0.06), Le(elapsed.count()))))));
}

TEST_F(JobRun, NamesTheOutputAfterTheInputWithTheExtensionOfTheTarget) {
    const std::pair<Target, const char*> outputs[] = {{Target::mp4, "clip.mp4"},
                                                      {Target::mov, "clip.mov"},
                                                      {Target::m4a, "clip.m4a"},
                                                      {Target::aac, "clip.m4a"}};
    for (const auto& [target, name] : outputs) {
        EXPECT_EQ(chosenOutput("clip.mkv", {.target = target}), output(name));
        fs::remove(output(name));
    }
}

TEST_F(JobRun, TakesOffOnlyWhatFollowsTheLastDot) {
    EXPECT_EQ(chosenOutput("a.b.mov"), output("a.b.mp4"));
    EXPECT_EQ(chosenOutput("plain"), output("plain.mp4"));
    EXPECT_EQ(chosenOutput(".hidden"), output(".hidden.mp4"));
    EXPECT_EQ(chosenOutput("caf\xE9.mov"), output("caf\xE9.mp4"));
}

TEST_F(JobRun, CountsFromTwoUpToAFreeName) {
    writeFile(output("a.mp4"), "mine");
    writeFile(output("a 2.mp4"), "mine");

    EXPECT_EQ(chosenOutput("a.mov"), output("a 3.mp4"));
    EXPECT_EQ(test::readFile(output("a.mp4")), "mine");
    EXPECT_EQ(test::readFile(output("a 2.mp4")), "mine");
}

TEST_F(JobRun, TakesTheFirstGapAmongTheNumbers) {
    writeFile(output("a.mp4"));
    writeFile(output("a 3.mp4"));

    EXPECT_EQ(chosenOutput("a.mov"), output("a 2.mp4"));
}

TEST_F(JobRun, AvoidsTheNamesOfFoldersAndOfLinksThatLeadNowhere) {
    fs::create_directories(output("a.mp4"));
    fs::create_symlink("nowhere", output("a 2.mp4"));

    EXPECT_EQ(chosenOutput("a.mov"), output("a 3.mp4"));
    EXPECT_TRUE(fs::is_symlink(output("a 2.mp4")));
}

TEST_F(JobRun, LeavesAnInputInTheOutputFolderUntouched) {
    writeFile(output("clip.mp4"), "source");
    const auto job = makeReadyJob("out/clip.mp4");
    run(*job);

    EXPECT_THAT(job->state(), VariantWith<Done>(Field(&Done::output, output("clip 2.mp4"))));
    EXPECT_EQ(test::readFile(output("clip.mp4")), "source");
}

TEST_F(JobRun, MakesTheOutputFolderAndThoseAboveIt) {
    const auto job = makeReadyJob("a.mov");
    job->run(outputDir() / "new" / "newer", {});
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));

    EXPECT_TRUE(fs::exists(outputDir() / "new" / "newer" / "a.mp4"));
}

TEST_F(JobRun, LeavesItToTheEngineToReportAFolderThatCannotBeMade) {
    const auto job = makeReadyJob("a.mov");
    writeFile(outputDir(), "a file where the folder should be");
    fails(*job, ConvertError("There is no such folder."));
    run(*job);

    EXPECT_THAT(m_engine.conversions(), SizeIs(1));
    EXPECT_EQ(job->state(), Job::State(Failed{"There is no such folder."}));
}

TEST_F(JobRun, ConvertsWithTheSettingsOfItsBeginning) {
    const auto job = makeReadyJob("a.mov");
    job->run(outputDir(), {});
    // Before the worker can have got anywhere, and while it is there.
    job->setTarget(Target::mov);
    job->setSize(SizeOption::p720);
    job->setRemoveAudio(true);
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() == Job::StateKind::Done; }));

    EXPECT_THAT(m_engine.conversions(),
                ElementsAre(ConvertCall{input("a.mov"), filmInfo(), Target::mp4,
                                        SizeOption::original, false, output("a.mp4")}));
}

TEST_F(JobRun, IsReadyWithProgressZeroAfterACancellation) {
    Gate never;
    std::stop_source stop;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto& progress, const auto& token) {
        progress(0.5);
        never.pass(token);
        return Mode::boxlift;
    });
    runToGate(*job, never, stop.get_token());
    ASSERT_TRUE(spinUntil([&] { return job->progress() == 0.5; }));
    const JobLog log(*job);
    stop.request_stop();
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() != Job::StateKind::Converting; }));

    EXPECT_THAT(log.events(), ElementsAre("ready", "0"));
    EXPECT_EQ(job->message(), QString());
    EXPECT_TRUE(job->canConvert());
}

TEST_F(JobRun, TakesAnyErrorAfterAStopForTheCancellation) {
    std::stop_source stop;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto&, const auto&, const auto&) -> Mode {
        stop.request_stop();
        throw std::runtime_error("interrupted");
    });
    run(*job, stop.get_token());

    EXPECT_EQ(job->state(), Job::State(Ready{}));
    EXPECT_EQ(job->progress(), 0.0);
}

TEST_F(JobRun, TakesACancellationWithoutAStopForOne) {
    const auto job = makeReadyJob("a.mov");
    fails(*job, Cancelled());
    run(*job);

    EXPECT_EQ(job->state(), Job::State(Ready{}));
}

TEST_F(JobRun, KeepsAConversionThatWasFasterThanTheStop) {
    std::stop_source stop;
    const auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto& call, const auto& progress, const auto& token) {
        stop.request_stop();
        return test::copyAtOnce(call, progress, token);
    });
    run(*job, stop.get_token());

    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
    EXPECT_EQ(job->progress(), 1.0);
}

TEST_F(JobRun, CanBeStartedAgainAfterACancellation) {
    const auto job = makeReadyJob("a.mov");
    fails(*job, Cancelled());
    run(*job);
    m_engine.converts(job->path(), test::copyAtOnce);
    run(*job);

    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
}

TEST_F(JobRun, ShowsTheSentenceOfAFailureAndKeepsItsProgress) {
    const auto job = makeReadyJob("a.mov");
    Gate gate;
    m_engine.converts(job->path(),
                      [&](const auto&, const auto& progress, const auto& stop) -> Mode {
                          progress(0.75);
                          gate.pass(stop);
                          throw ConvertError("It broke.");
                      });
    runToGate(*job, gate);
    ASSERT_TRUE(spinUntil([&] { return job->progress() == 0.75; }));
    gate.open();
    ASSERT_TRUE(spinUntil([&] { return job->stateKind() != Job::StateKind::Converting; }));

    EXPECT_EQ(job->state(), Job::State(Failed{"It broke."}));
    EXPECT_EQ(job->progress(), 0.75);
}

TEST_F(JobRun, ShowsTheSentencesOfTheMediaLayerAndOneForTheRest) {
    using media::ErrorKind;
    const auto job = makeReadyJob("a.mov");
    fails(*job, media::Error(ErrorKind::noSpace, "write", "a.mp4", "ENOSPC"));
    run(*job);
    EXPECT_EQ(job->state(), Job::State(Failed{std::string(media::sentence(ErrorKind::noSpace))}));

    fails(*job, std::runtime_error("vector::at"));
    run(*job);
    EXPECT_EQ(job->state(), Job::State(Failed{std::string(media::sentence(ErrorKind::unknown))}));
}

TEST_F(JobRun, LivesUntilItsConversionHasEnded) {
    Gate gate;
    auto job = makeReadyJob("a.mov");
    m_engine.converts(job->path(), [&](const auto& call, const auto& progress, const auto& stop) {
        gate.pass(stop);
        return test::copyAtOnce(call, progress, stop);
    });
    const std::weak_ptr<Job> weak = job;
    runToGate(*job, gate);
    job.reset();
    EXPECT_FALSE(weak.expired());

    gate.open();
    EXPECT_TRUE(spinUntil([&] { return weak.expired(); }));
    EXPECT_TRUE(fs::exists(output("a.mp4")));
}

} // namespace
} // namespace boxlift
