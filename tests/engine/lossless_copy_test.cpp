#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/lossless_copy.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"
#include "fakes/recorder.h"

namespace boxlift {
namespace {

using namespace fakes;
using Status = media::ExportSession::Status;
using testing::HasSubstr;

class LosslessCopy : public testing::Test {
protected:
    LosslessCopy() { m_factory.sessions.resize(1); }

    SessionScript& script() { return m_factory.sessions[0]; }
    bool copy() {
        return Converter::copyLosslessly(m_asset, FileType::AVFileTypeQuickTimeMovie,
                                         "/out/clip.mov", m_recorder.callback(), m_stop.get_token(),
                                         m_factory);
    }
    /// Copies and returns what was logged meanwhile.
    std::string logOfCopy(bool& succeeded) {
        testing::internal::CaptureStderr();
        succeeded = copy();
        return testing::internal::GetCapturedStderr();
    }

    FakeFactory m_factory;
    std::shared_ptr<const FakeAsset> m_asset = std::make_shared<FakeAsset>();
    Recorder m_recorder;
    std::stop_source m_stop;
};

TEST_F(LosslessCopy, IsAnExportWithThePassthroughPreset) {
    EXPECT_TRUE(copy());
    ASSERT_EQ(m_factory.exports.size(), 1U);
    EXPECT_EQ(m_factory.exports[0].preset, ExportPreset::AVAssetExportPresetPassthrough);
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
    EXPECT_EQ(m_factory.exports[0].type, FileType::AVFileTypeQuickTimeMovie);
    EXPECT_EQ(m_factory.exports[0].url, "/out/clip.mov");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 1.0}));
}

TEST_F(LosslessCopy, LogsAndSwallowsTheErrorOfTheSession) {
    script().endStatus = Status::failed;
    script().error = planted(media::ErrorKind::noSpace);
    bool succeeded = true;
    EXPECT_THAT(logOfCopy(succeeded), HasSubstr("planted operation"));
    EXPECT_FALSE(succeeded);
}

TEST_F(LosslessCopy, LogsAndSwallowsTheEnginesOwnSentences) {
    script().presetFits = false;
    bool succeeded = true;
    EXPECT_THAT(logOfCopy(succeeded), HasSubstr("macOS has no export preset for this file."));
    EXPECT_FALSE(succeeded);
    script().presetFits = true;
    script().types = {};
    m_factory.exports.clear();
    EXPECT_THAT(logOfCopy(succeeded),
                HasSubstr("This content can't be written to that container."));
    EXPECT_FALSE(succeeded);
}

TEST_F(LosslessCopy, PassesATakenNameOnUnchangedAndUnlogged) {
    script().endStatus = Status::failed;
    script().error = planted(media::ErrorKind::nameTaken);
    testing::internal::CaptureStderr();
    EXPECT_EQ(exceptionOf([&] { copy(); }), script().error);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LosslessCopy, PassesCancellationOnUnlogged) {
    script().endStatus = Status::cancelled;
    testing::internal::CaptureStderr();
    EXPECT_EQ(outcomeOf([&] { copy(); }), "cancelled");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LosslessCopy, IsCancelledWhateverFailsAfterTheRequest) {
    script().endStatus = Status::failed;
    script().error = planted(media::ErrorKind::nameTaken);
    script().onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcomeOf([&] { copy(); }), "cancelled");
}

} // namespace
} // namespace boxlift
