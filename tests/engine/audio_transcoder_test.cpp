#include <array>
#include <chrono>
#include <set>
#include <thread>

#include <pthread.h>

#include <gtest/gtest.h>

#include "fakes/audio_transcoder_fixture.h"

namespace boxlift {
namespace {

using namespace fakes;
using media::Time;

std::string nameOfThisThread() {
    std::array<char, 64> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

TEST_F(AudioTranscoder, TakesItsStepsInOrder) {
    reader().stamps = stamps({0});
    run();
    const std::vector<std::string> expected{
        "reader",        "add mix",          "writer /out/clip.m4a", "add input",
        "copy metadata", "start reading",    "start writing",        "start session",
        "append",        "mark as finished", "finish writing"};
    EXPECT_EQ(m_factory.events.all(), expected);
}

TEST_F(AudioTranscoder, MixesAllAudioTracksOfTheAsset) {
    run();
    const std::vector<std::shared_ptr<const media::AssetTrack>> audio{m_first, m_second};
    EXPECT_EQ(m_factory.reading.asset, m_asset);
    EXPECT_EQ(m_factory.reading.askedTracks, audio);
    EXPECT_EQ(m_factory.reading.tracks, audio);
}

TEST_F(AudioTranscoder, AsksForInterleavedLittleEndianSixteenBitStereo) {
    run();
    for (const auto& settings : {m_factory.reading.askedSettings, m_factory.reading.settings}) {
        EXPECT_EQ(settings.sampleRate, 44100);
        EXPECT_EQ(settings.channels, 2);
        EXPECT_EQ(settings.bitDepth, 16);
        EXPECT_FALSE(settings.isFloat);
        EXPECT_FALSE(settings.isBigEndian);
        EXPECT_FALSE(settings.isNonInterleaved);
    }
}

TEST_F(AudioTranscoder, WritesStereoAacOfTheBitRateIntoAnM4aFile) {
    run(m_recorder.callback(), 192000);
    EXPECT_EQ(m_factory.writing.path, "/out/clip.m4a");
    EXPECT_EQ(m_factory.writing.type, FileType::AVFileTypeAppleM4A);
    for (const auto& settings : {m_factory.writing.askedSettings, m_factory.writing.settings}) {
        EXPECT_EQ(settings.sampleRate, 44100);
        EXPECT_EQ(settings.channels, 2);
        EXPECT_EQ(settings.bitRate, 192000);
    }
    EXPECT_EQ(m_factory.writing.sessionStart, Time::zero());
}

TEST_F(AudioTranscoder, CarriesTheMetadataOfTheAssetOver) {
    run();
    EXPECT_EQ(m_factory.writing.metadataSource, m_asset.get());
}

TEST_F(AudioTranscoder, AppendsEveryBufferInOrder) {
    run();
    EXPECT_EQ(m_factory.writing.appended, stamps({0, 1, 2, 3}));
}

TEST_F(AudioTranscoder, DoesNotCareForAudioTracksBeingThere) {
    m_asset->trackList.clear();
    EXPECT_EQ(outcome(), "success");
    EXPECT_TRUE(m_factory.reading.tracks.empty());
    EXPECT_TRUE(happened("add mix"));
}

TEST_F(AudioTranscoder, WaitsForTheWriterInShortSteps) {
    writer().busyWaits = 2;
    run();
    // Two that time out, one for each buffer, one for the end.
    EXPECT_EQ(m_factory.writing.timeouts,
              std::vector<std::chrono::milliseconds>(7, std::chrono::milliseconds(50)));
    EXPECT_EQ(m_factory.writing.appended.size(), 4U);
}

TEST_F(AudioTranscoder, DoesNotCareForTheResultOfAnAppend) {
    writer().takesBuffers = false;
    EXPECT_EQ(outcome(), "success");
    EXPECT_EQ(m_factory.writing.appended.size(), 4U);
}

TEST_F(AudioTranscoder, ReportsEachBufferAndTheEnd) {
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.25, 0.5, 0.75, 1.0}));
}

TEST_F(AudioTranscoder, ReportsOneOnlyOnceWhenBuffersReachPastTheDuration) {
    reader().stamps = stamps({0, 3, 4, 5, 2});
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.75, 0.5, 1.0}));
}

