#include "engine/media/codec_codes.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "engine/media/av/conversion.h"
#include "engine/media/av/handles.h"

namespace boxlift::media::codec_codes {

namespace {

struct Traits {
    AVCodecID codec = AV_CODEC_ID_NONE;
    /// Empty for none.
    std::string tag{};
    /// Unknown.
    int profile = -99;
    int format = -1;
    int height = 0;
    std::vector<std::uint8_t> header{};
};

av::ParametersPtr describe(const Traits& traits) {
    av::ParametersPtr parameters(avcodec_parameters_alloc());
    parameters->codec_id = traits.codec;
    parameters->codec_type = avcodec_get_type(traits.codec);
    if (!traits.tag.empty())
        parameters->codec_tag = MKTAG(traits.tag[0], traits.tag[1], traits.tag[2], traits.tag[3]);
    parameters->profile = traits.profile;
    parameters->format = traits.format;
    parameters->height = traits.height;
    parameters->extradata_size = static_cast<int>(traits.header.size());
    parameters->extradata =
        static_cast<std::uint8_t*>(av_mallocz(traits.header.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::copy(traits.header.begin(), traits.header.end(), parameters->extradata);
    return parameters;
}

/// "none" where there is no code.
std::string codeFor(const Traits& traits, bool isMovie = false) {
    const auto code = codeOf(*describe(traits), isMovie);
    if (!code)
        return "none";
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(*code >> shift & 0xff);
    return text;
}

struct Row {
    AVCodecID codec;
    const char* code;
};

constexpr std::array plainRows{
    Row{AV_CODEC_ID_H264, "avc1"},         Row{AV_CODEC_ID_HEVC, "hvc1"},
    Row{AV_CODEC_ID_MPEG4, "mp4v"},        Row{AV_CODEC_ID_MPEG2VIDEO, "mp2v"},
    Row{AV_CODEC_ID_MPEG1VIDEO, "mp1v"},   Row{AV_CODEC_ID_MJPEG, "jpeg"},
    Row{AV_CODEC_ID_H263, "h263"},         Row{AV_CODEC_ID_QTRLE, "rle "},
    Row{AV_CODEC_ID_CINEPAK, "cvid"},      Row{AV_CODEC_ID_SVQ1, "SVQ1"},
    Row{AV_CODEC_ID_SVQ3, "SVQ3"},         Row{AV_CODEC_ID_VP8, "vp08"},
    Row{AV_CODEC_ID_VP9, "vp09"},          Row{AV_CODEC_ID_AV1, "av01"},
    Row{AV_CODEC_ID_PNG, "png "},          Row{AV_CODEC_ID_V210, "v210"},
    Row{AV_CODEC_ID_AAC, "aac "},          Row{AV_CODEC_ID_PCM_ALAW, "alaw"},
    Row{AV_CODEC_ID_PCM_MULAW, "ulaw"},    Row{AV_CODEC_ID_ALAC, "alac"},
    Row{AV_CODEC_ID_MP3, ".mp3"},          Row{AV_CODEC_ID_MP2, ".mp2"},
    Row{AV_CODEC_ID_MP1, ".mp1"},          Row{AV_CODEC_ID_AC3, "ac-3"},
    Row{AV_CODEC_ID_EAC3, "ec-3"},         Row{AV_CODEC_ID_FLAC, "flac"},
    Row{AV_CODEC_ID_OPUS, "opus"},         Row{AV_CODEC_ID_VORBIS, "vorb"},
    Row{AV_CODEC_ID_AMR_NB, "samr"},       Row{AV_CODEC_ID_AMR_WB, "sawb"},
    Row{AV_CODEC_ID_ADPCM_IMA_QT, "ima4"}, Row{AV_CODEC_ID_QDM2, "QDM2"},
    Row{AV_CODEC_ID_ILBC, "ilbc"},
};

} // namespace

TEST(CodecCodes, NamesEveryCodecOutsideOfMovies) {
    for (const auto& [codec, code] : plainRows) {
        EXPECT_EQ(codeFor({.codec = codec}), code);
        // A transport stream's tag says nothing to anybody.
        EXPECT_EQ(codeFor({.codec = codec, .tag = "\x1b_x!"}), code);
    }
}

TEST(CodecCodes, NamesEveryCodecInMoviesWithoutATag) {
    for (const auto& [codec, code] : plainRows)
        EXPECT_EQ(codeFor({.codec = codec}, true), code);
}

TEST(CodecCodes, KeepsTheStoredCodeOfVideoInMovies) {
    for (const char* tag : {"avc1", "avc3"})
        EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_H264, .tag = tag}, true), tag);
    for (const char* tag : {"hvc1", "hev1", "dvh1"})
        EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_HEVC, .tag = tag}, true), tag);
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_MPEG4, .tag = "mp4v"}, true), "mp4v");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_PRORES, .tag = "apch", .profile = 0}, true), "apch");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_DVVIDEO, .tag = "dvh6"}, true), "dvh6");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_MPEG2VIDEO, .tag = "hdv3"}, true), "hdv3");
}

