#include "drive/drive.h"

#include <chrono>
#include <new>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "support/temp_folder.h"
#include "tools/fake_engine.h"
#include "tools/lines.h"

namespace boxlift::drive {
namespace {

namespace fs = std::filesystem;
using boxlift::test::readFile;
using boxlift::test::TempFolder;
using boxlift::test::writeFile;
using test::ConvertCall;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// Converts with `fake` into an output folder that does not exist at first.
class DriveConvert : public testing::Test {
protected:
    ExitStatus run(std::vector<fs::path> paths) {
        line.command = Command::convert;
        line.outputDir = output;
        line.paths = std::move(paths);
        return drive(line, fake.engine(), lines.sink(), {});
    }

    /// The events of the run, the analyses left out, elapsed times blotted out.
    std::vector<std::string> runLines() const {
        std::vector<std::string> result;
        for (const std::string& text : lines.all()) {
            if (text.find(R"("ready")") == std::string::npos)
                result.push_back(withoutTime(text));
        }
        return result;
    }

    static std::string withoutTime(std::string line) {
        constexpr std::string_view key = R"("seconds":)";
        const std::size_t start = line.find(key);
        if (start == std::string::npos)
            return line;
        const std::size_t number = start + key.size();
        const std::size_t end = line.find_first_not_of("0123456789.e-", number);
        return line.replace(number, end - number, "S");
    }

    std::string doneLine(const fs::path& url, const std::string& name,
                         const std::string& mode = "boxlift") const {
        return R"({"event":"done","url":")" + url.native() + R"(","output":")" +
               (output / name).native() + R"(","mode":")" + mode + R"(","seconds":S})";
    }

    static std::string progressLine(const std::string& url, const std::string& fraction) {
        return R"({"event":"progress","url":")" + url + R"(","fraction":)" + fraction + "}";
    }

    /// Names of the outputs that the engine was asked for.
    std::vector<std::string> outputNames() const {
        std::vector<std::string> names;
        for (const ConvertCall& call : fake.conversions())
            names.push_back(call.output.filename().native());
        return names;
    }

    const TempFolder folder;
    const fs::path output = folder.path() / "out" / "films";
    CommandLine line;
    test::FakeEngine fake;
    test::Lines lines;
};

TEST_F(DriveConvert, WritesEveryStepInItsOrder) {
    EXPECT_EQ(run({"/in.mov"}), ExitStatus::allWell);
    ASSERT_THAT(lines.all(), Not(IsEmpty()));
    EXPECT_THAT(lines.all().front(), HasSubstr(R"({"event":"ready","url":"/in.mov")"));
    EXPECT_THAT(runLines(), ElementsAre(progressLine("/in.mov", "0"), progressLine("/in.mov", "1"),
                                        doneLine("/in.mov", "in.mp4"),
                                        R"({"event":"finished","done":1,"failed":0,"blocked":0})"));
}

TEST_F(DriveConvert, HandsTheEngineTheFileItsInfoAndTheSettings) {
    line.target = Target::mov;
    line.size = SizeOption::p1080;
    line.removeAudio = true;
    run({"/in.mov"});

    EXPECT_THAT(fake.conversions(),
                ElementsAre(ConvertCall{"/in.mov", test::filmInfo(), Target::mov, SizeOption::p1080,
                                        true, output / "in.mov"}));
}

TEST_F(DriveConvert, WritesTheModeThatWasReallyUsed) {
    fake.converts("/in.mov", [](const auto&, const auto& progress, const auto&) {
        progress(1.0);
        return Mode::reencode;
    });
    run({"/in.mov"});

    EXPECT_THAT(runLines(), testing::Contains(doneLine("/in.mov", "in.mp4", "reencode")));
}

TEST_F(DriveConvert, MeasuresTheTimeOfTheConversion) {
    fake.converts("/in.mov", [](const auto&, const auto& progress, const auto&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        progress(1.0);
        return Mode::boxlift;
    });
    run({"/in.mov"});
    const std::string done = lines.with(R"("done","url")").at(0);
    const double seconds = std::stod(done.substr(done.find(R"("seconds":)") + 10));

    EXPECT_GE(seconds, 0.05);
    EXPECT_LT(seconds, 5);
}

