#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/converter.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"
#include "fakes/recorder.h"

namespace boxlift {
namespace {

using namespace fakes;
using Status = media::ExportSession::Status;
using testing::HasSubstr;

class AudioTarget : public testing::Test {
protected:
    AudioTarget() {
        m_factory.sessions.resize(1);
        m_factory.reader.stamps = {media::Time::fromSeconds(5)};
    }

    SessionScript& script() { return m_factory.sessions[0]; }
    Mode convert(Mode planned, Target target) {
        return Converter::convertAudio(m_asset, Plan{planned, ""}, target, "/out/clip.m4a",
                                       m_recorder.callback(), m_stop.get_token(), m_factory);
    }
    std::string outcome(Mode planned, Target target) {
        return outcomeOf([&] { convert(planned, target); });
    }
    void failCopy(std::exception_ptr error) {
        script().endStatus = Status::failed;
        script().error = std::move(error);
    }
    int bitRate() const { return m_factory.writing.settings.bitRate; }

    FakeFactory m_factory;
    std::shared_ptr<const FakeAsset> m_asset = std::make_shared<FakeAsset>(
        std::vector<std::shared_ptr<const media::AssetTrack>>{audioTrack(fourCharCode("aac "))});
    Recorder m_recorder;
    std::stop_source m_stop;
};

TEST_F(AudioTarget, IsCopiedIntoAnM4aFileWhenThePlanSaysSo) {
    EXPECT_EQ(convert(Mode::boxlift, Target::m4a), Mode::boxlift);
    ASSERT_EQ(m_factory.exports.size(), 1U);
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
    EXPECT_EQ(m_factory.exports[0].preset, ExportPreset::AVAssetExportPresetPassthrough);
    EXPECT_EQ(m_factory.exports[0].type, FileType::AVFileTypeAppleM4A);
    EXPECT_EQ(m_factory.exports[0].url, "/out/clip.m4a");
    EXPECT_FALSE(m_factory.exports[0].optimize);
    EXPECT_FALSE(m_factory.events.contains("reader"));
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 1.0}));
}

TEST_F(AudioTarget, IsEncodedWithoutAnAttemptToCopyWhenThePlanSaysSo) {
    EXPECT_EQ(convert(Mode::reencode, Target::m4a), Mode::reencode);
    EXPECT_TRUE(m_factory.exports.empty());
    EXPECT_EQ(m_factory.reading.asset, m_asset);
    EXPECT_EQ(m_factory.writing.path, "/out/clip.m4a");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.5, 1.0}));
}

TEST_F(AudioTarget, HasItsOwnBitRate) {
    convert(Mode::reencode, Target::m4a);
    EXPECT_EQ(bitRate(), 256000);
    convert(Mode::reencode, Target::aac);
    EXPECT_EQ(bitRate(), 128000);
}

TEST_F(AudioTarget, IsEncodedAt256WhenTheCopyOfM4aFails) {
    failCopy(planted());
    EXPECT_EQ(convert(Mode::boxlift, Target::m4a), Mode::reencode);
    EXPECT_EQ(bitRate(), 256000);
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.5, 1.0}));
}

TEST_F(AudioTarget, IsDecidedByThePlanForAacToo) {
    EXPECT_EQ(convert(Mode::boxlift, Target::aac), Mode::boxlift);
    m_factory.exports.clear();
    failCopy(planted());
    EXPECT_EQ(convert(Mode::boxlift, Target::aac), Mode::reencode);
    EXPECT_EQ(bitRate(), 128000);
}

TEST_F(AudioTarget, IsEncodedWhenNoPresetOrContainerFits) {
    script().presetFits = false;
    EXPECT_EQ(convert(Mode::boxlift, Target::m4a), Mode::reencode);
    m_factory.exports.clear();
    script().presetFits = true;
    script().types = {FileType::AVFileTypeMPEG4};
    EXPECT_EQ(convert(Mode::boxlift, Target::m4a), Mode::reencode);
}

TEST_F(AudioTarget, LogsWhyItWasNotCopied) {
    failCopy(planted());
    testing::internal::CaptureStderr();
    convert(Mode::boxlift, Target::m4a);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("planted operation"));
}

TEST_F(AudioTarget, IsNotEncodedWhenTheCopyIsCancelled) {
    script().endsOnlyWhenCancelled = true;
    script().onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Mode::boxlift, Target::m4a), "cancelled");
    EXPECT_FALSE(m_factory.events.contains("reader"));
}

TEST_F(AudioTarget, IsNotEncodedWhenTheCopyFailsAfterTheRequestToStop) {
    failCopy(planted());
    script().onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Mode::boxlift, Target::m4a), "cancelled");
    EXPECT_FALSE(m_factory.events.contains("reader"));
}

TEST_F(AudioTarget, IsNotEncodedWhenItsNameIsTaken) {
    failCopy(planted(media::ErrorKind::nameTaken));
    EXPECT_EQ(exceptionOf([&] { convert(Mode::boxlift, Target::m4a); }), script().error);
    EXPECT_FALSE(m_factory.events.contains("reader"));
}

TEST_F(AudioTarget, PassesTheErrorOfTheEncodingOn) {
    m_factory.writer.endStatus = media::AssetWriter::Status::failed;
    m_factory.writer.error = planted(media::ErrorKind::nameTaken);
    EXPECT_EQ(exceptionOf([&] { convert(Mode::reencode, Target::aac); }), m_factory.writer.error);
    failCopy(planted());
    EXPECT_EQ(exceptionOf([&] { convert(Mode::boxlift, Target::m4a); }), m_factory.writer.error);
}

TEST_F(AudioTarget, IsCancelledWhileItIsEncoded) {
    m_factory.reader.onCopy = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Mode::reencode, Target::aac), "cancelled");
    EXPECT_TRUE(m_factory.events.contains("cancel writing"));
}

} // namespace
} // namespace boxlift
