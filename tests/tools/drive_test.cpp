#include "drive/drive.h"

#include <atomic>
#include <chrono>
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
using boxlift::test::writeFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

/// Analyses `paths` with `fake`.
class Analysis {
public:
    ExitStatus run(std::vector<fs::path> paths) {
        CommandLine line;
        line.paths = std::move(paths);
        return drive(line, fake.engine(), lines.sink(), {});
    }

    test::FakeEngine fake;
    test::Lines lines;
};

std::string readyLine(const fs::path& url) {
    return R"({"event":"ready","url":")" + url.native() +
           R"(","info":{"hasVideo":true,"hasAudio":true,"videoCodec":"avc1",)"
           R"("audioCodec":"aac ","width":1920,"height":1080,"duration":12.5},)"
           R"("summary":"H.264 1920×1080 · AAC · 0:13","target":"mp4","size":"original",)"
           R"("removeAudio":false,"blocker":null,"plan":{"mode":"boxlift",)"
           R"("detail":"H.264 and AAC already compatible, no quality loss"}})";
}

TEST(DriveAnalyze, WritesReadyAndFinished) {
    Analysis analysis;

    EXPECT_EQ(analysis.run({"/films/in.mov"}), ExitStatus::allWell);
    EXPECT_THAT(analysis.lines.all(),
                ElementsAre(readyLine("/films/in.mov"),
                            R"({"event":"finished","done":1,"failed":0,"blocked":0})"));
}

TEST(DriveAnalyze, ConvertsNothing) {
    Analysis analysis;
    analysis.run({"/films/in.mov"});

    EXPECT_THAT(analysis.fake.conversions(), IsEmpty());
}

TEST(DriveAnalyze, WritesFailuresAndSaysSoAtTheEnd) {
    Analysis analysis;
    analysis.fake.analyzes("/b.mkv",
                           [](const auto&) -> MediaInfo { throw ConvertError("Not this one."); });

    EXPECT_EQ(analysis.run({"/a.mov", "/b.mkv"}), ExitStatus::someFailed);
    EXPECT_THAT(analysis.lines.with("failed\",\"url"),
                ElementsAre(R"({"event":"failed","url":"/b.mkv","message":"Not this one."})"));
    EXPECT_EQ(analysis.lines.all().back(),
              R"({"event":"finished","done":1,"failed":1,"blocked":0})");
}

TEST(DriveAnalyze, GivesUnforeseenErrorsTheGeneralSentence) {
    Analysis analysis;
    analysis.fake.analyzes("/a.mov",
                           [](const auto&) -> MediaInfo { throw std::runtime_error("stoi"); });

    EXPECT_EQ(analysis.run({"/a.mov"}), ExitStatus::someFailed);
    EXPECT_EQ(analysis.lines.all().front(),
              R"({"event":"failed","url":"/a.mov",)"
              R"("message":"The operation could not be completed."})");
}

TEST(DriveAnalyze, SwitchesAFileWithoutPictureToM4a) {
    Analysis analysis;
    analysis.fake.analyzes("/song.wav", [](const auto&) { return test::songInfo(); });

    EXPECT_EQ(analysis.run({"/song.wav"}), ExitStatus::allWell);
    EXPECT_THAT(analysis.lines.all().front(),
                HasSubstr(R"("summary":"AAC · 0:03","target":"m4a","size":"original",)"
                          R"("removeAudio":false,"blocker":null,"plan":{"mode":"boxlift",)"
                          R"("detail":"AAC audio copied as-is, no quality loss"}})"));
}

TEST(DriveAnalyze, CountsFilesThatAreNamedTwiceOnce) {
    Analysis analysis;
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mov");
    const auto b = writeFile(folder.path() / "b.mov");
    analysis.run({b, folder.path(), b, a});

    EXPECT_THAT(analysis.lines.all(),
                UnorderedElementsAre(readyLine(a), readyLine(b),
                                     R"({"event":"finished","done":2,"failed":0,"blocked":0})"));
}

TEST(DriveAnalyze, TellsPathsThatOnlyMeanTheSameFileApart) {
    Analysis analysis;
    analysis.run({"/films/../a.mov", "/a.mov"});

    EXPECT_THAT(analysis.lines.with("ready"), SizeIs(2));
}

TEST(DriveAnalyze, OfAnEmptyFolderOnlyFinishes) {
    Analysis analysis;
    const TempFolder folder;

    EXPECT_EQ(analysis.run({folder.path()}), ExitStatus::allWell);
    EXPECT_THAT(analysis.lines.all(),
                ElementsAre(R"({"event":"finished","done":0,"failed":0,"blocked":0})"));
}

TEST(DriveAnalyze, WritesEachFileAsItsAnalysisEnds) {
    if (std::thread::hardware_concurrency() < 2)
        GTEST_SKIP() << "analyses are as many at a time as there are cores";
    Analysis analysis;
    bool sawSecond = false;
    analysis.fake.analyzes("/slow.mov", [&](const auto&) {
        sawSecond = analysis.lines.waitFor("/quick.mov");
        return test::filmInfo();
    });

    EXPECT_EQ(analysis.run({"/slow.mov", "/quick.mov"}), ExitStatus::allWell);
    EXPECT_TRUE(sawSecond);
    EXPECT_THAT(analysis.lines.all(),
                ElementsAre(readyLine("/quick.mov"), readyLine("/slow.mov"),
                            R"({"event":"finished","done":2,"failed":0,"blocked":0})"));
}

TEST(DriveAnalyze, RunsAsManyAnalysesAtATimeAsThereAreCores) {
    Analysis analysis;
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    std::vector<fs::path> paths;
    for (int i = 0; i < 40; ++i) {
        paths.push_back("/" + std::to_string(i));
        analysis.fake.analyzes(paths.back(), [&](const auto&) {
            const int now = ++running;
            for (int before = most; before < now && !most.compare_exchange_weak(before, now);) {
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            --running;
            return test::filmInfo();
        });
    }
    analysis.run(paths);

    EXPECT_LE(most, static_cast<int>(std::thread::hardware_concurrency()));
    EXPECT_THAT(analysis.lines.with("ready"), SizeIs(40));
}

TEST(DriveAnalyze, NeverWorksOnTheCallingThread) {
    Analysis analysis;
    std::thread::id seen;
    analysis.fake.analyzes("/a.mov", [&](const auto&) {
        seen = std::this_thread::get_id();
        return test::filmInfo();
    });
    analysis.run({"/a.mov"});

    EXPECT_NE(seen, std::thread::id());
    EXPECT_NE(seen, std::this_thread::get_id());
}

} // namespace
} // namespace boxlift::drive
