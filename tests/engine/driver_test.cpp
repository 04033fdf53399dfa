#include <algorithm>

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
using testing::IsEmpty;

constexpr auto passthrough = ExportPreset::AVAssetExportPresetPassthrough;
constexpr auto highest = ExportPreset::AVAssetExportPresetHighestQuality;
constexpr auto fit1080 = ExportPreset::AVAssetExportPreset1920x1080;
constexpr auto fit720 = ExportPreset::AVAssetExportPreset1280x720;

class Driver : public testing::Test {
protected:
    Driver() {
        m_asset->trackList = {videoTrack(fourCharCode("avc1"), {1920, 1080}),
                              audioTrack(fourCharCode("aac "))};
        m_info.hasVideo = true;
        m_info.hasAudio = true;
        m_info.videoCodec = fourCharCode("avc1");
        m_info.audioCodec = fourCharCode("aac ");
        m_factory.asset = m_asset;
        m_factory.sessions.resize(2);
        m_factory.reader.stamps = {media::Time::fromSeconds(5)};
    }

    Mode convert(Target target, SizeOption size = SizeOption::original, bool removeAudio = false) {
        return Converter::convert("/in/clip.mov", m_info, target, size, removeAudio, "/out/clip.x",
                                  m_recorder.callback(), m_stop.get_token(), m_factory);
    }
    std::string outcome(Target target) {
        return outcomeOf([&] { convert(target); });
    }
    void failSession(std::size_t index, std::exception_ptr error) {
        m_factory.sessions[index].endStatus = Status::failed;
        m_factory.sessions[index].error = std::move(error);
    }
    std::vector<ExportPreset> presets() const {
        std::vector<ExportPreset> result;
        for (const auto& record : m_factory.exports)
            result.push_back(record.preset);
        return result;
    }
    bool happened(const std::string& event) const { return m_factory.events.contains(event); }

    FakeFactory m_factory;
    std::shared_ptr<FakeAsset> m_asset = std::make_shared<FakeAsset>();
    MediaInfo m_info;
    Recorder m_recorder;
    std::stop_source m_stop;
};

TEST_F(Driver, ClearsTheOutputThenOpensThenExports) {
    convert(Target::mov);
    const std::vector<std::string> expected{
        "clear /out/clip.x for /in/clip.mov", "open /in/clip.mov",
        "session AVAssetExportPresetPassthrough", "start export"};
    EXPECT_EQ(m_factory.events.all(), expected);
    EXPECT_EQ(m_factory.openToken, m_stop.get_token());
}

TEST_F(Driver, CopiesWhatTheContainerTakesInOneExport) {
    EXPECT_EQ(convert(Target::mov), Mode::boxlift);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
    EXPECT_EQ(m_factory.exports[0].url, "/out/clip.x");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 1.0}));
}

TEST_F(Driver, WritesTheContainerOfTheTarget) {
    convert(Target::mp4);
    convert(Target::mov);
    EXPECT_EQ(m_factory.exports.at(0).type, FileType::AVFileTypeMPEG4);
    EXPECT_EQ(m_factory.exports.at(1).type, FileType::AVFileTypeQuickTimeMovie);
}

TEST_F(Driver, EncodesWithoutAnAttemptToCopyWhenTheVideoMustBecomeH264) {
    m_info.videoCodec = fourCharCode("hvc1");
    EXPECT_EQ(convert(Target::mp4), Mode::reencode);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{highest});
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
    EXPECT_EQ(m_factory.exports[0].type, FileType::AVFileTypeMPEG4);
}

TEST_F(Driver, EncodesWithThePresetOfTheSize) {
    EXPECT_EQ(convert(Target::mp4, SizeOption::p1080), Mode::reencode);
    EXPECT_EQ(convert(Target::mov, SizeOption::p720), Mode::reencode);
    EXPECT_EQ(presets(), (std::vector<ExportPreset>{fit1080, fit720}));
}

TEST_F(Driver, FallsBackSilentlyToEncodingWhenTheCopyFails) {
    failSession(0, planted());
    testing::internal::CaptureStderr();
    EXPECT_EQ(convert(Target::mov), Mode::reencode);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("planted operation"));
    EXPECT_EQ(presets(), (std::vector<ExportPreset>{passthrough, highest}));
    EXPECT_EQ(m_factory.exports[1].asset, m_asset);
    EXPECT_EQ(m_factory.exports[1].type, FileType::AVFileTypeQuickTimeMovie);
    EXPECT_EQ(m_factory.exports[1].url, "/out/clip.x");
}

