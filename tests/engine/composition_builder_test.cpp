#include <gtest/gtest.h>

#include "engine/converter.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"

namespace boxlift {
namespace {

using namespace fakes;
using media::MediaType;
using media::Time;

constexpr media::AffineTransform quarterTurn{0, 1, -1, 0, 1080, 0};

/// A track of one kind from `start` on, `length` seconds long, turned for display.
std::shared_ptr<FakeTrack> track(MediaType type, double start = 0, double length = 5) {
    auto result = std::make_shared<FakeTrack>(type);
    result->range = {Time::fromSeconds(start), Time::fromSeconds(length)};
    result->transform = quarterTurn;
    return result;
}

TEST(Composition, OfVideoAloneHoldsOneTurnedVideoTrackOfTheSameLength) {
    const auto video = track(MediaType::video);
    const FakeAsset asset({video, track(MediaType::audio)});
    FakeFactory factory;
    const auto result = Converter::composition(asset, true, false, factory);
    ASSERT_EQ(result, factory.composition);
    ASSERT_EQ(factory.composition->added.size(), 1U);
    const auto& copy = *factory.composition->added[0];
    EXPECT_EQ(copy.type, MediaType::video);
    EXPECT_EQ(copy.source, video);
    EXPECT_EQ(copy.inserted, video->range);
    EXPECT_EQ(copy.transform, quarterTurn);
    EXPECT_EQ(result->duration(), Time::fromSeconds(5));
}

TEST(Composition, LeavesTheTracksIdentifiersToTheComposition) {
    const FakeAsset asset({track(MediaType::video), track(MediaType::audio)});
    FakeFactory factory;
    Converter::composition(asset, true, true, factory);
    ASSERT_EQ(factory.composition->added.size(), 2U);
    for (const auto& copy : factory.composition->added)
        EXPECT_EQ(copy->preferredId, 0);
}

TEST(Composition, KeepsATrackThatBeginsLateInItsPlace) {
    const auto late = track(MediaType::video, 1.5, 4);
    FakeFactory factory;
    Converter::composition(FakeAsset({late}), true, false, factory);
    ASSERT_EQ(factory.composition->added.size(), 1U);
    EXPECT_EQ(factory.composition->added[0]->insertedAt, Time::fromSeconds(1.5));
    EXPECT_EQ(factory.composition->added[0]->inserted, late->range);
}

TEST(Composition, KeepsTheOrderOfTwoVideoTracks) {
    const auto first = track(MediaType::video, 0, 3);
    const auto second = track(MediaType::video, 0, 2);
    const FakeAsset asset({first, track(MediaType::audio), second});
    FakeFactory factory;
    Converter::composition(asset, true, false, factory);
    ASSERT_EQ(factory.composition->added.size(), 2U);
    EXPECT_EQ(factory.composition->added[0]->source, first);
    EXPECT_EQ(factory.composition->added[1]->source, second);
}

TEST(Composition, TakesVideoBeforeAudioAndTurnsVideoAlone) {
    const auto audio = track(MediaType::audio, 0.25);
    const auto video = track(MediaType::video);
    FakeFactory factory;
    Converter::composition(FakeAsset({audio, video}), true, true, factory);
    ASSERT_EQ(factory.composition->added.size(), 2U);
    EXPECT_EQ(factory.composition->added[0]->source, video);
    EXPECT_TRUE(factory.composition->added[0]->transformWasSet);
    EXPECT_EQ(factory.composition->added[1]->source, audio);
    EXPECT_EQ(factory.composition->added[1]->insertedAt, Time::fromSeconds(0.25));
    EXPECT_FALSE(factory.composition->added[1]->transformWasSet);
    EXPECT_EQ(audio->transformLoads, 0);
}

TEST(Composition, OfAudioAloneHoldsNoVideo) {
    const auto audio = track(MediaType::audio);
    FakeFactory factory;
    Converter::composition(FakeAsset({track(MediaType::video), audio}), false, true, factory);
    ASSERT_EQ(factory.composition->added.size(), 1U);
    EXPECT_EQ(factory.composition->added[0]->source, audio);
}

TEST(Composition, NeverHoldsTracksOfOtherKinds) {
    const FakeAsset asset(
        {track(MediaType::text), track(MediaType::timecode), track(MediaType::other)});
    FakeFactory factory;
    Converter::composition(asset, true, true, factory);
    EXPECT_EQ(factory.composition->requests, 0);
}

TEST(Composition, IsEmptyWithoutVideoInTheSource) {
    FakeFactory factory;
    const auto result =
        Converter::composition(FakeAsset({track(MediaType::audio)}), true, false, factory);
    EXPECT_TRUE(result->tracks().empty());
}

TEST(Composition, IsEmptyWhenNothingIsAskedFor) {
    const FakeAsset asset({track(MediaType::video), track(MediaType::audio)});
    FakeFactory factory;
    EXPECT_TRUE(Converter::composition(asset, false, false, factory)->tracks().empty());
}

TEST(Composition, SkipsATrackThatCannotBeAdded) {
    const auto first = track(MediaType::video);
    first->rangeError = planted();
    const auto second = track(MediaType::video);
    FakeFactory factory;
    factory.composition->refused = {0};
    Converter::composition(FakeAsset({first, second}), true, false, factory);
    ASSERT_EQ(factory.composition->added.size(), 1U);
    EXPECT_EQ(factory.composition->added[0]->source, second);
}

TEST(CompositionFailure, ToListTheTracksIsPassedOn) {
    FakeAsset asset;
    asset.tracksError = planted();
    FakeFactory factory;
    EXPECT_EQ(exceptionOf([&] { Converter::composition(asset, true, false, factory); }),
              asset.tracksError);
}

TEST(CompositionFailure, ToLoadATimeRangeIsPassedOn) {
    const auto video = track(MediaType::video);
    video->rangeError = planted();
    FakeFactory factory;
    EXPECT_EQ(exceptionOf([&] { Converter::composition(FakeAsset({video}), true, true, factory); }),
              video->rangeError);
}

TEST(CompositionFailure, ToInsertIsPassedOn) {
    FakeFactory factory;
    factory.composition->insertionError = planted();
    const FakeAsset asset({track(MediaType::video), track(MediaType::video)});
    EXPECT_EQ(exceptionOf([&] { Converter::composition(asset, true, false, factory); }),
              factory.composition->insertionError);
    EXPECT_EQ(factory.composition->requests, 1);
}

TEST(CompositionFailure, ToLoadATransformIsPassedOn) {
    const auto video = track(MediaType::video);
    video->transformError = planted();
    FakeFactory factory;
    EXPECT_EQ(
        exceptionOf([&] { Converter::composition(FakeAsset({video}), true, false, factory); }),
        video->transformError);
}

} // namespace
} // namespace boxlift
