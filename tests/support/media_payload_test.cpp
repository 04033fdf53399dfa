#include "support/media_payload.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace boxlift::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> payloads(const PayloadFormat& format, const Bytes& packet) {
    std::vector<Bytes> found;
    forEachPayload(format, packet,
                   [&](auto bytes) { found.emplace_back(bytes.begin(), bytes.end()); });
    return found;
}

TEST(MediaPayload, SplitsAtStartCodesOfBothLengths) {
    const Bytes packet = {0, 0, 0, 1, 0x65, 7, 0, 0, 1, 0x41, 8, 0, 0};
    EXPECT_THAT(payloads({Framing::h264StartCodes}, packet),
                ElementsAre(Bytes{0x65, 7}, Bytes{0x41, 8}));
}

TEST(MediaPayload, SplitsAtLengthsOfAnyWidth) {
    EXPECT_THAT(payloads({Framing::h264Lengths, 4}, {0, 0, 0, 2, 0x65, 7, 0, 0, 0, 1, 0x41}),
                ElementsAre(Bytes{0x65, 7}, Bytes{0x41}));
    EXPECT_THAT(payloads({Framing::h264Lengths, 2}, {0, 2, 0x65, 7, 0, 1, 0x41}),
                ElementsAre(Bytes{0x65, 7}, Bytes{0x41}));
}

TEST(MediaPayload, SurvivesALengthBeyondThePacket) {
    EXPECT_THAT(payloads({Framing::h264Lengths, 4}, {0, 0, 0, 9, 0x65, 7}),
                ElementsAre(Bytes{0x65, 7}));
}

TEST(MediaPayload, DropsDelimitersAndParameterSets) {
    EXPECT_THAT(payloads({Framing::h264StartCodes},
                         {0, 0, 1, 9, 0xf0, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 2, 0, 0, 1, 0x65, 3}),
                ElementsAre(Bytes{0x65, 3}));
    EXPECT_THAT(payloads({Framing::hevcStartCodes}, {0, 0, 1, 0x40, 1, 0, 0, 1, 0x46, 1}),
                IsEmpty());
    EXPECT_THAT(payloads({Framing::hevcLengths, 4}, {0, 0, 0, 3, 0x26, 1, 5}),
                ElementsAre(Bytes{0x26, 1, 5}));
}

TEST(MediaPayload, TakesAdtsHeadersAway) {
    const Bytes plain = {0xff, 0xf1, 0x50, 0x80, 0x01, 0x3f, 0xfc, 0x21, 0x22};
    EXPECT_THAT(payloads({Framing::aac}, plain), ElementsAre(Bytes{0x21, 0x22}));
    const Bytes checked = {0xff, 0xf0, 0x50, 0x80, 0x01, 0x5f, 0xfc, 1, 2, 0x21};
    EXPECT_THAT(payloads({Framing::aac}, checked), ElementsAre(Bytes{0x21}));
}

TEST(MediaPayload, LeavesBareAacAlone) {
    const Bytes bare = {0x21, 0x1b, 0x80, 0, 0, 0, 0, 1};
    EXPECT_THAT(payloads({Framing::aac}, bare), ElementsAre(bare));
}

TEST(MediaPayload, HashesAsPublished) {
    Hash hash;
    EXPECT_EQ(hash.value(), 0xcbf29ce484222325U);
    hash.add(Bytes{'a'});
    EXPECT_EQ(hash.value(), 0xaf63dc4c8601ec8cU);
}

} // namespace
} // namespace boxlift::test
