#include "engine/media/passthrough_rules.h"

#include <gtest/gtest.h>

#include <array>

#include "engine/media/stream_maker.h"

namespace boxlift::media::passthrough_rules {

namespace {

using test::StreamMaker;
using test::StreamTraits;
using Bytes = std::vector<std::uint8_t>;

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// A track in a movie, and which types take it.
struct Row {
    AVCodecID codec;
    const char* tag;
    bool inMp4;
    bool inMov;
    bool inM4a;
};

constexpr std::array videoRows{
    Row{AV_CODEC_ID_H264, "avc1", true, true, false},
    Row{AV_CODEC_ID_H264, "avc3", true, true, false},
    Row{AV_CODEC_ID_HEVC, "hvc1", true, true, false},
    Row{AV_CODEC_ID_HEVC, "hev1", true, true, false},
    Row{AV_CODEC_ID_HEVC, "dvh1", true, true, false},
    Row{AV_CODEC_ID_HEVC, "dvhe", true, true, false},
    Row{AV_CODEC_ID_MPEG4, "mp4v", true, true, false},
    Row{AV_CODEC_ID_AV1, "av01", true, true, false},
    Row{AV_CODEC_ID_VP9, "vp09", true, true, false},
    Row{AV_CODEC_ID_VP8, "vp08", false, true, false},
    Row{AV_CODEC_ID_PRORES, "apch", false, true, false},
    Row{AV_CODEC_ID_MJPEG, "jpeg", false, true, false},
    Row{AV_CODEC_ID_MJPEG, "mp4v", false, true, false},
    Row{AV_CODEC_ID_MPEG2VIDEO, "mp2v", false, true, false},
    Row{AV_CODEC_ID_MPEG2VIDEO, "mp4v", false, true, false},
    Row{AV_CODEC_ID_H263, "h263", false, true, false},
    Row{AV_CODEC_ID_PNG, "png ", false, true, false},
    Row{AV_CODEC_ID_DVVIDEO, "dvc ", false, true, false},
    Row{AV_CODEC_ID_RAWVIDEO, "2vuy", false, true, false},
};

constexpr std::array audioRows{
    Row{AV_CODEC_ID_AAC, "mp4a", true, true, true},
    Row{AV_CODEC_ID_ALAC, "alac", true, true, true},
    Row{AV_CODEC_ID_MP3, "mp4a", true, true, false},
    Row{AV_CODEC_ID_MP2, "mp4a", true, true, false},
    Row{AV_CODEC_ID_AC3, "ac-3", true, true, false},
    Row{AV_CODEC_ID_EAC3, "ec-3", true, true, false},
    Row{AV_CODEC_ID_OPUS, "Opus", true, false, false},
    Row{AV_CODEC_ID_PCM_S16LE, "sowt", false, true, false},
    Row{AV_CODEC_ID_PCM_S24BE, "in24", false, true, false},
    Row{AV_CODEC_ID_ADPCM_IMA_QT, "ima4", false, true, false},
    Row{AV_CODEC_ID_PCM_MULAW, "ulaw", false, true, false},
    Row{AV_CODEC_ID_PCM_ALAW, "alaw", false, true, false},
    Row{AV_CODEC_ID_AMR_NB, "samr", false, true, false},
    Row{AV_CODEC_ID_FLAC, "fLaC", false, false, false},
    Row{AV_CODEC_ID_VORBIS, "mp4a", false, false, false},
    Row{AV_CODEC_ID_DTS, "dtsc", false, false, false},
    Row{AV_CODEC_ID_QDM2, "QDM2", false, false, false},
};

bool isAccepted(FileType type, const StreamTraits& traits, bool fromMovie = true) {
    StreamMaker maker;
    return accepts(type, maker.add(traits), fromMovie);
}

std::string tagFor(FileType type, const StreamTraits& traits, bool fromMovie = true) {
    StreamMaker maker;
    const std::uint32_t tag = codecTag(type, maker.add(traits), fromMovie);
    std::string text;
    for (int shift = 0; tag != 0 && shift < 32; shift += 8)
        text += static_cast<char>(tag >> shift & 0xff);
    return text;
}

/// An hvcC record with one unit of each of these types.
Bytes hevcRecord(const Bytes& types) {
    Bytes record(22, 0);
    record[0] = 1;
    record.push_back(static_cast<std::uint8_t>(types.size()));
    for (const std::uint8_t type : types)
        record.insert(record.end(), {type, 0, 1, 0, 2, 0x55, 0x55});
    return record;
}

Bytes hevcByteStream(const Bytes& types) {
    Bytes bytes;
    for (const std::uint8_t type : types)
        bytes.insert(bytes.end(), {0, 0, 0, 1, static_cast<std::uint8_t>(type << 1), 1, 0x55});
    return bytes;
}

const Bytes allSets{32, 33, 34};

} // namespace

TEST(PassthroughRules, KnowWhichVideoGoesWhere) {
    for (const Row& row : videoRows) {
        const StreamTraits traits{row.codec, row.tag, {1, 2, 3, 4}};
        EXPECT_EQ(isAccepted(mp4, traits), row.inMp4) << row.tag;
        EXPECT_EQ(isAccepted(mov, traits), row.inMov) << row.tag;
        EXPECT_EQ(isAccepted(m4a, traits), row.inM4a) << row.tag;
    }
}

TEST(PassthroughRules, KnowWhichSoundGoesWhere) {
    for (const Row& row : audioRows) {
        const StreamTraits traits{row.codec, row.tag, {0x12, 0x10, 0x56, 0xe5}};
        EXPECT_EQ(isAccepted(mp4, traits), row.inMp4) << avcodec_get_name(row.codec);
        EXPECT_EQ(isAccepted(mov, traits), row.inMov) << avcodec_get_name(row.codec);
        EXPECT_EQ(isAccepted(m4a, traits), row.inM4a) << avcodec_get_name(row.codec);
    }
}

TEST(PassthroughRules, TakeNoAacThatPlayersOfTheTypeDoNotKnow) {
    const StreamTraits lowDelay{AV_CODEC_ID_AAC, "mp4a", {0xba, 0x10}};
    const StreamTraits unified{AV_CODEC_ID_AAC, "mp4a", {0xf9, 0x48, 0x40}};
    for (const FileType type : {mp4, mov, m4a}) {
        EXPECT_FALSE(isAccepted(type, lowDelay));
        EXPECT_FALSE(isAccepted(type, unified));
    }
}

TEST(PassthroughRules, TakeNoAacInTheFramingOfBroadcasts) {
    for (const FileType type : {mp4, mov, m4a})
        EXPECT_FALSE(isAccepted(type, {.codec = AV_CODEC_ID_AAC_LATM}, false));
}

TEST(PassthroughRules, NeedTheDecodersHeaderWhereItStandsApart) {
    for (const AVCodecID codec :
         {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_MPEG4, AV_CODEC_ID_ALAC})
        for (const FileType type : {mp4, mov, m4a})
            EXPECT_FALSE(isAccepted(type, {.codec = codec})) << avcodec_get_name(codec);
}

TEST(PassthroughRules, TakeNothingUnknown) {
    StreamMaker maker;
    AVStream& stream = maker.add({.codec = AV_CODEC_ID_NONE, .tag = "zzzz"});
    stream.codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    EXPECT_FALSE(accepts(mov, stream, true));
    EXPECT_FALSE(accepts(mp4, stream, true));
}

TEST(PassthroughRules, LeavePicturesOutOfSoundFiles) {
    EXPECT_TRUE(leavesOut(m4a, AVMEDIA_TYPE_VIDEO));
    EXPECT_TRUE(leavesOut(m4a, AVMEDIA_TYPE_SUBTITLE));
    EXPECT_FALSE(leavesOut(m4a, AVMEDIA_TYPE_AUDIO));
    for (const FileType type : {mp4, mov})
        for (const AVMediaType kind : {AVMEDIA_TYPE_VIDEO, AVMEDIA_TYPE_AUDIO})
            EXPECT_FALSE(leavesOut(type, kind));
}

TEST(PassthroughRules, TagHevcByItsParameterSets) {
    for (const FileType type : {mp4, mov}) {
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "hev1", hevcRecord(allSets)}), "hvc1");
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "", hevcByteStream(allSets)}, false), "hvc1");
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "hvc1", hevcRecord({})}), "");
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "hvc1", hevcRecord({32, 34})}), "");
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "", hevcByteStream({33, 34})}, false), "");
        EXPECT_EQ(tagFor(type, {AV_CODEC_ID_HEVC, "hvc1", {}}), "");
    }
}

