#include "drive/events.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tools/fake_engine.h"

namespace boxlift::drive {
namespace {

Job filmJob() {
    return {.url = "/films/in.mov", .info = test::filmInfo(), .state = Job::State::ready};
}

TEST(ReadyEvent, TellsWhatAnalysisFoundAndWhatWillBeDone) {
    EXPECT_EQ(
        readyEvent(filmJob()),
        R"({"event":"ready","url":"/films/in.mov","info":{"hasVideo":true,"hasAudio":true,)"
        R"("videoCodec":"avc1","audioCodec":"aac ","width":1920,"height":1080,"duration":12.5},)"
        R"("summary":"H.264 1920×1080 · AAC · 0:13","target":"mp4","size":"original",)"
        R"("removeAudio":false,"blocker":null,"plan":{"mode":"boxlift",)"
        R"("detail":"H.264 and AAC already compatible, no quality loss"}})");
}

TEST(ReadyEvent, TellsTheSettings) {
    Job job = filmJob();
    job.target = Target::mov;
    job.size = SizeOption::p720;
    job.removeAudio = true;

    EXPECT_NE(readyEvent(job).find(R"("target":"mov","size":"p720","removeAudio":true,)"
                                   R"("blocker":null,"plan":{"mode":"reencode",)"
                                   R"("detail":"Video scaled to 720p"}})"),
              std::string::npos);
}

TEST(ReadyEvent, OfABlockedJobHasTheReasonAndNoPlan) {
    Job job = filmJob();
    job.info = test::silentInfo();
    job.target = Target::m4a;

    EXPECT_EQ(
        readyEvent(job),
        R"({"event":"ready","url":"/films/in.mov","info":{"hasVideo":true,"hasAudio":false,)"
        R"("videoCodec":"avc1","audioCodec":null,"width":1920,"height":1080,"duration":2},)"
        R"("summary":"H.264 1920×1080 · 0:02","target":"m4a","size":"original",)"
        R"("removeAudio":false,"blocker":"This file has no audio track to extract.","plan":null})");
}

TEST(ReadyEvent, WritesUnknownDurationsAsNull) {
    Job job = filmJob();
    job.info->duration = std::nan("");

    EXPECT_NE(readyEvent(job).find(R"("duration":null})"), std::string::npos);
}

TEST(ReadyEvent, WritesCodesAsMacRomanUntrimmed) {
    Job job = filmJob();
    job.info->videoCodec = 0x80208E20;
    job.info->audioCodec = 0x20090022;

    EXPECT_NE(readyEvent(job).find(R"("videoCodec":"Ä é ","audioCodec":" \u0009\u0000\"")"),
              std::string::npos);
}

TEST(FailedEvent, HasTheSentence) {
    EXPECT_EQ(failedEvent("/a.mov", "It is \"broken\"."),
              R"({"event":"failed","url":"/a.mov","message":"It is \"broken\"."})");
}

TEST(ProgressEvent, HasTheFraction) {
    EXPECT_EQ(progressEvent("/a.mov", 0.42),
              R"({"event":"progress","url":"/a.mov","fraction":0.42})");
    EXPECT_EQ(progressEvent("/a.mov", 1.0), R"({"event":"progress","url":"/a.mov","fraction":1})");
}

TEST(DoneEvent, HasTheOutputTheModeAndTheTime) {
    EXPECT_EQ(doneEvent("/abs/in.mov", "/abs/out/in.mp4", Mode::boxlift, 1.234),
              R"({"event":"done","url":"/abs/in.mov","output":"/abs/out/in.mp4",)"
              R"("mode":"boxlift","seconds":1.234})");
    EXPECT_NE(doneEvent("/a", "/b", Mode::reencode, 0).find(R"("mode":"reencode","seconds":0})"),
              std::string::npos);
}

TEST(CancelledEvent, HasTheFile) {
    EXPECT_EQ(cancelledEvent("/a.mov"), R"({"event":"cancelled","url":"/a.mov"})");
}

TEST(FinishedEvent, HasTheCounts) {
    EXPECT_EQ(finishedEvent({.done = 3, .failed = 1, .blocked = 0}),
              R"({"event":"finished","done":3,"failed":1,"blocked":0})");
}

TEST(Events, KeepEveryByteOfAName) {
    EXPECT_EQ(cancelledEvent("/caf\xE9\n.mov"),
              R"({"event":"cancelled","url":"/caf\udce9\u000a.mov"})");
}

} // namespace
} // namespace boxlift::drive
