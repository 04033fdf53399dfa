#include "engine/media/sample_gatherer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace boxlift::media {

namespace {

/// A packet of sound, of 1024 ticks where nothing is said.
struct Sound {
    std::int64_t at = 0;
    std::string bytes = "sound";
    std::int64_t duration = 1024;
    int flags = AV_PKT_FLAG_KEY;
};

std::string textOf(const AVPacket& packet) {
    return {packet.data, packet.data + packet.size};
}

class SampleGathererTest : public testing::Test {
protected:
    av::PacketPtr add(const Sound& sound) {
        const av::PacketPtr packet = av::makePacket();
        EXPECT_EQ(av_new_packet(packet.get(), static_cast<int>(sound.bytes.size())), 0);
        std::ranges::copy(sound.bytes, packet->data);
        packet->stream_index = 3;
        packet->pts = packet->dts = sound.at;
        packet->duration = sound.duration;
        packet->flags = sound.flags;
        av::PacketPtr complete = m_gatherer.add(*packet);
        EXPECT_EQ(packet->data, nullptr);
        return complete;
    }
    std::vector<std::uint32_t> runs() {
        std::vector<std::uint32_t> counts;
        for (const SampleRuns::Run& run : m_gatherer.takeSamples().runs)
            counts.push_back(run.samples);
        return counts;
    }
    using Counts = std::vector<std::uint32_t>;

    SampleGatherer m_gatherer;
};

} // namespace

TEST_F(SampleGathererTest, HasNothingAtFirst) {
    EXPECT_EQ(m_gatherer.take(), nullptr);
    EXPECT_EQ(runs(), Counts());
}

TEST_F(SampleGathererTest, MakesOnePacketOfMany) {
    EXPECT_EQ(add({-1024, "first "}), nullptr);
    EXPECT_EQ(add({0, "second "}), nullptr);
    EXPECT_EQ(add({1024, "third", 300}), nullptr);
    const av::PacketPtr run = m_gatherer.take();
    ASSERT_NE(run, nullptr);
    EXPECT_EQ(textOf(*run), "first second third");
    EXPECT_EQ(run->pts, -1024);
    EXPECT_EQ(run->dts, -1024);
    EXPECT_EQ(run->duration, 2348);
    EXPECT_EQ(run->stream_index, 3);
    EXPECT_EQ(run->flags, AV_PKT_FLAG_KEY);
    EXPECT_EQ(m_gatherer.take(), nullptr);
    const SampleRuns samples = m_gatherer.takeSamples();
    ASSERT_EQ(samples.runs.size(), 1U);
    EXPECT_EQ(samples.runs[0].samples, 3U);
    EXPECT_EQ(samples.runs[0].duration, 1024U);
    EXPECT_EQ(samples.sizes, (std::deque<std::uint32_t>{6, 7, 5}));
}

TEST_F(SampleGathererTest, GivesOutARunWhenItHasManySamples) {
    std::int64_t given = 0;
    for (std::int64_t i = 0; i < 1000; ++i)
        if (const av::PacketPtr run = add({i * 1024})) {
            EXPECT_EQ(run->pts, given * 1024);
            EXPECT_EQ(run->duration, 256 * 1024);
            given += 256;
        }
    EXPECT_EQ(m_gatherer.take()->duration, (1000 - given) * 1024);
    EXPECT_EQ(runs(), (Counts{256, 256, 256, 232}));
}

TEST_F(SampleGathererTest, GathersNoMoreThanHalfAMebibyte) {
    const std::string large(200'000, 'x');
    EXPECT_EQ(add({0, large}), nullptr);
    EXPECT_EQ(add({1024, large}), nullptr);
    EXPECT_EQ(add({2048, large})->size, 400'000);
    EXPECT_EQ(add({3072, std::string(600'000, 'y')})->size, 200'000);
    EXPECT_EQ(add({4096})->size, 600'000);
    EXPECT_EQ(runs(), (Counts{2, 1, 1, 1}));
}

TEST_F(SampleGathererTest, LeavesEmptyPacketsOut) {
    EXPECT_EQ(add({0, ""}), nullptr);
    EXPECT_EQ(m_gatherer.take(), nullptr);
    add({1024});
    EXPECT_EQ(add({2048, ""}), nullptr);
    EXPECT_NE(add({3072}), nullptr);
    EXPECT_EQ(runs(), (Counts{1, 1}));
}

TEST_F(SampleGathererTest, KeepsWhatAPacketHasBesideItsBytes) {
    add({0});
    const av::PacketPtr packet = av::makePacket();
    ASSERT_EQ(av_new_packet(packet.get(), 5), 0);
    packet->pts = packet->dts = packet->duration = 1024;
    packet->flags = AV_PKT_FLAG_KEY;
    ASSERT_NE(av_packet_new_side_data(packet.get(), AV_PKT_DATA_SKIP_SAMPLES, 10), nullptr);
    EXPECT_NE(m_gatherer.add(*packet), nullptr);
    add({2048});
    EXPECT_EQ(m_gatherer.take()->side_data_elems, 1);
    EXPECT_EQ(runs(), (Counts{1, 2}));
}

TEST_F(SampleGathererTest, BeginsAnewWhereAPacketIsOfAnotherKind) {
    add({0});
    // Behind a pause, and before the end of the last one.
    EXPECT_NE(add({2000}), nullptr);
    EXPECT_NE(add({3000}), nullptr);
    // One that is damaged, and behind it.
    EXPECT_NE(add({4024, "bad", 1024, AV_PKT_FLAG_KEY | AV_PKT_FLAG_CORRUPT}), nullptr);
    EXPECT_NE(add({5048}), nullptr);
    // A short one may only be the last; so may a long one.
    EXPECT_EQ(add({6072, "short", 500}), nullptr);
    EXPECT_NE(add({6572}), nullptr);
    EXPECT_EQ(add({7596, "long", 2000}), nullptr);
    EXPECT_NE(add({9596}), nullptr);
    // One of unknown length.
    EXPECT_NE(add({10620, "unknown", 0}), nullptr);
    EXPECT_NE(add({10620}), nullptr);
    EXPECT_EQ(runs(), (Counts{1, 1, 1, 1, 2, 2, 1, 1, 1}));
}

} // namespace boxlift::media
