#include <cmath>
#include <limits>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/converter.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"

namespace boxlift {
namespace {

using namespace fakes;
using testing::HasSubstr;

constexpr const char* cannotOpen = "ConvertError: macOS can't open this file. It may be damaged or "
                                   "in a format AVFoundation doesn't support.";

std::string refusal(const std::string& format) {
    return "ConvertError: " + format +
           " files can't be opened by macOS. Convert them with a tool like ffmpeg or HandBrake "
           "first.";
}

FakeFactory factoryWith(std::vector<std::shared_ptr<const media::AssetTrack>> tracks) {
    return FakeFactory(std::make_shared<FakeAsset>(std::move(tracks)));
}

MediaInfo analyzed(const FakeFactory& factory) {
    return Converter::analyze("/in/clip.mov", {}, factory);
}

std::string analysisOf(const std::filesystem::path& url, const FakeFactory& factory) {
    return outcomeOf([&] { Converter::analyze(url, {}, factory); });
}

/// Analyses and returns the outcome and what was logged meanwhile.
std::pair<std::string, std::string> loggedAnalysisOf(const FakeFactory& factory) {
    testing::internal::CaptureStderr();
    const std::string outcome = analysisOf("/in/clip.mov", factory);
    return {outcome, testing::internal::GetCapturedStderr()};
}

TEST(AnalysisExtensions, AreTheseTen) {
    const auto& table = Converter::unsupportedExtensions();
    const std::map<std::string_view, std::string_view> sorted(table.begin(), table.end());
    const std::map<std::string_view, std::string_view> expected{
        {"mkv", "MKV"}, {"avi", "AVI"}, {"webm", "WebM"}, {"wmv", "WMV"}, {"flv", "FLV"},
        {"ogg", "Ogg"}, {"ogv", "Ogg"}, {"opus", "Opus"}, {"wma", "WMA"}, {"rmvb", "RealMedia"},
    };
    EXPECT_EQ(sorted, expected);
}

TEST(AnalysisExtensions, AreRefusedByNameWithoutALook) {
    FakeFactory factory;
    const std::map<std::string, std::string> expected{
        {"mkv", "MKV"}, {"avi", "AVI"}, {"webm", "WebM"}, {"wmv", "WMV"}, {"flv", "FLV"},
        {"ogg", "Ogg"}, {"ogv", "Ogg"}, {"opus", "Opus"}, {"wma", "WMA"}, {"rmvb", "RealMedia"},
    };
    for (const auto& [extension, format] : expected)
        EXPECT_EQ(analysisOf("/in/clip." + extension, factory), refusal(format));
    EXPECT_TRUE(factory.events.all().empty());
}

TEST(AnalysisExtensions, AreRefusedInAnyCase) {
    FakeFactory factory;
    for (const char* name : {"clip.MKV", "clip.mkv", "clip.Mkv"})
        EXPECT_EQ(analysisOf(name, factory), refusal("MKV"));
    EXPECT_EQ(analysisOf("/in/.mkv", factory), refusal("MKV"));
    EXPECT_TRUE(factory.events.all().empty());
}

TEST(AnalysisExtensions, AreWhatFollowsTheLastDotOfTheNameAlone) {
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("aac "))});
    for (const char* name :
         {"/in/clip", "/in.mkv/clip", "/in/mkv", "/in/clip.mkv.mov", "/in/clip.mkv.", "/in/a.mkvx"})
        EXPECT_EQ(analysisOf(name, factory), "success") << name;
    EXPECT_EQ(factory.events.all().size(), 6U);
}

TEST(Analysis, DescribesVideoAndAudio) {
    FakeFactory factory = factoryWith(
        {videoTrack(fourCharCode("avc1"), {1920, 1080}), audioTrack(fourCharCode("aac "))});
    MediaInfo expected;
    expected.hasVideo = true;
    expected.hasAudio = true;
    expected.videoCodec = fourCharCode("avc1");
    expected.audioCodec = fourCharCode("aac ");
    expected.width = 1920;
    expected.height = 1080;
    expected.duration = 10;
    EXPECT_EQ(analyzed(factory), expected);
    EXPECT_EQ(factory.events.all(), std::vector<std::string>{"open /in/clip.mov"});
}