TEST_F(AudioTranscoder, ReportsHowFarEncodingHasComeWhereThatIsLess) {
    writer().encoded = stamps({0, 0.5, 5, 1, 2, 3});
    writer().encodingWaits = 2;
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.125, 0.5, 0.25, 0.5, 0.75, 1.0}));
}

TEST_F(AudioTranscoder, IsCancelledWhileTheWriterStillEncodes) {
    writer().encodingWaits = 1'000'000;
    writer().onEncodingWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, TellsTheWriterHowLongTheFileWillBe) {
    run();
    EXPECT_EQ(m_factory.writing.durationHint, Time::fromSeconds(4));
}

TEST_F(AudioTranscoder, ReportsTheEndAfterFinishing) {
    std::vector<bool> finishedWhenReported;
    run([&](double) { finishedWhenReported.push_back(happened("finish writing")); });
    EXPECT_EQ(finishedWhenReported, (std::vector<bool>{false, false, false, false, true}));
}

TEST_F(AudioTranscoder, ReportsNegativeTimesAsTheyAre) {
    reader().stamps = stamps({-1, 0});
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{-0.25, 0.0, 1.0}));
}

TEST_F(AudioTranscoder, DividesByAThousandthOfASecondWhenTheDurationIsZero) {
    m_asset->length = Time::zero();
    reader().stamps = stamps({0, 0.0005, 0.5, 7});
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.5, 1.0}));
}

TEST_F(AudioTranscoder, DividesByAThousandthOfASecondWhenTheDurationIsUnknownOrLess) {
    reader().stamps = stamps({0.0005, 3});
    for (const Time length : {Time(), Time::fromSeconds(-5), Time::fromSeconds(0.0001)}) {
        Recorder recorder;
        m_asset->length = length;
        run(recorder.callback());
        EXPECT_EQ(recorder.fractions(), (std::vector<double>{0.5, 1.0}));
    }
}

TEST_F(AudioTranscoder, ReportsNothingForABufferWithoutATime) {
    reader().stamps = {Time(), Time::fromSeconds(1)};
    run();
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.25, 1.0}));
}

TEST_F(AudioTranscoder, PumpsOnAThreadOfThatName) {
    std::vector<std::string> names;
    const auto caller = std::this_thread::get_id();
    std::set<bool> wasCaller;
    reader().stamps = stamps({0, 1});
    reader().onCopy = [&] {
        names.push_back(nameOfThisThread());
        wasCaller.insert(std::this_thread::get_id() == caller);
    };
    run();
    EXPECT_EQ(names, std::vector<std::string>(3, "boxlift.audio"));
    EXPECT_EQ(wasCaller, std::set<bool>{false});
}

TEST_F(AudioTranscoder, ReportsBuffersFromItsThreadAndTheEndFromTheCaller) {
    std::vector<std::string> names;
    std::vector<bool> fromCaller;
    const auto caller = std::this_thread::get_id();
    reader().stamps = stamps({0, 1});
    run([&](double) {
        names.push_back(nameOfThisThread());
        fromCaller.push_back(std::this_thread::get_id() == caller);
    });
    EXPECT_EQ(fromCaller, (std::vector<bool>{false, false, true}));
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(names[0], "boxlift.audio");
    EXPECT_EQ(names[1], "boxlift.audio");
    EXPECT_EQ(names[2], nameOfThisThread());
}

/// Two calls, the second within a report of the first: had they one thread between them, the
/// inner one would wait for ever.
TEST_F(AudioTranscoder, HasAThreadOfItsOwnForEachCall) {
    FakeFactory inner;
    inner.reader.stamps = stamps({0});
    std::thread::id outerThread;
    std::thread::id innerThread;
    reader().stamps = stamps({0});
    run([&](double fraction) {
        if (fraction == 1.0)
            return;
        outerThread = std::this_thread::get_id();
        inner.reader.onCopy = [&] { innerThread = std::this_thread::get_id(); };
        Converter::transcodeAudio(
            m_asset, 128000, "/out/b.m4a", [](double) {}, {}, inner);
    });
    EXPECT_NE(innerThread, std::thread::id());
    EXPECT_NE(innerThread, outerThread);
    EXPECT_TRUE(inner.events.contains("finish writing"));
}

} // namespace
} // namespace boxlift
