#include "engine/media/muxer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <span>

#include "engine/media/av/demuxer.h"
#include "engine/media/child_process.h"
#include "engine/media/error.h"
#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "engine/media/stream_copy.h"
#include "engine/media/stream_maker.h"
#include "model/cancelled.h"
#include "support/media_boxes.h"
#include "support/media_probe.h"

namespace boxlift::media {

namespace {

using boxlift::test::probe;
using test::audioOf;
using test::mediaOf;
using test::namesIn;
using test::videoOf;
using Names = std::vector<std::string>;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

class MuxerTest : public test::SourceTest {
protected:
    enum class Samples { oneByOne, gathered };

    static void addStream(Muxer& muxer, const AVStream& source, Samples samples) {
        AVStream& stream = muxer.addStream();
        copyStreamDescription(stream, source);
        if (samples == Samples::gathered && source.codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            muxer.gatherSamples(stream.index);
    }
    /// A muxer with the source's streams, its labels and its header.
    std::unique_ptr<Muxer> begin(FileType type, IndexPlace index = IndexPlace::end,
                                 Samples samples = Samples::oneByOne) {
        m_demuxer = av::Demuxer::open(InputFile::open(source()), av::ProbeDepth::streams, {});
        auto muxer = std::make_unique<Muxer>(output(), type, index, m_stop.get_token());
        const AVFormatContext& context = m_demuxer->context();
        for (const AVStream* stream : std::span(context.streams, context.nb_streams))
            // Chapters' titles are read already.
            if (stream->discard != AVDISCARD_ALL)
                addStream(*muxer, *stream, samples);
        muxer->copyFileMetadata(context, Time::zero());
        muxer->writeHeader();
        return muxer;
    }
    void copyPackets(Muxer& muxer) const {
        const av::PacketPtr packet = av::makePacket();
        while (m_demuxer->read(*packet)) {
            const int index = packet->stream_index;
            av_packet_rescale_ts(packet.get(), m_demuxer->context().streams[index]->time_base,
                                 muxer.stream(index).time_base);
            muxer.write(*packet);
        }
    }
    void copy(FileType type, IndexPlace index = IndexPlace::end,
              Samples samples = Samples::oneByOne) {
        const auto muxer = begin(type, index, samples);
        copyPackets(*muxer);
        muxer->finish();
    }

    std::stop_source m_stop;

private:
    std::unique_ptr<av::Demuxer> m_demuxer;
};

std::optional<ErrorKind> kindOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

/// Whether the files have the same packets, of the same times, in the same order.
void expectSamePackets(const boxlift::test::ProbedStream& stream,
                       const boxlift::test::ProbedStream& other) {
    ASSERT_EQ(stream.packets.size(), other.packets.size());
    for (std::size_t i = 0; i < stream.packets.size(); ++i) {
        const auto& packet = stream.packets[i];
        const auto& otherPacket = other.packets[i];
        EXPECT_EQ(packet.pts, otherPacket.pts) << i;
        EXPECT_EQ(packet.dts, otherPacket.dts) << i;
        EXPECT_EQ(packet.duration, otherPacket.duration) << i;
        EXPECT_EQ(packet.isKey, otherPacket.isKey) << i;
        EXPECT_EQ(packet.payloadHash, otherPacket.payloadHash) << i;
    }
}

/// A stream as complete as a muxer wants it.
AVStream& addStream(test::StreamMaker& maker, AVCodecID codec) {
    AVStream& stream = maker.add({.codec = codec});
    AVCodecParameters& parameters = *stream.codecpar;
    stream.time_base = {1, 48000};
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        parameters.width = parameters.height = 64;
    } else {
        parameters.sample_rate = 48000;
        av_channel_layout_default(&parameters.ch_layout, 2);
    }
    return stream;
}

bool canMuxOne(FileType type, AVCodecID codec) {
    test::StreamMaker maker;
    const AVStream* stream = &addStream(maker, codec);
    return canMux(type, std::span(&stream, 1));
}

} // namespace

TEST_F(MuxerTest, ShowsNothingBeforeItHasFinished) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    const auto muxer = begin(mp4);
    EXPECT_EQ(namesIn(folder()), Names{"source"});
    copyPackets(*muxer);
    EXPECT_EQ(namesIn(folder()), Names{"source"});
    EXPECT_LT(muxer->finishedFraction(), 1);
    muxer->finish();
    EXPECT_EQ(namesIn(folder()), (Names{"out", "source"}));
    EXPECT_EQ(muxer->finishedFraction(), 1);
    EXPECT_EQ(probe(output()).video().payloadHashes(), probe(source()).video().payloadHashes());
    EXPECT_EQ(probe(output()).audio().payloadHashes(), probe(source()).audio().payloadHashes());
}