TEST_F(Driver, FallsBackWhenNoPresetOrContainerFitsTheCopy) {
    m_factory.sessions[0].presetFits = false;
    EXPECT_EQ(convert(Target::mov), Mode::reencode);
    m_factory.exports.clear();
    m_factory.sessions[0].presetFits = true;
    m_factory.sessions[0].types = {};
    EXPECT_EQ(convert(Target::mov), Mode::reencode);
    EXPECT_EQ(presets(), (std::vector<ExportPreset>{passthrough, highest}));
}

/// A size beside the copy is possible only without video: nothing is scaled then.
TEST_F(Driver, FallsBackToThePresetOfTheSize) {
    m_info.hasVideo = false;
    m_info.videoCodec = std::nullopt;
    failSession(0, planted());
    EXPECT_EQ(convert(Target::mov, SizeOption::p720), Mode::reencode);
    EXPECT_EQ(presets(), (std::vector<ExportPreset>{passthrough, fit720}));
}

TEST_F(Driver, StartsTheFractionsAgainWhenItFallsBack) {
    failSession(0, planted());
    m_factory.sessions[0].fractions = {0.0F, 0.75F};
    m_factory.sessions[0].waits = 1;
    m_factory.sessions[1].fractions = {0.0F, 0.5F};
    m_factory.sessions[1].waits = 1;
    convert(Target::mov);
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.0, 0.75, 0.0, 0.5, 1.0}));
}

TEST_F(Driver, PassesTheErrorOfTheEncodingOnUnchanged) {
    failSession(0, planted());
    failSession(1, planted(media::ErrorKind::cannotEncode));
    EXPECT_EQ(exceptionOf([&] { convert(Target::mov); }), m_factory.sessions[1].error);
}

TEST_F(Driver, HasTheSentencesOfTheExportWhenEncodingFails) {
    m_info.videoCodec = fourCharCode("hvc1");
    m_factory.sessions[0].endStatus = Status::failed;
    EXPECT_EQ(outcome(Target::mp4), "ConvertError: Export failed.");
    m_factory.exports.clear();
    m_factory.sessions[0].types = {};
    EXPECT_EQ(outcome(Target::mp4),
              "ConvertError: This content can't be written to that container.");
    m_factory.exports.clear();
    m_factory.sessions[0].presetFits = false;
    EXPECT_EQ(outcome(Target::mp4), "ConvertError: macOS has no export preset for this file.");
}

TEST_F(Driver, TakesATakenNameForFinal) {
    failSession(0, planted(media::ErrorKind::nameTaken));
    EXPECT_EQ(exceptionOf([&] { convert(Target::mov); }), m_factory.sessions[0].error);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
}

TEST_F(Driver, ExportsTheVideoAloneWhenTheAudioIsToGo) {
    EXPECT_EQ(convert(Target::mov, SizeOption::original, true), Mode::boxlift);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_EQ(m_factory.exports[0].asset, m_factory.composition);
    ASSERT_EQ(m_factory.composition->added.size(), 1U);
    EXPECT_EQ(m_factory.composition->added[0]->source, m_asset->trackList[0]);
}

TEST_F(Driver, EncodesTheVideoAloneWhenTheAudioIsToGo) {
    failSession(0, planted());
    EXPECT_EQ(convert(Target::mp4, SizeOption::original, true), Mode::reencode);
    EXPECT_EQ(presets(), (std::vector<ExportPreset>{passthrough, highest}));
    EXPECT_EQ(m_factory.exports[0].asset, m_factory.composition);
    EXPECT_EQ(m_factory.exports[1].asset, m_factory.composition);
    EXPECT_EQ(m_factory.composition->requests, 1);
}

TEST_F(Driver, MakesNoCompositionWhenThereIsNoAudioToRemove) {
    m_info.hasAudio = false;
    m_info.audioCodec = std::nullopt;
    EXPECT_EQ(convert(Target::mov, SizeOption::original, true), Mode::boxlift);
    EXPECT_FALSE(happened("composition"));
    EXPECT_EQ(m_factory.exports.at(0).asset, m_asset);
}

TEST_F(Driver, PassesTheErrorOfTheCompositionOnUnchanged) {
    m_factory.composition->insertionError = planted();
    EXPECT_EQ(exceptionOf([&] { convert(Target::mov, SizeOption::original, true); }),
              m_factory.composition->insertionError);
    EXPECT_THAT(m_factory.exports, IsEmpty());
}

