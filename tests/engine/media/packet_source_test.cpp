#include "engine/media/packet_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>

#include "engine/media/box_writer.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "model/cancelled.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::audioOf;
using test::mediaOf;
using test::selectAll;
using test::videoOf;

/// Where a stream's packets lie, in seconds.
struct Span {
    /// Of the first that is shown; all else goes by decoding.
    double start = 1000;
    double end = 0;
    /// The shortest and the longest way from packet to packet.
    double shortestStep = 1000;
    double longestStep = -1000;
    int packets = 0;
    double last = 0;

    void add(double shown, double decoded, double duration) {
        start = std::min(start, shown);
        if (packets++ > 0) {
            shortestStep = std::min(shortestStep, decoded - last);
            longestStep = std::max(longestStep, decoded - last);
        }
        last = decoded;
        end = decoded + duration;
    }
};

std::map<int, Span> readSpans(PacketSource& source) {
    std::map<int, Span> spans;
    const av::PacketPtr packet = av::makePacket();
    while (source.next(*packet)) {
        const double unit = av_q2d(source.stream(packet->stream_index).time_base);
        spans[packet->stream_index].add(static_cast<double>(packet->pts) * unit,
                                        static_cast<double>(packet->dts) * unit,
                                        static_cast<double>(packet->duration) * unit);
        av_packet_unref(packet.get());
    }
    return spans;
}

class PacketSourceTest : public test::SourceTest {
protected:
    std::unique_ptr<PacketSource> open(std::stop_token stop = {}) const {
        return std::make_unique<PacketSource>(selectAll(source()), stop);
    }
    /// Lets every fragment of the source begin later, by so many ticks of each track.
    void delayFragments(std::array<std::uint64_t, 2> delays) const {
        std::string bytes = readFile(source());
        constexpr std::size_t idOffset = 8;
        constexpr std::size_t timeOffset = 8;
        for (auto head = bytes.find("tfhd"); head != std::string::npos;
             head = bytes.find("tfhd", head + 1)) {
            const auto track = static_cast<std::size_t>(bytes[head + idOffset + 3]) - 1;
            const auto place = bytes.find("tfdt", head) + timeOffset;
            std::uint64_t time = delays.at(track);
            for (std::size_t i = 0; i < 8; ++i)
                time += std::uint64_t{static_cast<unsigned char>(bytes[place + i])}
                        << (8 * (7 - i));
            bytes.replace(place, 8, test::u64(time));
        }
        writeFile(source(), bytes);
    }
    /// A broadcast whose clock starts anew after every clip.
    void append(const char* clip) const {
        writeFile(source(), readFile(source()) + readFile(path(clip)));
    }
};

} // namespace

TEST_F(PacketSourceTest, RemovesTheStartOfATransportStreamOnce) {
    auto audio = audioOf("mp2");
    audio.startSeconds = 0.5;
    MAKE_SOURCE(mediaOf("mpegts", {videoOf("mpeg2video")}, {audio}));
    const auto opened = open();
    EXPECT_NEAR(opened->start().seconds(), 1.4, 0.05);
    const auto spans = readSpans(*opened);
    EXPECT_NEAR(spans.at(0).start, 0, 0.001);
    EXPECT_NEAR(spans.at(1).start, 0.5, 0.02);
    EXPECT_NEAR(spans.at(0).end, 1, 0.05);
    EXPECT_NEAR(spans.at(1).end, 1.5, 0.05);
    EXPECT_FALSE(opened->isMovie());
    EXPECT_FALSE(opened->isDeclared());
}

TEST_F(PacketSourceTest, LeavesALateTrackOfAMovieLate) {
    auto audio = audioOf("pcm_s16le");
    audio.startSeconds = 0.5;
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audio}));
    const auto opened = open();
    EXPECT_EQ(opened->start(), Time::zero());
    EXPECT_NEAR(opened->range(1).start.seconds(), 0.5, 0.001);
    EXPECT_NEAR(opened->duration().seconds(), 1.5, 0.001);
    const auto spans = readSpans(*opened);
    EXPECT_NEAR(spans.at(0).start, 0, 0.001);
    EXPECT_NEAR(spans.at(1).start, 0.5, 0.001);
    EXPECT_TRUE(opened->isMovie());
    EXPECT_TRUE(opened->isDeclared());
}

TEST_F(PacketSourceTest, LeavesAMovieThatIsLateAsAWholeLate) {
    auto audio = audioOf("pcm_s16le");
    audio.startSeconds = 0.5;
    MAKE_SOURCE(mediaOf("mov", {}, {audio}));
    EXPECT_NEAR(readSpans(*open()).at(0).start, 0.5, 0.001);
}

TEST_F(PacketSourceTest, MovesAPieceOfALongerRecordingToZero) {
    auto spec = mediaOf("mp4", {videoOf("mpeg4")}, {audioOf("mp2")});
    spec.muxerOptions = {{"movflags", "frag_keyframe+empty_moov"}};
    MAKE_SOURCE(spec);
    const auto before = boxlift::test::probe(source());
    const auto ticks = [&](std::size_t stream, double seconds) {
        return static_cast<std::uint64_t>(seconds * before.streams[stream].timeBase.denominator);
    };
    delayFragments({ticks(0, 10), ticks(1, 10.25)});
    ASSERT_NEAR(boxlift::test::probe(source()).startSeconds.value(), 10, 0.1);
    const auto opened = open();
    EXPECT_NEAR(opened->start().seconds(), 10, 0.1);
    const auto spans = readSpans(*opened);
    EXPECT_NEAR(spans.at(0).start, 0, 0.001);
    EXPECT_NEAR(spans.at(1).start, 0.25, 0.02);
}