TEST_F(DriveConvert, BeginsWhenAllAnalysesHaveEnded) {
    fake.analyzes("/slow.mov", [](const auto&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return test::filmInfo();
    });
    fake.converts("/quick.mov", [this](const auto& call, const auto& progress, const auto& stop) {
        EXPECT_THAT(lines.with("ready"), SizeIs(2));
        return test::copyAtOnce(call, progress, stop);
    });

    EXPECT_EQ(run({"/quick.mov", "/slow.mov"}), ExitStatus::allWell);
}

TEST_F(DriveConvert, RunsInTheOrderOfTheListHoweverTheAnalysesEnd) {
    fake.analyzes("/c.mov", [](const auto&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return test::filmInfo();
    });
    run({"/c.mov", "/a.mov", "/b.mov"});

    EXPECT_THAT(outputNames(), ElementsAre("c.mp4", "a.mp4", "b.mp4"));
    EXPECT_THAT(lines.with(R"("done","url")"),
                ElementsAre(HasSubstr("/c.mov"), HasSubstr("/a.mov"), HasSubstr("/b.mov")));
}

TEST_F(DriveConvert, LeavesBlockedJobsAloneAndCountsThem) {
    line.target = Target::m4a;
    fake.analyzes("/silent.mov", [](const auto&) { return test::silentInfo(); });

    EXPECT_EQ(run({"/silent.mov", "/film.mov"}), ExitStatus::someFailed);
    EXPECT_THAT(lines.with(R"("ready","url":"/silent.mov")"),
                ElementsAre(HasSubstr(R"("blocker":"This file has no audio track to extract.")")));
    EXPECT_THAT(outputNames(), ElementsAre("film.m4a"));
    EXPECT_EQ(lines.all().back(), R"({"event":"finished","done":1,"failed":0,"blocked":1})");
}

TEST_F(DriveConvert, TakesAFileWithoutPictureToM4a) {
    fake.analyzes("/song.wav", [](const auto&) { return test::songInfo(); });

    EXPECT_EQ(run({"/song.wav"}), ExitStatus::allWell);
    EXPECT_THAT(outputNames(), ElementsAre("song.m4a"));
    EXPECT_EQ(fake.conversions().at(0).target, Target::m4a);
}

TEST_F(DriveConvert, GoesOnAfterFailures) {
    fake.analyzes("/a.mov", [](const auto&) -> MediaInfo { throw ConvertError("No film."); });
    fake.converts("/b.mov", [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("Export failed.");
    });

    EXPECT_EQ(run({"/a.mov", "/b.mov", "/c.mov"}), ExitStatus::someFailed);
    EXPECT_THAT(lines.with(R"("event":"failed")"),
                ElementsAre(R"({"event":"failed","url":"/a.mov","message":"No film."})",
                            R"({"event":"failed","url":"/b.mov","message":"Export failed."})"));
    EXPECT_THAT(outputNames(), ElementsAre("b.mp4", "c.mp4"));
    EXPECT_EQ(lines.all().back(), R"({"event":"finished","done":1,"failed":2,"blocked":0})");
}

TEST_F(DriveConvert, ShowsTheSentenceOfAMediaError) {
    const media::Error error(media::ErrorKind::noSpace, "write", "/out/a.mp4", "no room");
    fake.converts("/a.mov", [&](const auto&, const auto&, const auto&) -> Mode { throw error; });

    EXPECT_EQ(run({"/a.mov"}), ExitStatus::someFailed);
    EXPECT_THAT(lines.with(R"("event":"failed")"),
                ElementsAre(R"({"event":"failed","url":"/a.mov","message":")" +
                            std::string(error.what()) + R"("})"));
}

TEST_F(DriveConvert, GivesUnforeseenErrorsTheGeneralSentence) {
    fake.converts("/a.mov",
                  [](const auto&, const auto&, const auto&) -> Mode { throw std::bad_alloc(); });

    EXPECT_EQ(run({"/a.mov"}), ExitStatus::someFailed);
    EXPECT_THAT(lines.with(R"("event":"failed")"),
                ElementsAre(R"({"event":"failed","url":"/a.mov",)"
                            R"("message":"The operation could not be completed."})"));
}

