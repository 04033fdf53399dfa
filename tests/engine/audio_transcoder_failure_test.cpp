#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/audio_transcoder_fixture.h"

namespace boxlift {
namespace {

using namespace fakes;
using ReaderStatus = media::AssetReader::Status;
using WriterStatus = media::AssetWriter::Status;

TEST_F(AudioTranscoder, PassesAFailureToLoadTheTracksOn) {
    m_asset->tracksError = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), m_asset->tracksError);
}

TEST_F(AudioTranscoder, PassesAFailureToLoadTheDurationOn) {
    m_asset->durationError = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), m_asset->durationError);
    EXPECT_TRUE(m_factory.events.all().empty());
}

TEST_F(AudioTranscoder, PassesAFailureToMakeTheReaderOn) {
    reader().makeError = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), reader().makeError);
    EXPECT_FALSE(happened("writer /out/clip.m4a"));
}

TEST_F(AudioTranscoder, SaysThatTheAudioCannotBeRead) {
    reader().takesMix = false;
    EXPECT_EQ(outcome(), "ConvertError: Couldn't read this file's audio.");
    EXPECT_FALSE(happened("add mix"));
    EXPECT_FALSE(happened("writer /out/clip.m4a"));
}

TEST_F(AudioTranscoder, PassesAFailureToMakeTheWriterOn) {
    writer().makeError = planted(media::ErrorKind::notPermitted);
    EXPECT_EQ(exceptionOf([&] { run(); }), writer().makeError);
    EXPECT_FALSE(happened("start reading"));
}

TEST_F(AudioTranscoder, SaysThatAacCannotBeWritten) {
    writer().takesInput = false;
    EXPECT_EQ(outcome(), "ConvertError: Couldn't write AAC audio.");
    EXPECT_FALSE(happened("add input"));
    EXPECT_FALSE(happened("start reading"));
}

TEST_F(AudioTranscoder, PassesTheReadersErrorOnWhenReadingDoesNotStart) {
    reader().starts = false;
    reader().error = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), reader().error);
    EXPECT_FALSE(happened("start writing"));
}

TEST_F(AudioTranscoder, HasASentenceForReadingThatDoesNotStart) {
    reader().starts = false;
    EXPECT_EQ(outcome(), "ConvertError: Couldn't read audio.");
    EXPECT_FALSE(happened("start writing"));
}

TEST_F(AudioTranscoder, PassesTheWritersErrorOnWhenWritingDoesNotStart) {
    writer().starts = false;
    writer().error = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), writer().error);
    EXPECT_FALSE(happened("start session"));
}

TEST_F(AudioTranscoder, HasASentenceForWritingThatDoesNotStart) {
    writer().starts = false;
    EXPECT_EQ(outcome(), "ConvertError: Couldn't start writing.");
    EXPECT_FALSE(happened("start session"));
}

TEST_F(AudioTranscoder, CancelsWritingAndPassesTheReadersErrorOnWhenReadingFails) {
    reader().endStatus = ReaderStatus::failed;
    reader().error = planted();
    EXPECT_EQ(exceptionOf([&] { run(); }), reader().error);
    EXPECT_TRUE(happened("mark as finished"));
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, HasASentenceForReadingThatEndsOtherThanCompleted) {
    for (const ReaderStatus status : {ReaderStatus::unknown, ReaderStatus::reading,
                                      ReaderStatus::failed, ReaderStatus::cancelled}) {
        reader().endStatus = status;
        EXPECT_EQ(outcome(), "ConvertError: Reading audio failed.");
    }
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, PassesTheWritersErrorOnWhenFinishingFails) {
    writer().endStatus = WriterStatus::failed;
    writer().error = planted(media::ErrorKind::noSpace);
    EXPECT_EQ(exceptionOf([&] { run(); }), writer().error);
    EXPECT_THAT(m_recorder.fractions(), testing::Not(testing::Contains(1.0)));
}

TEST_F(AudioTranscoder, HasASentenceForAWriterThatDoesNotComplete) {
    for (const WriterStatus status : {WriterStatus::unknown, WriterStatus::writing,
                                      WriterStatus::failed, WriterStatus::cancelled}) {
        writer().endStatus = status;
        EXPECT_EQ(outcome(), "ConvertError: Writing audio failed.");
    }
    EXPECT_THAT(m_recorder.fractions(), testing::Not(testing::Contains(1.0)));
}

TEST_F(AudioTranscoder, BringsWhatTheProgressCallbackThrowsToTheCaller) {
    const auto thrown = std::make_exception_ptr(std::runtime_error("no more"));
    EXPECT_EQ(exceptionOf([&] { run([&](double) { std::rethrow_exception(thrown); }); }), thrown);
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, TouchesNothingWhenCancelledBeforeTheStart) {
    m_stop.request_stop();
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(m_factory.events.all().empty());
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(AudioTranscoder, StopsReadingAndWritingWhenCancelledWhilePumping) {
    reader().error = planted();
    const auto record = m_recorder.callback();
    EXPECT_EQ(outcomeOf([&] {
                  run([&](double fraction) {
                      record(fraction);
                      if (fraction >= 0.25)
                          m_stop.request_stop();
                  });
              }),
              "cancelled");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.25}));
    EXPECT_TRUE(happened("cancel reading"));
    EXPECT_TRUE(happened("mark as finished"));
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, LeavesTheWaitForABusyWriterWhenCancelled) {
    writer().busyWaits = std::numeric_limits<int>::max();
    writer().onWait = [&] {
        if (m_factory.writing.timeouts.size() == 3)
            m_stop.request_stop();
    };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(m_factory.writing.timeouts.size(), 3U);
    EXPECT_TRUE(m_factory.writing.appended.empty());
    EXPECT_TRUE(happened("cancel writing"));
}

TEST_F(AudioTranscoder, CutsABufferThatTakesLongShortWhenCancelledFromAnotherThread) {
    reader().hangsUntilCancelled = true;
    std::jthread canceller([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        m_stop.request_stop();
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(happened("cancel writing"));
}

TEST_F(AudioTranscoder, IsCancelledWhateverReadingEndsWithAfterTheRequest) {
    reader().endStatus = ReaderStatus::failed;
    reader().error = planted();
    reader().stamps = stamps({0});
    EXPECT_EQ(outcomeOf([&] { run([&](double) { m_stop.request_stop(); }); }), "cancelled");
}

TEST_F(AudioTranscoder, IsCancelledWhenEverythingWasReadAlready) {
    writer().onMarkAsFinished = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_EQ(m_factory.writing.appended.size(), 4U);
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_FALSE(happened("finish writing"));
}

TEST_F(AudioTranscoder, IsCancelledWhileFinishing) {
    writer().finishesOnlyWhenCancelled = true;
    writer().error = planted();
    std::jthread canceller;
    writer().onFinish = [&] {
        canceller = std::jthread([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            m_stop.request_stop();
        });
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(happened("cancel writing"));
    EXPECT_THAT(m_recorder.fractions(), testing::Not(testing::Contains(1.0)));
}

TEST_F(AudioTranscoder, IsCancelledRatherThanFailedWhenStartingFailsAfterTheRequest) {
    writer().starts = false;
    writer().error = planted();
    m_factory.onMakeWriter = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "cancelled");
    EXPECT_TRUE(m_recorder.fractions().empty());
}

TEST_F(AudioTranscoder, SucceedsWhenTheRequestComesAfterTheFileHasItsName) {
    writer().onFinished = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(), "success");
    EXPECT_EQ(m_recorder.fractions().back(), 1.0);
}

} // namespace
} // namespace boxlift