TEST(PassthroughRules, FindParameterSetsBehindOthersAndThreeByteStartCodes) {
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_HEVC, "", hevcRecord({39, 32, 40, 33, 34})}), "hvc1");
    Bytes bytes{0, 0, 1, 32 << 1, 1, 0x55, 0, 0, 1, 33 << 1, 1, 0x55, 0, 0, 1, 34 << 1, 1};
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_HEVC, "", bytes}), "hvc1");
}

TEST(PassthroughRules, SurviveParameterSetsThatAreCutOff) {
    const Bytes whole = hevcRecord(allSets);
    for (std::size_t size = 0; size + 7 < whole.size(); ++size)
        EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_HEVC,
                               "hvc1",
                               {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}}),
                  "")
            << size;
    Bytes lying = whole;
    lying[24] = lying[25] = 0xff;
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_HEVC, "hvc1", lying}), "");
}

TEST(PassthroughRules, KeepDolbyVisionApart) {
    const auto nameFor = [](const char* tag, const Bytes& header) {
        StreamMaker maker;
        return entryName(maker.add({AV_CODEC_ID_HEVC, tag, header})).value_or(0);
    };
    for (const char* tag : {"dvh1", "dvhe"}) {
        EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_HEVC, tag, hevcRecord(allSets)}), "hvc1");
        EXPECT_EQ(nameFor(tag, hevcRecord(allSets)), fourCharCode("dvh1"));
        EXPECT_EQ(nameFor(tag, hevcRecord({})), fourCharCode("dvhe"));
    }
    EXPECT_EQ(nameFor("hvc1", hevcRecord(allSets)), 0U);
}

TEST(PassthroughRules, KeepTagsThatTheTypeKnows) {
    EXPECT_EQ(tagFor(mov, {AV_CODEC_ID_PRORES, "apcs", {}}), "apcs");
    EXPECT_EQ(tagFor(mov, {AV_CODEC_ID_H264, "avc1", {}}), "avc1");
    EXPECT_EQ(tagFor(mov, {AV_CODEC_ID_DVVIDEO, "dv5p", {}}), "dv5p");
}

TEST(PassthroughRules, LeaveOtherTagsToTheMuxer) {
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_MPEG4, "FMP4", {}}), "");
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_H264, "zzzz", {}}), "");
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_H264, "", {}}), "");
    EXPECT_EQ(tagFor(mp4, {AV_CODEC_ID_H264, "avc1", {}}, false), "");
}

} // namespace boxlift::media::passthrough_rules
