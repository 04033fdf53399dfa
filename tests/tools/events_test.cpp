#include "drive/events.h"

#include <cmath>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "tools/fake_engine.h"

namespace boxlift::drive {
namespace {

/// A job as it is after its analysis, which finds `info`.
class ReadyJob {
public:
    explicit ReadyJob(const MediaInfo& info, const JobSettings& settings = {})
        : m_workers({.analyze = [info](const auto&, const auto&) { return info; }, .convert = {}}),
          m_job(std::make_shared<Job>("/films/in.mov", settings, m_workers)) {
        const auto analysis = m_job->analyze();
        while (!analysis.isReady())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    const Job& operator*() const { return *m_job; }

private:
    Workers m_workers;
    std::shared_ptr<Job> m_job;
};

TEST(ReadyEvent, TellsWhatAnalysisFoundAndWhatWillBeDone) {
    const ReadyJob job(test::filmInfo());

    EXPECT_EQ(
        readyEvent(*job),
        R"({"event":"ready","url":"/films/in.mov","info":{"hasVideo":true,"hasAudio":true,)"
        R"("videoCodec":"avc1","audioCodec":"aac ","width":1920,"height":1080,"duration":12.5},)"
        R"("summary":"H.264 1920×1080 · AAC · 0:13","target":"mp4","size":"original",)"
        R"("removeAudio":false,"blocker":null,"plan":{"mode":"boxlift",)"
        R"("detail":"H.264 and AAC already compatible, no quality loss"}})");
}

TEST(ReadyEvent, TellsTheSettings) {
    const ReadyJob job(test::filmInfo(), {Target::mov, SizeOption::p720, true});

    EXPECT_NE(readyEvent(*job).find(R"("target":"mov","size":"p720","removeAudio":true,)"
                                    R"("blocker":null,"plan":{"mode":"reencode",)"
                                    R"("detail":"Video scaled to 720p"}})"),
              std::string::npos);
}

TEST(ReadyEvent, OfABlockedJobHasTheReasonAndNoPlan) {
    const ReadyJob job(test::silentInfo(), {.target = Target::m4a});

    EXPECT_EQ(
        readyEvent(*job),
        R"({"event":"ready","url":"/films/in.mov","info":{"hasVideo":true,"hasAudio":false,)"
        R"("videoCodec":"avc1","audioCodec":null,"width":1920,"height":1080,"duration":2},)"
        R"("summary":"H.264 1920×1080 · 0:02","target":"m4a","size":"original",)"
        R"("removeAudio":false,"blocker":"This file has no audio track to extract.","plan":null})");
}

TEST(ReadyEvent, WritesUnknownDurationsAsNull) {
    MediaInfo info = test::filmInfo();
    info.duration = std::nan("");
    const ReadyJob job(info);

    EXPECT_NE(readyEvent(*job).find(R"("duration":null})"), std::string::npos);
}

TEST(ReadyEvent, WritesCodesAsMacRomanUntrimmed) {
    MediaInfo info = test::filmInfo();
    info.videoCodec = 0x80208E20;
    info.audioCodec = 0x20090022;
    const ReadyJob job(info);

    EXPECT_NE(readyEvent(*job).find(R"("videoCodec":"Ä é ","audioCodec":" \u0009\u0000\"")"),
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
