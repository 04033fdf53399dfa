#include "engine/media/passthrough_rules.h"

#include <algorithm>
#include <array>
#include <span>

#include "engine/media/av/conversion.h"
#include "engine/media/codec_codes.h"
#include "engine/media/dolby_vision.h"
#include "engine/media/muxer.h"

namespace boxlift::media::passthrough_rules {

namespace {

struct Row {
    FileType type;
    AVMediaType mediaType;
    FourCharCode code;
};

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// Codes that players of each type know. QuickTime video has no rows: whatever the muxer writes.
constexpr std::array rows{
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("avc1")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("avc3")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("hvc1")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("hev1")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("dvh1")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("dvhe")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("mp4v")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("av01")},
    Row{mp4, AVMEDIA_TYPE_VIDEO, fourCharCode("vp09")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode("aac ")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode("alac")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode(".mp3")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode(".mp2")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode("ac-3")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode("ec-3")},
    Row{mp4, AVMEDIA_TYPE_AUDIO, fourCharCode("opus")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("aac ")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("alac")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("lpcm")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode(".mp3")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode(".mp2")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("ac-3")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("ec-3")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("ima4")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("ulaw")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("alaw")},
    Row{mov, AVMEDIA_TYPE_AUDIO, fourCharCode("samr")},
    Row{m4a, AVMEDIA_TYPE_AUDIO, fourCharCode("aac ")},
    Row{m4a, AVMEDIA_TYPE_AUDIO, fourCharCode("alac")},
};

/// Codecs whose decoders are set up from the header alone.
constexpr std::array needHeader{AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_MPEG4,
                                AV_CODEC_ID_ALAC};

bool listed(FileType type, AVMediaType mediaType, FourCharCode code) {
    return std::any_of(rows.begin(), rows.end(), [&](const Row& row) {
        return row.type == type && row.mediaType == mediaType && row.code == code;
    });
}

bool hasNeededHeader(const AVCodecParameters& parameters) {
    const bool isNeeded =
        std::find(needHeader.begin(), needHeader.end(), parameters.codec_id) != needHeader.end();
    return !isNeeded || parameters.extradata_size > 0;
}

std::span<const std::uint8_t> extradata(const AVCodecParameters& parameters) {
    return {parameters.extradata, static_cast<std::size_t>(std::max(0, parameters.extradata_size))};
}

/// A bit for each of the three HEVC parameter sets (ITU-T H.265, 7.4.2.2: NAL unit types 32, 33 and
/// 34).
unsigned parameterSetBit(int nalType) {
    return nalType >= 32 && nalType <= 34 ? 1U << (nalType - 32) : 0;
}

/// The parameter sets in an hvcC record (ISO/IEC 14496-15, 8.3.3.1).
unsigned setsInRecord(std::span<const std::uint8_t> record) {
    unsigned found = 0;
    std::size_t position = 23;
    for (int arrays = record.size() > 22 ? record[22] : 0; arrays > 0; --arrays) {
        if (position + 3 > record.size())
            return found;
        const int type = record[position] & 0x3f;
        int count = record[position + 1] << 8 | record[position + 2];
        found |= count > 0 ? parameterSetBit(type) : 0;
        for (position += 3; count > 0 && position + 2 <= record.size(); --count)
            position += 2U + static_cast<std::size_t>(record[position] << 8 | record[position + 1]);
    }
    return found;
}

/// The parameter sets between start codes (ITU-T H.265, annex B).
unsigned setsInByteStream(std::span<const std::uint8_t> bytes) {
    unsigned found = 0;
    for (std::size_t i = 0; i + 3 < bytes.size(); ++i)
        if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1)
            found |= parameterSetBit(bytes[i + 3] >> 1 & 0x3f);
    return found;
}

bool hasParameterSets(std::span<const std::uint8_t> header) {
    if (header.size() < 4)
        return false;
    const bool isRecord = header[0] == 1;
    return (isRecord ? setsInRecord(header) : setsInByteStream(header)) == 7;
}

std::uint32_t hevcTag(const AVCodecParameters& parameters) {
    return hasParameterSets(extradata(parameters)) ? av::toCodecTag(fourCharCode("hvc1")) : 0;
}

} // namespace

bool leavesOut(FileType type, AVMediaType mediaType) {
    return type == m4a && mediaType != AVMEDIA_TYPE_AUDIO;
}

bool accepts(FileType type, const AVStream& stream, bool fromMovie) {
    const AVCodecParameters& parameters = *stream.codecpar;
    const auto code = codec_codes::codeOf(parameters, fromMovie);
    if (!code || parameters.codec_id == AV_CODEC_ID_NONE || !hasNeededHeader(parameters))
        return false;
    // The other framing of AAC has no place in these files.
    if (parameters.codec_id == AV_CODEC_ID_AAC_LATM)
        return false;
    const bool isFree = type == mov && parameters.codec_type == AVMEDIA_TYPE_VIDEO;
    return isFree || listed(type, parameters.codec_type, *code);
}

std::uint32_t codecTag(FileType type, const AVStream& source, bool fromMovie) {
    const AVCodecParameters& parameters = *source.codecpar;
    if (parameters.codec_id == AV_CODEC_ID_HEVC)
        return hevcTag(parameters);
    const bool isKnown = fromMovie && knowsTag(type, parameters.codec_id, parameters.codec_tag);
    return isKnown ? parameters.codec_tag : 0;
}

std::optional<FourCharCode> entryName(const AVStream& source) {
    const AVCodecParameters& parameters = *source.codecpar;
    if (parameters.codec_id != AV_CODEC_ID_HEVC || !dolby_vision::lacksPlainBase(source))
        return std::nullopt;
    return hasParameterSets(extradata(parameters)) ? fourCharCode("dvh1") : fourCharCode("dvhe");
}

} // namespace boxlift::media::passthrough_rules