TEST(Analysis, OfAnAudioFileHasNoVideoAndNoSize) {
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("lpcm"))});
    const MediaInfo info = analyzed(factory);
    EXPECT_FALSE(info.hasVideo);
    EXPECT_EQ(info.videoCodec, std::nullopt);
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.height, 0);
    EXPECT_TRUE(info.hasAudio);
    EXPECT_EQ(info.audioCodec, fourCharCode("lpcm"));
}

TEST(Analysis, OfAVideoFileWithoutSoundHasNoAudio) {
    FakeFactory factory = factoryWith({videoTrack(fourCharCode("hvc1"), {640, 360})});
    const MediaInfo info = analyzed(factory);
    EXPECT_TRUE(info.hasVideo);
    EXPECT_FALSE(info.hasAudio);
    EXPECT_EQ(info.audioCodec, std::nullopt);
}

TEST(Analysis, CountsOnlyTheFirstTrackOfEachKind) {
    const auto secondVideo = videoTrack(fourCharCode("jpeg"), {160, 120});
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("aac ")),
                                       videoTrack(fourCharCode("avc1"), {1280, 720}), secondVideo,
                                       audioTrack(fourCharCode("ac-3"))});
    const MediaInfo info = analyzed(factory);
    EXPECT_EQ(info.audioCodec, fourCharCode("aac "));
    EXPECT_EQ(info.videoCodec, fourCharCode("avc1"));
    EXPECT_EQ(info.width, 1280);
    EXPECT_EQ(info.height, 720);
    EXPECT_EQ(secondVideo->sizeLoads, 0);
}

TEST(Analysis, KeepsTheFirstTrackEvenWhenOnlyTheSecondHasACode) {
    const auto first = std::make_shared<FakeTrack>(media::MediaType::video);
    FakeFactory factory = factoryWith({first, videoTrack(fourCharCode("avc1"), {1280, 720})});
    const MediaInfo info = analyzed(factory);
    EXPECT_EQ(info.videoCodec, std::nullopt);
    EXPECT_EQ(info.width, 0);
}

TEST(Analysis, LoadsTheFormatsOfEveryTrackOnce) {
    const auto text = std::make_shared<FakeTrack>(media::MediaType::text);
    const auto video = videoTrack(fourCharCode("avc1"), {1280, 720});
    const auto second = videoTrack(fourCharCode("avc1"), {1280, 720});
    FakeFactory factory = factoryWith({text, video, second});
    analyzed(factory);
    EXPECT_EQ(text->formatLoads, 1);
    EXPECT_EQ(video->formatLoads, 1);
    EXPECT_EQ(second->formatLoads, 1);
    EXPECT_EQ(text->sizeLoads, 0);
    EXPECT_EQ(video->sizeLoads, 1);
}

TEST(Analysis, TakesTheFirstOfSeveralFormats) {
    const auto track = audioTrack(fourCharCode("aac "));
    track->formats.push_back({fourCharCode("alac")});
    FakeFactory factory = factoryWith({track});
    EXPECT_EQ(analyzed(factory).audioCodec, fourCharCode("aac "));
}

TEST(Analysis, LeavesTheCodeOpenOfATrackWithoutFormats) {
    const auto video = std::make_shared<FakeTrack>(media::MediaType::video);
    video->size = {320, 240};
    const auto audio = std::make_shared<FakeTrack>(media::MediaType::audio);
    FakeFactory factory = factoryWith({video, audio});
    const MediaInfo info = analyzed(factory);
    EXPECT_TRUE(info.hasVideo);
    EXPECT_TRUE(info.hasAudio);
    EXPECT_EQ(info.videoCodec, std::nullopt);
    EXPECT_EQ(info.audioCodec, std::nullopt);
    EXPECT_EQ(info.width, 320);
}

TEST(Analysis, LeavesTheCodeOpenWhenTheFormatsCannotBeLoaded) {
    const auto video = videoTrack(fourCharCode("avc1"), {320, 240});
    video->formatError = planted();
    FakeFactory factory = factoryWith({video, audioTrack(fourCharCode("aac "))});
    const MediaInfo info = analyzed(factory);
    EXPECT_TRUE(info.hasVideo);
    EXPECT_EQ(info.videoCodec, std::nullopt);
    EXPECT_EQ(info.width, 320);
    EXPECT_EQ(info.audioCodec, fourCharCode("aac "));
}