TEST_F(Driver, PassesTheErrorOfOpeningOnUnchangedWithTheOutputCleared) {
    m_factory.openError = planted(media::ErrorKind::sourceUnreadable);
    EXPECT_EQ(exceptionOf([&] { convert(Target::mov); }), m_factory.openError);
    const std::vector<std::string> expected{"clear /out/clip.x for /in/clip.mov",
                                            "open /in/clip.mov"};
    EXPECT_EQ(m_factory.events.all(), expected);
}

TEST_F(Driver, ClearsTheOutputOnceEvenWhenEverythingFails) {
    failSession(0, planted());
    failSession(1, planted());
    EXPECT_NE(exceptionOf([&] { convert(Target::mov); }), nullptr);
    const auto events = m_factory.events.all();
    EXPECT_EQ(events.front(), "clear /out/clip.x for /in/clip.mov");
    EXPECT_EQ(std::count(events.begin(), events.end(), events.front()), 1);
}

TEST_F(Driver, CopiesAudioForM4a) {
    EXPECT_EQ(convert(Target::m4a), Mode::boxlift);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_EQ(m_factory.exports[0].type, FileType::AVFileTypeAppleM4A);
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
}

TEST_F(Driver, FallsBackToTheTranscoderForM4a) {
    failSession(0, planted());
    EXPECT_EQ(convert(Target::m4a), Mode::reencode);
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_EQ(m_factory.writing.settings.bitRate, 256000);
}

TEST_F(Driver, TranscodesForAac) {
    EXPECT_EQ(convert(Target::aac), Mode::reencode);
    EXPECT_THAT(m_factory.exports, IsEmpty());
    EXPECT_EQ(m_factory.writing.settings.bitRate, 128000);
    EXPECT_EQ(m_factory.writing.path, "/out/clip.x");
    EXPECT_EQ(m_recorder.fractions(), (std::vector<double>{0.5, 1.0}));
}

TEST_F(Driver, TakesNoAccountOfSizeAndAudioRemovalForAudioTargets) {
    EXPECT_EQ(convert(Target::m4a, SizeOption::p720, true), Mode::boxlift);
    EXPECT_EQ(convert(Target::aac, SizeOption::p1080, true), Mode::reencode);
    EXPECT_FALSE(happened("composition"));
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_EQ(m_factory.exports[0].asset, m_asset);
}

TEST_F(Driver, PassesTheErrorOfAnAudioTargetOnUnchanged) {
    m_factory.writer.makeError = planted(media::ErrorKind::notPermitted);
    EXPECT_EQ(exceptionOf([&] { convert(Target::aac); }), m_factory.writer.makeError);
}

TEST_F(Driver, TouchesNothingWhenCancelledBeforeTheStart) {
    m_stop.request_stop();
    for (const Target target : allTargets)
        EXPECT_EQ(outcome(target), "cancelled");
    EXPECT_THAT(m_factory.events.all(), IsEmpty());
}

TEST_F(Driver, MakesNothingWhenCancelledWhileOpening) {
    m_factory.onOpen = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcomeOf([&] { convert(Target::mov, SizeOption::original, true); }), "cancelled");
    EXPECT_FALSE(happened("composition"));
    m_factory.openError = planted();
    EXPECT_EQ(outcome(Target::mov), "cancelled");
    EXPECT_THAT(m_factory.exports, IsEmpty());
}

TEST_F(Driver, DoesNotFallBackWhenTheCopyIsCancelled) {
    m_factory.sessions[0].endsOnlyWhenCancelled = true;
    m_factory.sessions[0].onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Target::mov), "cancelled");
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
    EXPECT_TRUE(happened("cancel export"));
}

TEST_F(Driver, DoesNotFallBackWhenTheCopyFailsAfterTheRequestToStop) {
    failSession(0, planted());
    m_factory.sessions[0].onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Target::mov), "cancelled");
    EXPECT_EQ(presets(), std::vector<ExportPreset>{passthrough});
}

TEST_F(Driver, IsCancelledWhileEncoding) {
    failSession(0, planted());
    m_factory.sessions[1].endsOnlyWhenCancelled = true;
    m_factory.sessions[1].onWait = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Target::mov), "cancelled");
}

TEST_F(Driver, IsCancelledWhileTranscoding) {
    m_factory.reader.onCopy = [&] { m_stop.request_stop(); };
    EXPECT_EQ(outcome(Target::aac), "cancelled");
    EXPECT_TRUE(happened("cancel writing"));
}

TEST_F(Driver, SucceedsWhenTheRequestComesAfterCompletion) {
    m_factory.sessions[0].onEnd = [&] { m_stop.request_stop(); };
    EXPECT_EQ(convert(Target::mov), Mode::boxlift);
    EXPECT_EQ(m_recorder.fractions().back(), 1.0);
}

} // namespace
} // namespace boxlift
