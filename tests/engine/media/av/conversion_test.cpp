#include "engine/media/av/conversion.h"

#include <gtest/gtest.h>

#include <array>

namespace boxlift::media::av {

namespace {

constexpr Size stored{640, 360};
constexpr std::int32_t one = 1 << 16;

struct Turn {
    const char* name;
    /// a, b, c, d.
    std::array<std::int32_t, 4> parts;
    AffineTransform transform;
};

const std::array turns{
    Turn{"upright", {1, 0, 0, 1}, {1, 0, 0, 1, 0, 0}},
    Turn{"by 90 degrees", {0, 1, -1, 0}, {0, 1, -1, 0, 360, 0}},
    Turn{"by 180 degrees", {-1, 0, 0, -1}, {-1, 0, 0, -1, 640, 360}},
    Turn{"by 270 degrees", {0, -1, 1, 0}, {0, -1, 1, 0, 0, 640}},
    Turn{"mirrored", {-1, 0, 0, 1}, {-1, 0, 0, 1, 640, 0}},
    Turn{"upside down", {1, 0, 0, -1}, {1, 0, 0, -1, 0, 360}},
    Turn{"mirrored, by 90 degrees", {0, -1, -1, 0}, {0, -1, -1, 0, 360, 640}},
    Turn{"mirrored, by 270 degrees", {0, 1, 1, 0}, {0, 1, 1, 0, 0, 0}},
};

std::array<std::int32_t, 9> matrixOf(const Turn& turn, std::int32_t tx, std::int32_t ty) {
    const auto& parts = turn.parts;
    return {parts[0] * one, parts[1] * one, 0,      parts[2] * one, parts[3] * one, 0,
            tx * one,       ty * one,       1 << 30};
}

} // namespace

TEST(Conversion, MovesATurnedPictureBackToTheCorner) {
    for (const Turn& turn : turns)
        EXPECT_EQ(toTransform(matrixOf(turn, 0, 0).data(), stored), turn.transform) << turn.name;
}

TEST(Conversion, TakesNoCamerasWordForTheTranslation) {
    for (const Turn& turn : turns)
        EXPECT_EQ(toTransform(matrixOf(turn, 77, -31).data(), stored), turn.transform) << turn.name;
}

TEST(Conversion, WritesTheMatrixThatItReads) {
    for (const Turn& turn : turns) {
        std::array<std::int32_t, 9> written{};
        toDisplayMatrix(turn.transform, written);
        EXPECT_EQ(written, matrixOf(turn, static_cast<std::int32_t>(turn.transform.tx),
                                    static_cast<std::int32_t>(turn.transform.ty)))
            << turn.name;
        EXPECT_EQ(toTransform(written.data(), stored), turn.transform) << turn.name;
    }
}

TEST(Conversion, TurnsTagsIntoCodesAndBack) {
    EXPECT_EQ(toFourCharCode(MKTAG('a', 'v', 'c', '1')), fourCharCode("avc1"));
    EXPECT_EQ(toCodecTag(fourCharCode("aac ")), MKTAG('a', 'a', 'c', ' '));
    EXPECT_EQ(toCodecTag(toFourCharCode(0xfe010203U)), 0xfe010203U);
}

TEST(Conversion, KnowsTheKindsOfTracks) {
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_VIDEO), MediaType::video);
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_AUDIO), MediaType::audio);
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_SUBTITLE), MediaType::text);
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_DATA), MediaType::other);
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_ATTACHMENT), MediaType::other);
    EXPECT_EQ(toMediaType(AVMEDIA_TYPE_UNKNOWN), MediaType::other);
}

TEST(Conversion, KeepsTimesExact) {
    EXPECT_EQ(toTime(90000, {1, 90000}), Time::fromSeconds(1));
    EXPECT_EQ(toTime(-1024, {1, 44100}), Time::fromRate(-1024, 44100));
    EXPECT_EQ(toTimestamp(Time::fromRate(1001, 30000), {1, 30000}), 1001);
    EXPECT_EQ(toTimestamp(Time::fromSeconds(-0.5), {1, 1000}), -500);
}

TEST(Conversion, KeepsUnknownTimesUnknown) {
    EXPECT_FALSE(toTime(AV_NOPTS_VALUE, {1, 1000}).isValid());
    EXPECT_FALSE(toTime(5, {0, 1}).isValid());
    EXPECT_FALSE(toTime(5, {1, 0}).isValid());
    EXPECT_EQ(toTimestamp(Time(), {1, 1000}), AV_NOPTS_VALUE);
}

} // namespace boxlift::media::av