TEST(Analysis, LeavesTheSizeAtZeroWhenItCannotBeLoaded) {
    const auto video = videoTrack(fourCharCode("avc1"), {320, 240});
    video->sizeError = planted();
    FakeFactory factory = factoryWith({video, audioTrack(fourCharCode("aac "))});
    const MediaInfo info = analyzed(factory);
    EXPECT_EQ(info.videoCodec, fourCharCode("avc1"));
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.height, 0);
    EXPECT_TRUE(info.hasAudio);
}

TEST(Analysis, DropsTheSignAndTheFractionOfASize) {
    FakeFactory negative = factoryWith({videoTrack(fourCharCode("avc1"), {-1920, 1080})});
    EXPECT_EQ(analyzed(negative).width, 1920);
    EXPECT_EQ(analyzed(negative).height, 1080);
    FakeFactory fractional = factoryWith({videoTrack(fourCharCode("avc1"), {853.99, -480.99})});
    EXPECT_EQ(analyzed(fractional).width, 853);
    EXPECT_EQ(analyzed(fractional).height, 480);
}

TEST(Analysis, TakesASizeThatIsNoNumberOfPixelsForZero) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    FakeFactory endless =
        factoryWith({videoTrack(fourCharCode("avc1"), {-infinity, std::nan("")})});
    EXPECT_EQ(analyzed(endless).width, 0);
    EXPECT_EQ(analyzed(endless).height, 0);
    FakeFactory huge = factoryWith({videoTrack(fourCharCode("avc1"), {1e300, 0x1p63})});
    EXPECT_EQ(analyzed(huge).width, 0);
    EXPECT_EQ(analyzed(huge).height, 0);
}

TEST(Analysis, DoesNotTurnTheSize) {
    const auto video = videoTrack(fourCharCode("avc1"), {1920, 1080});
    video->transform = {0, 1, -1, 0, 1080, 0};
    FakeFactory factory = factoryWith({video});
    EXPECT_EQ(analyzed(factory).width, 1920);
    EXPECT_EQ(analyzed(factory).height, 1080);
    EXPECT_EQ(video->transformLoads, 0);
}

TEST(Analysis, PassesAnUnknownDurationOnAsNotANumber) {
    const auto asset = std::make_shared<FakeAsset>();
    asset->trackList = {audioTrack(fourCharCode("aac "))};
    asset->length = media::Time();
    FakeFactory factory;
    factory.asset = asset;
    EXPECT_TRUE(std::isnan(analyzed(factory).duration));
}

TEST(Analysis, KeepsNothingBetweenCalls) {
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("aac "))});
    EXPECT_EQ(analyzed(factory).audioCodec, fourCharCode("aac "));
    factory.asset = factoryWith({audioTrack(fourCharCode("alac"))}).asset;
    EXPECT_EQ(analyzed(factory).audioCodec, fourCharCode("alac"));
}

TEST(AnalysisFailure, ToOpenHasItsSentenceAndLogsTheCause) {
    FakeFactory factory;
    factory.openError = planted(media::ErrorKind::sourceUnreadable);
    const auto [outcome, log] = loggedAnalysisOf(factory);
    EXPECT_EQ(outcome, cannotOpen);
    EXPECT_THAT(log, HasSubstr("planted operation"));
}

TEST(AnalysisFailure, OfAnyOtherTypeHasTheSameSentence) {
    FakeFactory factory;
    factory.openError = std::make_exception_ptr(std::bad_alloc());
    EXPECT_EQ(loggedAnalysisOf(factory).first, cannotOpen);
    factory.openError = std::make_exception_ptr(ConvertError("Another sentence."));
    EXPECT_EQ(loggedAnalysisOf(factory).first, cannotOpen);
}

TEST(AnalysisFailure, ToLoadReadabilityDurationOrTracksHasTheSameSentence) {
    for (auto member :
         {&FakeAsset::readableError, &FakeAsset::durationError, &FakeAsset::tracksError}) {
        const auto asset = std::make_shared<FakeAsset>();
        asset->trackList = {audioTrack(fourCharCode("aac "))};
        (*asset).*member = planted();
        FakeFactory factory;
        factory.asset = asset;
        const auto [outcome, log] = loggedAnalysisOf(factory);
        EXPECT_EQ(outcome, cannotOpen);
        EXPECT_THAT(log, HasSubstr("planted operation"));
    }
}