TEST_F(DriveConvert, TakesACancellationForNoFailureAndNoSuccess) {
    fake.converts("/a.mov", [](const auto&, const auto& progress, const auto&) -> Mode {
        progress(0.5);
        throw Cancelled();
    });

    EXPECT_EQ(run({"/a.mov"}), ExitStatus::someFailed);
    EXPECT_EQ(runLines().end()[-2], R"({"event":"cancelled","url":"/a.mov"})");
    EXPECT_EQ(runLines().back(), R"({"event":"finished","done":0,"failed":0,"blocked":0})");
}

TEST_F(DriveConvert, MakesTheOutputFolderWithThoseAboveIt) {
    ASSERT_FALSE(fs::exists(output.parent_path()));
    run({"/in.mov"});

    EXPECT_EQ(readFile(output / "in.mp4"), "converted");
}

TEST_F(DriveConvert, LetsTheConversionTellThatTheOutputFolderCannotBeMade) {
    writeFile(output.parent_path());
    fake.converts("/in.mov", [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("There is no such folder.");
    });

    EXPECT_EQ(run({"/in.mov"}), ExitStatus::someFailed);
    EXPECT_THAT(outputNames(), ElementsAre("in.mp4"));
    EXPECT_THAT(runLines().at(0), HasSubstr("There is no such folder."));
}

TEST_F(DriveConvert, MakesNoOutputFolderWithoutAJobToRun) {
    fake.analyzes("/a.mov", [](const auto&) -> MediaInfo { throw ConvertError("No film."); });
    run({"/a.mov"});

    EXPECT_FALSE(fs::exists(output.parent_path()));
}

TEST_F(DriveConvert, TakesTheNextFreeName) {
    writeFile(output / "a.mp4", "mine");
    fs::create_directory(output / "a 2.mp4");

    EXPECT_EQ(run({"/a.mov"}), ExitStatus::allWell);
    EXPECT_THAT(runLines(), testing::Contains(doneLine("/a.mov", "a 3.mp4")));
    EXPECT_EQ(readFile(output / "a.mp4"), "mine");
}

TEST_F(DriveConvert, TakesADanglingLinkForATakenName) {
    fs::create_directories(output);
    fs::create_symlink("nowhere", output / "a.mp4");
    run({"/a.mov"});

    EXPECT_THAT(outputNames(), ElementsAre("a 2.mp4"));
    EXPECT_TRUE(fs::is_symlink(output / "a.mp4"));
}

TEST_F(DriveConvert, KeepsOutputsOfOneNameApart) {
    run({"/x/a.mov", "/y/a.mp4", "/z/a"});

    EXPECT_THAT(outputNames(), ElementsAre("a.mp4", "a 2.mp4", "a 3.mp4"));
}

TEST_F(DriveConvert, LeavesAnInputInTheOutputFolderUntouched) {
    const auto input = writeFile(output / "clip.mp4", "source");
    run({input});

    EXPECT_THAT(outputNames(), ElementsAre("clip 2.mp4"));
    EXPECT_EQ(readFile(input), "source");
}

TEST_F(DriveConvert, KeepsEveryByteOfAName) {
    EXPECT_EQ(run({"/caf\xE9.x\xFF.mov"}), ExitStatus::allWell);
    EXPECT_TRUE(fs::exists(output / "caf\xE9.x\xFF.mp4"));
    EXPECT_THAT(runLines(), testing::Contains(R"({"event":"done","url":"/caf\udce9.x\udcff.mov",)"
                                              R"("output":")" +
                                              output.native() +
                                              R"(/caf\udce9.x\udcff.mp4","mode":"boxlift",)"
                                              R"("seconds":S})"));
}

TEST_F(DriveConvert, WritesTheFirstReportAtOnce) {
    bool seen = false;
    fake.converts("/a.mov", [&](const auto& call, const auto& progress, const auto& stop) {
        progress(0.0);
        seen = lines.waitFor(progressLine("/a.mov", "0"));
        return test::copyAtOnce(call, progress, stop);
    });
    run({"/a.mov"});

    EXPECT_TRUE(seen);
}

