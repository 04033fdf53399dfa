#include "engine/media/codec_codes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "engine/media/av/conversion.h"

namespace boxlift::media::codec_codes {

namespace {

struct Row {
    AVCodecID codec;
    FourCharCode code;
};

constexpr std::array rows{
    Row{AV_CODEC_ID_H264, fourCharCode("avc1")},
    Row{AV_CODEC_ID_HEVC, fourCharCode("hvc1")},
    Row{AV_CODEC_ID_MPEG4, fourCharCode("mp4v")},
    Row{AV_CODEC_ID_MPEG2VIDEO, fourCharCode("mp2v")},
    Row{AV_CODEC_ID_MPEG1VIDEO, fourCharCode("mp1v")},
    Row{AV_CODEC_ID_MJPEG, fourCharCode("jpeg")},
    Row{AV_CODEC_ID_H263, fourCharCode("h263")},
    Row{AV_CODEC_ID_QTRLE, fourCharCode("rle ")},
    Row{AV_CODEC_ID_CINEPAK, fourCharCode("cvid")},
    Row{AV_CODEC_ID_SVQ1, fourCharCode("SVQ1")},
    Row{AV_CODEC_ID_SVQ3, fourCharCode("SVQ3")},
    Row{AV_CODEC_ID_VP8, fourCharCode("vp08")},
    Row{AV_CODEC_ID_VP9, fourCharCode("vp09")},
    Row{AV_CODEC_ID_AV1, fourCharCode("av01")},
    Row{AV_CODEC_ID_PNG, fourCharCode("png ")},
    Row{AV_CODEC_ID_V210, fourCharCode("v210")},
    Row{AV_CODEC_ID_AAC, fourCharCode("aac ")},
    Row{AV_CODEC_ID_AAC_LATM, fourCharCode("aac ")},
    Row{AV_CODEC_ID_ALAC, fourCharCode("alac")},
    Row{AV_CODEC_ID_MP3, fourCharCode(".mp3")},
    Row{AV_CODEC_ID_MP2, fourCharCode(".mp2")},
    Row{AV_CODEC_ID_MP1, fourCharCode(".mp1")},
    Row{AV_CODEC_ID_AC3, fourCharCode("ac-3")},
    Row{AV_CODEC_ID_EAC3, fourCharCode("ec-3")},
    Row{AV_CODEC_ID_FLAC, fourCharCode("flac")},
    Row{AV_CODEC_ID_OPUS, fourCharCode("opus")},
    Row{AV_CODEC_ID_VORBIS, fourCharCode("vorb")},
    Row{AV_CODEC_ID_AMR_NB, fourCharCode("samr")},
    Row{AV_CODEC_ID_AMR_WB, fourCharCode("sawb")},
    Row{AV_CODEC_ID_PCM_ALAW, fourCharCode("alaw")},
    Row{AV_CODEC_ID_PCM_MULAW, fourCharCode("ulaw")},
    Row{AV_CODEC_ID_ADPCM_IMA_QT, fourCharCode("ima4")},
    Row{AV_CODEC_ID_QDM2, fourCharCode("QDM2")},
    Row{AV_CODEC_ID_ILBC, fourCharCode("ilbc")},
};

/// Codecs whose code depends on a variant that the stream tells.
struct VariantRow {
    AVCodecID codec;
    int variant;
    FourCharCode code;
};

/// ProRes by profile (0 to 5), for containers without the code itself.
constexpr std::array proResProfiles{
    VariantRow{AV_CODEC_ID_PRORES, 0, fourCharCode("apco")},
    VariantRow{AV_CODEC_ID_PRORES, 1, fourCharCode("apcs")},
    VariantRow{AV_CODEC_ID_PRORES, 2, fourCharCode("apcn")},
    VariantRow{AV_CODEC_ID_PRORES, 3, fourCharCode("apch")},
    VariantRow{AV_CODEC_ID_PRORES, 4, fourCharCode("ap4h")},
    VariantRow{AV_CODEC_ID_PRORES, 5, fourCharCode("ap4x")},
};

/// DV by pixel format and height: 25 Mbit/s NTSC and PAL, DVCPRO PAL, DVCPRO50.
struct DvRow {
    AVPixelFormat format;
    int height;
    FourCharCode code;
};

constexpr std::array dvVariants{
    DvRow{AV_PIX_FMT_YUV411P, 480, fourCharCode("dvc ")},
    DvRow{AV_PIX_FMT_YUV420P, 576, fourCharCode("dvcp")},
    DvRow{AV_PIX_FMT_YUV411P, 576, fourCharCode("dvpp")},
    DvRow{AV_PIX_FMT_YUV422P, 480, fourCharCode("dv5n")},
    DvRow{AV_PIX_FMT_YUV422P, 576, fourCharCode("dv5p")},
};

constexpr std::array rawFormats{
    VariantRow{AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_UYVY422, fourCharCode("2vuy")},
    VariantRow{AV_CODEC_ID_RAWVIDEO, AV_PIX_FMT_YUYV422, fourCharCode("yuvs")},
};

/// AAC by audio object type (ISO/IEC 14496-3, table 1.17); every other type is plain AAC.
constexpr std::array aacObjectTypes{
    VariantRow{AV_CODEC_ID_AAC, 23, fourCharCode("aacl")},
    VariantRow{AV_CODEC_ID_AAC, 39, fourCharCode("aace")},
    VariantRow{AV_CODEC_ID_AAC, 42, fourCharCode("usac")},
};

template <std::size_t Size>
std::optional<FourCharCode> variantCode(const std::array<VariantRow, Size>& table, AVCodecID codec,
                                        int variant) {
    for (const VariantRow& row : table)
        if (row.codec == codec && row.variant == variant)
            return row.code;
    return std::nullopt;
}

/// The audio object type of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1), 0 without one.
int audioObjectType(std::span<const std::uint8_t> config) {
    if (config.size() < 2)
        return 0;
    const int type = config[0] >> 3;
    constexpr int escape = 31;
    return type == escape ? 32 + ((config[0] & 7) << 3 | config[1] >> 5) : type;
}

bool isPcm(AVCodecID codec) {
    return codec >= AV_CODEC_ID_PCM_S16LE && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

std::optional<FourCharCode> dvCode(const AVCodecParameters& parameters) {
    for (const DvRow& row : dvVariants)
        if (row.format == parameters.format && row.height == parameters.height)
            return row.code;
    return parameters.height == 576 ? fourCharCode("dvcp") : fourCharCode("dvc ");
}

std::optional<FourCharCode> variantOf(const AVCodecParameters& parameters) {
    switch (parameters.codec_id) {
    case AV_CODEC_ID_PRORES:
        return variantCode(proResProfiles, parameters.codec_id, parameters.profile);
    case AV_CODEC_ID_DVVIDEO:
        return dvCode(parameters);
    case AV_CODEC_ID_RAWVIDEO:
        return variantCode(rawFormats, parameters.codec_id, parameters.format);
    case AV_CODEC_ID_AAC:
        return variantCode(
            aacObjectTypes, parameters.codec_id,
            audioObjectType({parameters.extradata,
                             static_cast<std::size_t>(std::max(0, parameters.extradata_size))}));
    default:
        return std::nullopt;
    }
}

std::optional<FourCharCode> ownCode(const AVCodecParameters& parameters) {
    if (const auto variant = variantOf(parameters))
        return variant;
    for (const Row& row : rows)
        if (row.codec == parameters.codec_id)
            return row.code;
    if (isPcm(parameters.codec_id))
        return fourCharCode("lpcm");
    return std::nullopt;
}

bool isPrintable(FourCharCode code) {
    for (int shift = 0; shift < 32; shift += 8)
        if ((code >> shift & 0xff) < 0x20 || (code >> shift & 0xff) == 0x7f)
            return false;
    return true;
}

/// Outside movies a tag may be a number, such as WAVE's formats: that is no code.
std::optional<FourCharCode> storedCode(const AVCodecParameters& parameters, bool isMovie) {
    const FourCharCode code = av::toFourCharCode(parameters.codec_tag);
    if (code == 0 || (!isMovie && !isPrintable(code)))
        return std::nullopt;
    return code;
}

std::optional<FourCharCode> nameCode(const AVCodecParameters& parameters) {
    if (parameters.codec_id == AV_CODEC_ID_NONE)
        return std::nullopt;
    char text[5] = "    ";
    const char* name = avcodec_get_name(parameters.codec_id);
    std::copy_n(name, std::min<std::size_t>(4, std::strlen(name)), text);
    return fourCharCode(text);
}

bool keepsStoredCode(const AVCodecParameters& parameters, bool isMovie) {
    // An `mp4v` entry names any codec of its object type: MPEG-1 and 2, JPEG and PNG among them.
    const bool namesOther = storedCode(parameters, isMovie) == fourCharCode("mp4v") &&
                            parameters.codec_id != AV_CODEC_ID_MPEG4;
    return isMovie && parameters.codec_type == AVMEDIA_TYPE_VIDEO && !namesOther;
}

} // namespace

std::optional<FourCharCode> codeOf(const AVCodecParameters& parameters, bool isMovie) {
    const auto stored = storedCode(parameters, isMovie);
    if (stored && keepsStoredCode(parameters, isMovie))
        return stored;
    if (const auto own = ownCode(parameters))
        return own;
    return stored ? stored : nameCode(parameters);
}

} // namespace boxlift::media::codec_codes