TEST(AnalysisFailure, IsTheAnswerToProtectedMedia) {
    const auto asset = std::make_shared<FakeAsset>();
    asset->trackList = {audioTrack(fourCharCode("aac "))};
    asset->readable = false;
    FakeFactory factory;
    factory.asset = asset;
    EXPECT_EQ(analysisOf("/in/clip.m4a", factory), cannotOpen);
}

TEST(AnalysisFailure, IsTheAnswerToAFileWithoutTracks) {
    FakeFactory factory = factoryWith({});
    EXPECT_EQ(analysisOf("/in/clip.mov", factory), cannotOpen);
}

TEST(AnalysisFailure, IsTheAnswerToAFileWithNeitherVideoNorAudio) {
    FakeFactory factory = factoryWith({std::make_shared<FakeTrack>(media::MediaType::text),
                                       std::make_shared<FakeTrack>(media::MediaType::timecode),
                                       std::make_shared<FakeTrack>(media::MediaType::other)});
    EXPECT_EQ(analysisOf("/in/clip.mov", factory), cannotOpen);
}

TEST(AnalysisCancellation, BeforeTheStartTouchesNothing) {
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("aac "))});
    std::stop_source source;
    source.request_stop();
    EXPECT_EQ(outcomeOf([&] { Converter::analyze("/in/clip.mov", source.get_token(), factory); }),
              "cancelled");
    EXPECT_EQ(outcomeOf([&] { Converter::analyze("/in/clip.mkv", source.get_token(), factory); }),
              "cancelled");
    EXPECT_TRUE(factory.events.all().empty());
}

TEST(AnalysisCancellation, ReachesTheOpeningOfTheFile) {
    FakeFactory factory = factoryWith({audioTrack(fourCharCode("aac "))});
    std::stop_source source;
    Converter::analyze("/in/clip.mov", source.get_token(), factory);
    EXPECT_EQ(factory.openToken, source.get_token());
}

TEST(AnalysisCancellation, IsNoFailureAndNotLogged) {
    FakeFactory factory;
    factory.openError = std::make_exception_ptr(Cancelled());
    const auto [outcome, log] = loggedAnalysisOf(factory);
    EXPECT_EQ(outcome, "cancelled");
    EXPECT_EQ(log, "");
}

TEST(AnalysisCancellation, IsTheOutcomeWhateverFailsAfterwards) {
    FakeFactory factory;
    std::stop_source source;
    factory.onOpen = [&] { source.request_stop(); };
    factory.openError = planted();
    testing::internal::CaptureStderr();
    EXPECT_EQ(outcomeOf([&] { Converter::analyze("/in/clip.mov", source.get_token(), factory); }),
              "cancelled");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(AnalysisCancellation, EndsBetweenTwoTracks) {
    const auto first = audioTrack(fourCharCode("aac "));
    const auto second = videoTrack(fourCharCode("avc1"), {640, 360});
    std::stop_source source;
    first->onFormatLoad = [&] { source.request_stop(); };
    FakeFactory factory = factoryWith({first, second});
    EXPECT_EQ(outcomeOf([&] { Converter::analyze("/in/clip.mov", source.get_token(), factory); }),
              "cancelled");
    EXPECT_EQ(second->formatLoads, 0);
}

TEST(AnalysisCancellation, IsNotSwallowedWithTheDetailsOfATrack) {
    for (auto member : {&FakeTrack::formatError, &FakeTrack::sizeError}) {
        const auto track = videoTrack(fourCharCode("avc1"), {640, 360});
        (*track).*member = std::make_exception_ptr(Cancelled());
        FakeFactory factory = factoryWith({track});
        EXPECT_EQ(analysisOf("/in/clip.mov", factory), "cancelled");
    }
}

TEST(AnalysisCancellation, IsTheOutcomeWhenTheDetailsOfTheLastTrackFailAfterwards) {
    const auto track = videoTrack(fourCharCode("avc1"), {640, 360});
    std::stop_source source;
    track->onSizeLoad = [&] { source.request_stop(); };
    track->sizeError = planted();
    FakeFactory factory = factoryWith({track});
    EXPECT_EQ(outcomeOf([&] { Converter::analyze("/in/clip.mov", source.get_token(), factory); }),
              "cancelled");
}

} // namespace
} // namespace boxlift
