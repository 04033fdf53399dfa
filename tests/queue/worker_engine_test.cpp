#include "queue/worker_engine.h"

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/cancelled.h"
#include "queue/failure_message.h"
#include "support/temp_folder.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;
using test::readFile;
using test::writeFile;
using testing::ElementsAre;

constexpr const char* cannotOpen =
    "macOS can't open this file. It may be damaged or in a format AVFoundation doesn't support.";
constexpr const char* stopped = "The conversion stopped unexpectedly. The file may be damaged.";
constexpr const char* incomplete = "A part of Boxlift is missing. Install Boxlift again.";

/// The client over a worker that does what the source's name says.
class WorkerEngineTest : public testing::Test {
protected:
    explicit WorkerEngineTest(std::chrono::milliseconds patience = 20s)
        : m_engine(workerEngine({.program = BOXLIFT_FAKE_WORKER, .patience = patience})) {
        fs::create_directory(m_folder.path() / "out");
    }

    fs::path source(const std::string& name) const {
        return writeFile(m_folder.path() / "in" / (name + ".mov"), "a film");
    }
    fs::path output() const { return m_folder.path() / "out" / "out.mp4"; }

    std::vector<std::string> outputs() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.path() / "out"))
            names.push_back(entry.path().filename());
        return names;
    }

    std::string analyze(const std::string& name, std::stop_token stop = {}) const {
        try {
            return m_engine.analyze(source(name), stop).summary();
        } catch (const Cancelled&) {
            return "cancelled";
        } catch (...) {
            return failureMessage();
        }
    }

    std::string convert(const std::string& name, std::stop_token stop = {}) {
        try {
            m_engine.convert(
                source(name), {}, Target::mp4, SizeOption::original, false, output(),
                [this](double fraction) { m_progress.push_back(fraction); }, stop);
            return "converted";
        } catch (const Cancelled&) {
            return "cancelled";
        } catch (...) {
            return failureMessage();
        }
    }

    void restart(const fs::path& program, std::chrono::milliseconds patience = 20s) {
        m_engine = workerEngine({.program = program, .patience = patience});
    }

    /// The fake worker under a name that makes it behave otherwise from its start.
    fs::path workerNamed(const std::string& name) const {
        const fs::path link = m_folder.path() / name;
        fs::create_symlink(BOXLIFT_FAKE_WORKER, link);
        return link;
    }

    const test::TempFolder m_folder;
    Engine m_engine;
    std::vector<double> m_progress;
};

/// A program that leaves a file where it was started.
fs::path markingProgram(const fs::path& mark) {
    const fs::path program =
        writeFile(mark.parent_path() / "program", "#!/bin/sh\n: >'" + mark.string() + "'\n");
    fs::permissions(program, fs::perms::owner_all);
    return program;
}

/// Stops soon after it was made.
class StopSoon {
public:
    std::stop_token token() const { return m_stop.get_token(); }
    std::chrono::steady_clock::duration sinceStop() const {
        return std::chrono::steady_clock::now() - m_time.get();
    }

private:
    std::stop_source m_stop;
    std::promise<std::chrono::steady_clock::time_point> m_promise;
    std::shared_future<std::chrono::steady_clock::time_point> m_time{m_promise.get_future()};
    std::jthread m_thread{[this] {
        std::this_thread::sleep_for(200ms);
        m_promise.set_value(std::chrono::steady_clock::now());
        m_stop.request_stop();
    }};
};

/// Meant to be half a second; the machine may be busy.
constexpr auto soon = 5s;

/// What a worker may do instead of its work.
class WorkerThatFails : public WorkerEngineTest, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(WorkerEngineTest, DeliversWhatTheWorkerSays) {
    EXPECT_EQ(analyze("film"), "AAC · 0:03");
    EXPECT_EQ(convert("film"), "converted");
    EXPECT_EQ(readFile(output()), "made by the worker");
    EXPECT_THAT(m_progress, ElementsAre(0.5, 1));
}

TEST_F(WorkerEngineTest, RefusesByExtensionWithoutOpeningTheFile) {
    EXPECT_THROW(m_engine.analyze("/nowhere/film.mkv", {}), ConvertError);
    try {
        m_engine.analyze("/nowhere/film.mkv", {});
    } catch (const ConvertError& error) {
        EXPECT_EQ(error.message(), "MKV files can't be opened by macOS. Convert them with a tool "
                                   "like ffmpeg or HandBrake first.");
    }
}

TEST_P(WorkerThatFails, FailsTheAnalysisAndNothingElse) {
    EXPECT_EQ(analyze(GetParam()), cannotOpen);
    EXPECT_EQ(analyze("film"), "AAC · 0:03");
}

TEST_P(WorkerThatFails, FailsTheConversionAndLeavesNothing) {
    EXPECT_EQ(convert(GetParam()), stopped);
    EXPECT_TRUE(outputs().empty());
    EXPECT_EQ(convert("film"), "converted");
}

