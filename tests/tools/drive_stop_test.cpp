#include "drive/drive.h"

#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temp_folder.h"
#include "tools/fake_engine.h"
#include "tools/lines.h"

namespace boxlift::drive {
namespace {

namespace fs = std::filesystem;
using boxlift::test::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* nothingDone = R"({"event":"finished","done":0,"failed":0,"blocked":0})";

class DriveStop : public testing::Test {
protected:
    ExitStatus run(Command command, std::vector<fs::path> paths) {
        return run(command, std::move(paths), lines.sink());
    }

    ExitStatus run(Command command, std::vector<fs::path> paths, const LineSink& sink) {
        CommandLine line;
        line.command = command;
        line.outputDir = folder.path();
        line.paths = std::move(paths);
        return drive(line, fake.engine(), sink, stop.get_token());
    }

    const TempFolder folder;
    std::stop_source stop;
    test::FakeEngine fake;
    test::Lines lines;
};

TEST_F(DriveStop, BeforeTheStartLeavesNothingToDo) {
    stop.request_stop();

    EXPECT_EQ(run(Command::convert, {"/a.mov"}), ExitStatus::stopped);
    EXPECT_THAT(lines.all(), ElementsAre(nothingDone));
}

TEST_F(DriveStop, EndsRunningAnalysesAndDropsThoseThatWait) {
    fake.analyzes("/0.mov", [this](const std::stop_token& token) -> MediaInfo {
        stop.request_stop();
        test::waitForStop(token);
    });
    std::vector<fs::path> paths;
    for (int i = 0; i < 50; ++i) {
        paths.push_back("/" + std::to_string(i) + ".mov");
        if (i > 0)
            fake.analyzes(paths.back(), [](const std::stop_token& token) -> MediaInfo {
                test::waitForStop(token);
            });
    }

    EXPECT_EQ(run(Command::analyze, paths), ExitStatus::stopped);
    EXPECT_THAT(lines.all(), ElementsAre(nothingDone));
}

TEST_F(DriveStop, TakesNoErrorOfAStoppedAnalysisForAFailure) {
    fake.analyzes("/a.mov", [this](const auto&) -> MediaInfo {
        stop.request_stop();
        throw ConvertError("It broke off.");
    });

    EXPECT_EQ(run(Command::analyze, {"/a.mov"}), ExitStatus::stopped);
    EXPECT_THAT(lines.all(), ElementsAre(nothingDone));
}

TEST_F(DriveStop, DuringTheAnalysesConvertsNothing) {
    fake.analyzes("/a.mov", [this](const auto&) {
        stop.request_stop();
        return test::filmInfo();
    });

    EXPECT_EQ(run(Command::convert, {"/a.mov"}), ExitStatus::stopped);
    EXPECT_THAT(fake.conversions(), IsEmpty());
    EXPECT_THAT(lines.all(), ElementsAre(HasSubstr(R"({"event":"ready")"), nothingDone));
}

TEST_F(DriveStop, CancelsTheRunningConversionAndBeginsNoFurtherOne) {
    fake.converts("/b.mov",
                  [this](const auto&, const auto& progress, const std::stop_token& token) -> Mode {
                      progress(0.25);
                      stop.request_stop();
                      test::waitForStop(token);
                  });

    EXPECT_EQ(run(Command::convert, {"/a.mov", "/b.mov", "/c.mov"}), ExitStatus::stopped);
    EXPECT_THAT(fake.conversions(), SizeIs(2));
    const auto all = lines.all();
    EXPECT_EQ(all.end()[-2], R"({"event":"cancelled","url":"/b.mov"})");
    EXPECT_EQ(all.back(), R"({"event":"finished","done":1,"failed":0,"blocked":0})");
}

TEST_F(DriveStop, TakesAnyErrorOfAStoppedConversionForItsCancellation) {
    fake.converts("/a.mov", [this](const auto&, const auto&, const auto&) -> Mode {
        stop.request_stop();
        throw std::runtime_error("interrupted");
    });

    EXPECT_EQ(run(Command::convert, {"/a.mov"}), ExitStatus::stopped);
    EXPECT_EQ(lines.all().end()[-2], R"({"event":"cancelled","url":"/a.mov"})");
}

TEST_F(DriveStop, KeepsAConversionThatWasFasterThanTheStop) {
    fake.converts("/a.mov", [this](const auto& call, const auto& progress, const auto& token) {
        stop.request_stop();
        return test::copyAtOnce(call, progress, token);
    });

    EXPECT_EQ(run(Command::convert, {"/a.mov", "/b.mov"}), ExitStatus::stopped);
    EXPECT_THAT(fake.conversions(), SizeIs(1));
    EXPECT_THAT(lines.with(R"("done","url":"/a.mov")"), SizeIs(1));
    EXPECT_EQ(lines.all().back(), R"({"event":"finished","done":1,"failed":0,"blocked":0})");
}

TEST_F(DriveStop, AfterTheRunChangesNothing) {
    const LineSink keep = lines.sink();
    const auto stopAtTheEnd = [&](std::string_view line) {
        if (line.find("finished") != std::string_view::npos)
            stop.request_stop();
        return keep(line);
    };

    EXPECT_EQ(run(Command::convert, {"/a.mov"}, stopAtTheEnd), ExitStatus::allWell);
    EXPECT_EQ(lines.all().back(), R"({"event":"finished","done":1,"failed":0,"blocked":0})");
}

TEST_F(DriveStop, ComesByItselfWhenNobodyReadsAnyMore) {
    const LineSink keep = lines.sink();
    const auto breaksAtProgress = [&](std::string_view line) {
        return line.find("progress") == std::string_view::npos && keep(line);
    };
    bool wasStopped = false;
    fake.converts("/a.mov",
                  [&](const auto&, const auto& progress, const std::stop_token& token) -> Mode {
                      progress(0.25);
                      try {
                          test::waitForStop(token);
                      } catch (const Cancelled&) {
                          wasStopped = token.stop_requested();
                          throw;
                      }
                  });

    EXPECT_EQ(run(Command::convert, {"/a.mov", "/b.mov"}, breaksAtProgress),
              ExitStatus::someFailed);
    EXPECT_TRUE(wasStopped);
    EXPECT_THAT(fake.conversions(), SizeIs(1));
    EXPECT_THAT(lines.all(), ElementsAre(HasSubstr("ready"), HasSubstr("ready")));
}

TEST_F(DriveStop, ALastLineThatCannotBeWrittenIsAFailure) {
    const auto breaksAtTheEnd = [](std::string_view line) {
        return line.find("finished") == std::string_view::npos;
    };

    EXPECT_EQ(run(Command::analyze, {"/a.mov"}, breaksAtTheEnd), ExitStatus::someFailed);
}

} // namespace
} // namespace boxlift::drive