TEST_F(MuxerTest, LeavesNothingWhenItDoesNotFinish) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}));
    copyPackets(*begin(mp4));
    begin(mov);
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST_F(MuxerTest, PutsTheIndexWhereItIsWanted) {
    MAKE_SOURCE(mediaOf("mov", {videoOf("mpeg4")}, {audioOf("aac")}));
    for (const FileType type : {mp4, mov})
        for (const IndexPlace place : {IndexPlace::front, IndexPlace::end}) {
            std::filesystem::remove(output());
            copy(type, place);
            const auto boxes = boxlift::test::topLevelBoxTypes(output());
            const auto index = std::find(boxes.begin(), boxes.end(), "moov");
            const auto media = std::find(boxes.begin(), boxes.end(), "mdat");
            ASSERT_NE(index, boxes.end());
            ASSERT_NE(media, boxes.end());
            EXPECT_EQ(index < media, place == IndexPlace::front);
            EXPECT_EQ(probe(output()).video().payloadHashes(),
                      probe(source()).video().payloadHashes());
        }
}

TEST_F(MuxerTest, WritesEachTypesOwnKindOfFile) {
    MAKE_SOURCE(mediaOf("mov", {}, {audioOf("aac")}));
    const std::array<std::pair<FileType, const char*>, 3> brands{
        {{mp4, "isom"}, {mov, "qt  "}, {m4a, "M4A "}}};
    for (const auto& [type, brand] : brands) {
        std::filesystem::remove(output());
        copy(type);
        EXPECT_EQ(probe(output()).metadata.at("major_brand"), brand);
    }
}

TEST_F(MuxerTest, TellsOfGatheredSamplesAsOfOthers) {
    auto spec = mediaOf("mov", {}, {audioOf("aac"), audioOf("aac")});
    spec.seconds = 14.3;
    spec.chapters = {{"one", 0, 6}, {"two", 6, 14}};
    MAKE_SOURCE(spec);
    const auto from = probe(source());
    for (const IndexPlace place : {IndexPlace::end, IndexPlace::front}) {
        std::filesystem::remove(output());
        copy(m4a, place, Samples::gathered);
        const auto file = probe(output());
        for (const std::size_t track : {0U, 1U}) {
            const auto& expected = from.audio(track);
            ASSERT_GT(expected.packets.size(), 600U);
            expectSamePackets(file.audio(track), expected);
            EXPECT_EQ(file.audio(track).durationSeconds, expected.durationSeconds);
            EXPECT_EQ(file.audio(track).startSeconds, expected.startSeconds);
        }
        ASSERT_EQ(file.chapters.size(), 2U);
        EXPECT_EQ(file.chapters[1].title, "two");
    }
}