INSTANTIATE_TEST_SUITE_P(Tricks, WorkerThatFails,
                         testing::Values("crash", "abort", "exit", "all-memory", "noise",
                                         "too-long", "half-a-frame", "no-such-report",
                                         "no-such-mode", "empty", "no-utf-8", "control-characters",
                                         "no-tracks", "too-far", "ready-again"),
                         [](const auto& info) {
                             std::string name(info.param);
                             std::erase(name, '-');
                             return name;
                         });

TEST_F(WorkerEngineTest, KillsAWorkerThatHangsInAnalysis) {
    restart(BOXLIFT_FAKE_WORKER, 2s);
    EXPECT_EQ(analyze("hang"), cannotOpen);
    EXPECT_EQ(analyze("half-a-frame-forever"), cannotOpen);
    EXPECT_EQ(analyze("film"), "AAC · 0:03");
}

TEST_F(WorkerEngineTest, AnAnalysisHasNoProgress) {
    EXPECT_EQ(analyze("other-answer"), cannotOpen);
}

TEST_F(WorkerEngineTest, ShowsTheSentenceOfTheKindOfErrorAndLogsOneLine) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(convert("log-line"), "The disk is full. Make room and try again.");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("two?lines\n"));
}

TEST_F(WorkerEngineTest, TakesNoDescriptors) {
    const auto count = [] {
        return std::distance(fs::directory_iterator("/dev/fd"), fs::directory_iterator());
    };
    EXPECT_EQ(analyze("film"), "AAC · 0:03");
    const auto before = count();
    constexpr int times = 20;
    for (int i = 0; i < times; ++i)
        EXPECT_EQ(analyze("descriptors"), "AAC · 0:03");
    // Workers are started ahead meanwhile.
    EXPECT_LT(count(), before + times);
}

TEST_F(WorkerEngineTest, SaysOnceWhatTheSystemLacks) {
    testing::internal::CaptureStderr();
    analyze("film");
    convert("film");
    convert("film");
    const std::string log = testing::internal::GetCapturedStderr();
    const auto first = log.find("does not restrain boxlift-worker by everything");
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_EQ(log.find("does not restrain", first + 1), std::string::npos) << log;
}

TEST_F(WorkerEngineTest, StopsAnAnalysisThatHangs) {
    const StopSoon stop;
    EXPECT_EQ(analyze("hang", stop.token()), "cancelled");
    EXPECT_LT(stop.sinceStop(), soon);
}

TEST_F(WorkerEngineTest, StopsAConversionThatHangs) {
    const StopSoon stop;
    EXPECT_EQ(convert("hang", stop.token()), "cancelled");
    EXPECT_LT(stop.sinceStop(), soon);
    EXPECT_TRUE(outputs().empty());
}

TEST_F(WorkerEngineTest, StopsAConversionThatReportsWithoutEnd) {
    const StopSoon stop;
    EXPECT_EQ(convert("endless-progress", stop.token()), "cancelled");
    EXPECT_LT(stop.sinceStop(), soon);
    EXPECT_TRUE(outputs().empty());
}

TEST_F(WorkerEngineTest, DoesNothingAfterAStop) {
    std::stop_source stop;
    stop.request_stop();
    writeFile(output(), "standing");
    EXPECT_EQ(analyze("film", stop.get_token()), "cancelled");
    EXPECT_EQ(convert("film", stop.get_token()), "cancelled");
    EXPECT_EQ(readFile(output()), "standing");
}

TEST_F(WorkerEngineTest, StartsNothingAheadBeforeItIsTold) {
    const fs::path mark = m_folder.path() / "started";
    restart(markingProgram(mark));
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(fs::exists(mark));
    m_engine.prepare();
    const auto end = std::chrono::steady_clock::now() + soon;
    while (!fs::exists(mark) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(fs::exists(mark));
}

TEST_F(WorkerEngineTest, SaysThatItIsIncompleteWithoutItsWorker) {
    restart(m_folder.path() / "missing");
    EXPECT_EQ(analyze("film"), incomplete);
    EXPECT_EQ(convert("film"), incomplete);
    EXPECT_TRUE(outputs().empty());
}

TEST_F(WorkerEngineTest, SaysThatItIsIncompleteWhenItsWorkerDoesNotStart) {
    restart(workerNamed("dead"));
    EXPECT_EQ(convert("film"), incomplete);
    restart(workerNamed("mute"), 500ms);
    EXPECT_EQ(convert("film"), incomplete);
    EXPECT_TRUE(outputs().empty());
}

TEST_F(WorkerEngineTest, SaysThatItIsIncompleteWithTheWorkerOfAnotherVersion) {
    restart(workerNamed("old"));
    EXPECT_EQ(analyze("film"), incomplete);
    EXPECT_EQ(convert("film"), incomplete);
}

TEST_F(WorkerEngineTest, AnalyzesOnSeveralThreadsAtOnce) {
    std::vector<std::jthread> threads;
    std::atomic<int> described = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int j = 0; j < 25; ++j) {
                const bool isBad = (i + j) % 5 == 0;
                const std::string summary = analyze(isBad ? "crash" : "film");
                described += summary == (isBad ? cannotOpen : "AAC · 0:03") ? 1 : 0;
            }
        });
    threads.clear();
    EXPECT_EQ(described, 100);
}

} // namespace boxlift