TEST_F(DriveConvert, WritesAReportThatRepeatsOnce) {
    fake.converts("/a.mov", [this](const auto& call, const auto& progress, const auto& stop) {
        progress(0.5);
        EXPECT_TRUE(lines.waitFor(progressLine("/a.mov", "0.5")));
        progress(0.5);
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        progress(1.0);
        return test::copyAtOnce(call, progress, stop);
    });
    run({"/a.mov"});

    EXPECT_THAT(lines.with(R"("progress")"),
                ElementsAre(progressLine("/a.mov", "0.5"), progressLine("/a.mov", "1")));
}

TEST_F(DriveConvert, CompletesTheProgressOfAConversionThatReportsNothing) {
    fake.converts("/a.mov",
                  [](const auto&, const auto&, const auto&) -> Mode { return Mode::reencode; });
    run({"/a.mov"});

    EXPECT_THAT(runLines(),
                ElementsAre(progressLine("/a.mov", "1"), doneLine("/a.mov", "a.mp4", "reencode"),
                            HasSubstr("finished")));
}

TEST_F(DriveConvert, WritesTheProgressOfAConversionThatFails) {
    fake.converts("/a.mov", [](const auto&, const auto& progress, const auto&) -> Mode {
        progress(0.0);
        throw ConvertError("Export failed.");
    });
    run({"/a.mov"});

    EXPECT_THAT(runLines(), ElementsAre(progressLine("/a.mov", "0"), HasSubstr("Export failed."),
                                        HasSubstr("finished")));
}

TEST_F(DriveConvert, WritesProgressAtMostTenTimesASecond) {
    const auto start = std::chrono::steady_clock::now();
    fake.converts("/a.mov", [](const auto&, const auto& progress, const auto&) {
        for (int i = 0; i < 250; ++i) {
            progress(i / 250.0);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        progress(1.0);
        return Mode::boxlift;
    });
    run({"/a.mov"});
    const auto elapsed = std::chrono::steady_clock::now() - start;

    const auto reports = lines.with(R"("progress")");
    EXPECT_LE(static_cast<long>(reports.size()), 2 + elapsed / std::chrono::milliseconds(100));
    EXPECT_GE(reports.size(), 3u);
    EXPECT_EQ(reports.back(), progressLine("/a.mov", "1"));
}

TEST_F(DriveConvert, WritesNoProgressAfterAJobHasEnded) {
    Converter::Progress late;
    fake.converts("/a.mov", [&](const auto& call, const auto& progress, const auto& stop) {
        late = progress;
        return test::copyAtOnce(call, progress, stop);
    });
    fake.converts("/b.mov", [&](const auto& call, const auto& progress, const auto& stop) {
        late(0.5);
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        late(1.0);
        return test::copyAtOnce(call, progress, stop);
    });
    run({"/a.mov", "/b.mov"});
    late(0.7);

    EXPECT_THAT(lines.with(R"("progress","url":"/a.mov","fraction":0.)"), IsEmpty());
    EXPECT_THAT(lines.with(progressLine("/a.mov", "1")), SizeIs(1));
    EXPECT_THAT(lines.all().back(), HasSubstr("finished"));
}

TEST_F(DriveConvert, TakesReportsOfSeveralThreads) {
    fake.converts("/a.mov", [](const auto&, const auto& progress, const auto&) {
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < 4; ++i)
                threads.emplace_back([&progress, i] { progress(i / 8.0); });
        }
        progress(1.0);
        return Mode::boxlift;
    });

    EXPECT_EQ(run({"/a.mov"}), ExitStatus::allWell);
    EXPECT_THAT(lines.with(progressLine("/a.mov", "1")), SizeIs(1));
}

TEST_F(DriveConvert, NeverWorksOnTheCallingThread) {
    std::thread::id seen;
    fake.converts("/a.mov", [&](const auto& call, const auto& progress, const auto& stop) {
        seen = std::this_thread::get_id();
        return test::copyAtOnce(call, progress, stop);
    });
    run({"/a.mov"});

    EXPECT_NE(seen, std::thread::id());
    EXPECT_NE(seen, std::this_thread::get_id());
}

} // namespace
} // namespace boxlift::drive