TEST(CodecCodes, NamesTheCodecInsideOfAnMpeg4Entry) {
    const std::array<Row, 4> rows{{{AV_CODEC_ID_MPEG1VIDEO, "mp1v"},
                                   {AV_CODEC_ID_MPEG2VIDEO, "mp2v"},
                                   {AV_CODEC_ID_MJPEG, "jpeg"},
                                   {AV_CODEC_ID_PNG, "png "}}};
    for (const auto& [codec, code] : rows)
        EXPECT_EQ(codeFor({.codec = codec, .tag = "mp4v"}, true), code);
}

TEST(CodecCodes, NeverTakesTheContainersWordForSound) {
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_AAC, .tag = "mp4a"}, true), "aac ");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_MP3, .tag = "mp4a"}, true), ".mp3");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_MP2, .tag = "mp4a"}, true), ".mp2");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_MP1, .tag = "mp4a"}, true), ".mp1");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_PCM_S16LE, .tag = "sowt"}, true), "lpcm");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_FLAC, .tag = "fLaC"}, true), "flac");
}

TEST(CodecCodes, CallsEveryPlainPcmTheSame) {
    for (const AVCodecID codec :
         {AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_U8, AV_CODEC_ID_PCM_S8,
          AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S24BE, AV_CODEC_ID_PCM_S32LE,
          AV_CODEC_ID_PCM_S32BE, AV_CODEC_ID_PCM_F32LE, AV_CODEC_ID_PCM_F32BE,
          AV_CODEC_ID_PCM_F64LE, AV_CODEC_ID_PCM_F64BE, AV_CODEC_ID_PCM_U16LE,
          AV_CODEC_ID_PCM_BLURAY, AV_CODEC_ID_PCM_DVD})
        EXPECT_EQ(codeFor({.codec = codec}), "lpcm") << avcodec_get_name(codec);
}

TEST(CodecCodes, TellsAacApartByItsObjectType) {
    const auto code = [](std::vector<std::uint8_t> config) {
        return codeFor({.codec = AV_CODEC_ID_AAC, .tag = "mp4a", .header = std::move(config)},
                       true);
    };
    EXPECT_EQ(code({0x0a, 0x10}), "aac ");       // Main
    EXPECT_EQ(code({0x12, 0x10}), "aac ");       // LC
    EXPECT_EQ(code({0x2b, 0x92, 0x08}), "aac "); // HE
    EXPECT_EQ(code({0xeb, 0x09, 0x88}), "aac "); // HE v2
    EXPECT_EQ(code({0xba, 0x10}), "aacl");       // LD, 23
    EXPECT_EQ(code({0xf8, 0xe8, 0x50}), "aace"); // ELD, 39 by way of the escape
    EXPECT_EQ(code({0xf9, 0x48, 0x40}), "usac"); // 42 by way of the escape
    EXPECT_EQ(code({0xba}), "aac ");             // cut off
}

TEST(CodecCodes, DoesNotTrustTheProfileOfAac) {
    constexpr int lowDelay = 22;
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_AAC, .profile = lowDelay, .header = {0x12, 0x10}}),
              "aac ");
}

TEST(CodecCodes, TellsProResByProfileWhereNoTagDoes) {
    const std::array<const char*, 6> codes{"apco", "apcs", "apcn", "apch", "ap4h", "ap4x"};
    for (int profile = 0; profile < 6; ++profile)
        EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_PRORES, .profile = profile}),
                  codes[static_cast<std::size_t>(profile)]);
}

TEST(CodecCodes, TellsDvByFormatAndHeight) {
    const auto code = [](AVPixelFormat format, int height) {
        return codeFor({.codec = AV_CODEC_ID_DVVIDEO, .format = format, .height = height});
    };
    EXPECT_EQ(code(AV_PIX_FMT_YUV411P, 480), "dvc ");
    EXPECT_EQ(code(AV_PIX_FMT_YUV420P, 576), "dvcp");
    EXPECT_EQ(code(AV_PIX_FMT_YUV411P, 576), "dvpp");
    EXPECT_EQ(code(AV_PIX_FMT_YUV422P, 480), "dv5n");
    EXPECT_EQ(code(AV_PIX_FMT_YUV422P, 576), "dv5p");
    EXPECT_EQ(code(AV_PIX_FMT_NONE, 576), "dvcp");
    EXPECT_EQ(code(AV_PIX_FMT_NONE, 480), "dvc ");
}

TEST(CodecCodes, TellsRawPicturesByFormat) {
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_RAWVIDEO, .format = AV_PIX_FMT_UYVY422}), "2vuy");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_RAWVIDEO, .format = AV_PIX_FMT_YUYV422}), "yuvs");
}

TEST(CodecCodes, KeepsTheTagOfUnknownCodecs) {
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_WMV3, .tag = "WMV3"}), "WMV3");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_QCELP, .tag = "Qclp"}, true), "Qclp");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_NONE, .tag = "xyz1"}, true), "xyz1");
}

TEST(CodecCodes, FallsBackOnTheNameOfTheCodec) {
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_WMV3}), "wmv3");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_TRUEHD}), "true");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_VC1}), "vc1 ");
}

TEST(CodecCodes, HasNoCodeForNothing) {
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_NONE}), "none");
    EXPECT_EQ(codeFor({.codec = AV_CODEC_ID_NONE}, true), "none");
}

} // namespace boxlift::media::codec_codes