TEST_F(MuxerTest, RefusesWhatTheContainerCannotHold) {
    MAKE_SOURCE(mediaOf("flac", {}, {audioOf("flac")}));
    EXPECT_EQ(kindOf([&] { begin(mov); }), ErrorKind::unknown);
    EXPECT_EQ(kindOf([&] { begin(m4a); }), ErrorKind::unknown);
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST_F(MuxerTest, RefusesATakenName) {
    MAKE_SOURCE(mediaOf("mov", {}, {audioOf("aac")}));
    boxlift::test::writeFile(output(), "theirs");
    EXPECT_EQ(kindOf([&] { begin(mp4); }), ErrorKind::nameTaken);
    EXPECT_EQ(boxlift::test::readFile(output()), "theirs");
}

TEST_F(MuxerTest, ReplacesNothingThatAppearedMeanwhile) {
    MAKE_SOURCE(mediaOf("mov", {}, {audioOf("aac")}));
    const auto muxer = begin(mp4);
    copyPackets(*muxer);
    boxlift::test::writeFile(output(), "theirs");
    EXPECT_EQ(kindOf([&] { muxer->finish(); }), ErrorKind::nameTaken);
    EXPECT_EQ(boxlift::test::readFile(output()), "theirs");
    EXPECT_EQ(namesIn(folder()), (Names{"out", "source"}));
}

TEST_F(MuxerTest, StopsAtAPacketWhenAsked) {
    MAKE_SOURCE(mediaOf("mov", {}, {audioOf("aac")}));
    const auto muxer = begin(mp4);
    m_stop.request_stop();
    EXPECT_THROW(copyPackets(*muxer), Cancelled);
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST_F(MuxerTest, StopsAtTheEndWhenAsked) {
    MAKE_SOURCE(mediaOf("mov", {}, {audioOf("aac")}));
    for (const IndexPlace place : {IndexPlace::end, IndexPlace::front}) {
        m_stop = {};
        const auto muxer = begin(mp4, place);
        copyPackets(*muxer);
        m_stop.request_stop();
        EXPECT_THROW(muxer->finish(), Cancelled);
        EXPECT_EQ(namesIn(folder()), Names{"source"});
    }
}

TEST_F(MuxerTest, SaysThatTheDiskIsFull) {
    auto audio = audioOf("pcm_s16le");
    audio.seconds = 12;
    MAKE_SOURCE(mediaOf("mov", {}, {audio}));
    ASSERT_GT(std::filesystem::file_size(source()), 2'100'000U);
    // In the middle, at the end of the media, and after it.
    for (const std::size_t limit : {1'200'000U, 2'100'000U, 2'117'300U})
        EXPECT_TRUE(test::passesInChild([&] {
            test::limitFileSize(limit);
            EXPECT_EQ(kindOf([&] { copy(mov, IndexPlace::front); }), ErrorKind::noSpace);
        })) << limit;
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST(CanMux, AsksTheMuxerItself) {
    for (const AVCodecID codec : {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_MPEG4,
                                  AV_CODEC_ID_AAC, AV_CODEC_ID_AC3, AV_CODEC_ID_MP3}) {
        EXPECT_TRUE(canMuxOne(mp4, codec)) << avcodec_get_name(codec);
        EXPECT_TRUE(canMuxOne(mov, codec)) << avcodec_get_name(codec);
    }
    for (const AVCodecID codec :
         {AV_CODEC_ID_AV1, AV_CODEC_ID_VP8, AV_CODEC_ID_VP9, AV_CODEC_ID_FLAC, AV_CODEC_ID_OPUS})
        EXPECT_FALSE(canMuxOne(mov, codec)) << avcodec_get_name(codec);
    EXPECT_TRUE(canMuxOne(mov, AV_CODEC_ID_PRORES));
    EXPECT_FALSE(canMuxOne(mp4, AV_CODEC_ID_PRORES));
    EXPECT_TRUE(canMuxOne(m4a, AV_CODEC_ID_AAC));
    EXPECT_FALSE(canMuxOne(m4a, AV_CODEC_ID_MP3));
}

TEST(CanMux, MindsEveryStream) {
    test::StreamMaker maker;
    const std::array<const AVStream*, 2> streams{&addStream(maker, AV_CODEC_ID_MPEG4),
                                                 &addStream(maker, AV_CODEC_ID_FLAC)};
    EXPECT_TRUE(canMux(mov, std::span(streams).first(1)));
    EXPECT_FALSE(canMux(mov, streams));
}

TEST(CanMux, ChangesNothingOfItsStreams) {
    test::StreamMaker maker;
    AVStream& stream = addStream(maker, AV_CODEC_ID_MPEG4);
    stream.codecpar->codec_tag = MKTAG('F', 'M', 'P', '4');
    const AVStream* pointer = &stream;
    EXPECT_TRUE(canMux(mp4, std::span(&pointer, 1)));
    EXPECT_EQ(stream.codecpar->codec_tag, MKTAG('F', 'M', 'P', '4'));
    EXPECT_EQ(av_cmp_q(stream.time_base, {1, 48000}), 0);
}

TEST(KnowsTag, GoesByTypeAndCodec) {
    EXPECT_TRUE(knowsTag(mov, AV_CODEC_ID_PRORES, MKTAG('a', 'p', 'c', 'h')));
    EXPECT_TRUE(knowsTag(mp4, AV_CODEC_ID_H264, MKTAG('a', 'v', 'c', '1')));
    EXPECT_FALSE(knowsTag(mp4, AV_CODEC_ID_PRORES, MKTAG('a', 'p', 'c', 'h')));
    EXPECT_FALSE(knowsTag(mp4, AV_CODEC_ID_HEVC, MKTAG('a', 'v', 'c', '1')));
    EXPECT_FALSE(knowsTag(mov, AV_CODEC_ID_H264, 0));
}

} // namespace boxlift::media