TEST_F(PacketSourceTest, ClosesTheJumpWhereABroadcastsClockStartsAnew) {
    auto spec = mediaOf("mpegts", {videoOf("mpeg2video")}, {audioOf("mp2")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    MAKE_SOURCE(spec, "clip");
    append("clip");
    const auto spans = readSpans(*open());
    EXPECT_EQ(spans.at(0).packets, 150);
    EXPECT_NEAR(spans.at(0).end, 6, 0.1);
    EXPECT_NEAR(spans.at(1).end, 6, 0.15);
    EXPECT_GT(spans.at(0).shortestStep, 0);
    EXPECT_LT(spans.at(0).longestStep, 0.2);
    EXPECT_GT(spans.at(1).shortestStep, -0.1);
    EXPECT_LT(spans.at(1).longestStep, 0.2);
}

TEST_F(PacketSourceTest, ClosesEachJumpOnceWhenTheSoundLeads) {
    // The last picture of a clip then comes after the first sound of the next.
    auto video = videoOf("mpeg2video");
    video.startSeconds = 0.3;
    auto spec = mediaOf("mpegts", {video}, {audioOf("mp2")});
    spec.seconds = 3;
    MAKE_SOURCE(spec);
    MAKE_SOURCE(spec, "clip");
    append("clip");
    append("clip");
    const auto spans = readSpans(*open());
    EXPECT_NEAR(spans.at(0).end, 9.3, 0.15);
    EXPECT_NEAR(spans.at(1).end, 9, 0.15);
    EXPECT_LT(spans.at(0).longestStep, 0.2);
    EXPECT_LT(spans.at(1).longestStep, 0.2);
}

TEST_F(PacketSourceTest, ClosesAJumpForward) {
    auto spec = mediaOf("mpegts", {videoOf("mpeg2video")}, {audioOf("mp2")});
    MAKE_SOURCE(spec);
    spec.video[0].startSeconds = spec.audio[0].startSeconds = 3600;
    MAKE_SOURCE(spec, "clip");
    append("clip");
    const auto spans = readSpans(*open());
    EXPECT_NEAR(spans.at(0).end, 2, 0.1);
    EXPECT_NEAR(spans.at(1).end, 2, 0.15);
}

TEST_F(PacketSourceTest, LeavesAPauseOfABroadcastAlone) {
    auto audio = audioOf("mp2");
    audio.gap = {.at = 0.5, .length = 4};
    MAKE_SOURCE(mediaOf("mpegts", {}, {audio}));
    EXPECT_NEAR(readSpans(*open()).at(0).end, 5, 0.1);
}

TEST_F(PacketSourceTest, GivesTheSelectionsPacketsAlone) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    Selection selection = selectAll(source());
    selection.streams = {1};
    PacketSource sound(selection, {});
    const auto spans = readSpans(sound);
    EXPECT_EQ(spans.size(), 1U);
    EXPECT_GT(spans.at(1).packets, 40);
}

TEST_F(PacketSourceTest, TakesStreamsInAndLeavesThemOut) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    Selection selection = selectAll(source());
    selection.streams = {1};
    PacketSource picture(selection, {});
    picture.ignore(1);
    picture.select(0);
    const auto spans = readSpans(picture);
    EXPECT_EQ(spans.size(), 1U);
    EXPECT_EQ(spans.at(0).packets, 25);
}

TEST_F(PacketSourceTest, CountsNoChaptersAmongTheOtherStreams) {
    auto spec = mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")});
    spec.subtitles = {{.events = {{0, 1, "words"}}}};
    spec.chapters = {{"one", 0, 0.5}, {"two", 0.5, 1}};
    MAKE_SOURCE(spec);
    const auto opened = open();
    ASSERT_EQ(opened->context().nb_streams, 4U);
    EXPECT_EQ(opened->otherStreams(), std::vector{2});
}

TEST_F(PacketSourceTest, KnowsSplicedTracks) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    EXPECT_FALSE(open()->isSpliced(0));
    constexpr std::array<std::string_view, 4> place{"moov", "trak", "edts", "elst"};
    writeFile(source(), test::editBox(readFile(source()), place, [](std::string_view) {
                  const std::string edit = test::u32(400) + test::u32(0) + test::u32(0x10000);
                  return test::u32(0) + test::u32(2) + edit + edit;
              }));
    EXPECT_TRUE(open()->isSpliced(0));
}

TEST_F(PacketSourceTest, TellsHowMuchHasBeenRead) {
    for (const char* format : {"mov", "mpegts"}) {
        MAKE_SOURCE(mediaOf(format, {videoOf("mpeg2video")}));
        const auto opened = open();
        const av::PacketPtr packet = av::makePacket();
        double fraction = 0;
        while (opened->next(*packet)) {
            EXPECT_GE(opened->fraction(*packet), fraction) << format;
            fraction = opened->fraction(*packet);
            av_packet_unref(packet.get());
        }
        EXPECT_GT(fraction, 0.8) << format;
        EXPECT_LE(fraction, 1) << format;
    }
}

TEST_F(PacketSourceTest, StopsWhenAsked) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    std::stop_source stop;
    const auto opened = open(stop.get_token());
    const av::PacketPtr packet = av::makePacket();
    EXPECT_TRUE(opened->next(*packet));
    av_packet_unref(packet.get());
    stop.request_stop();
    EXPECT_THROW(opened->next(*packet), Cancelled);
}

} // namespace boxlift::media
