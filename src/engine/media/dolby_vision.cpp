#include "engine/media/dolby_vision.h"

#include <cstring>
#include <optional>

#include "engine/media/av/compat.h"
#include "engine/media/av/conversion.h"

namespace boxlift::media::dolby_vision {

namespace {

/// The one profile whose base layer is in a colour space of its own.
constexpr int profileWithoutBase = 5;
constexpr std::size_t recordSize = 24;

std::optional<AVDOVIDecoderConfigurationRecord> configuration(const AVStream& stream) {
    const auto data = av::streamSideData(stream, AV_PKT_DATA_DOVI_CONF);
    AVDOVIDecoderConfigurationRecord record{};
    if (data.size() < sizeof(record))
        return std::nullopt;
    std::memcpy(&record, data.data(), sizeof(record));
    return record;
}

FourCharCode boxType(int profile) {
    if (profile > 10)
        return fourCharCode("dvwC");
    return profile > 7 ? fourCharCode("dvvC") : fourCharCode("dvcC");
}

} // namespace

box_bytes::Bytes configurationBox(const AVStream& stream) {
    const auto record = configuration(stream);
    if (!record)
        return {};
    box_bytes::Bytes bytes{record->dv_version_major, record->dv_version_minor};
    const unsigned flags = (record->rpu_present_flag ? 4U : 0U) |
                           (record->el_present_flag ? 2U : 0U) |
                           (record->bl_present_flag ? 1U : 0U);
    const unsigned profile = record->dv_profile;
    const unsigned level = record->dv_level;
    box_bytes::put(bytes, profile << 9U | level << 3U | flags, 2);
    box_bytes::put(bytes, static_cast<unsigned>(record->dv_bl_signal_compatibility_id) << 4U, 1);
    bytes.resize(recordSize);
    return box_bytes::box(boxType(record->dv_profile), bytes);
}

bool lacksPlainBase(const AVStream& stream) {
    const std::uint32_t tag = stream.codecpar->codec_tag;
    const bool isCalledSo =
        tag == av::toCodecTag(fourCharCode("dvh1")) || tag == av::toCodecTag(fourCharCode("dvhe"));
    const auto record = configuration(stream);
    return isCalledSo || (record && record->dv_profile == profileWithoutBase);
}

} // namespace boxlift::media::dolby_vision
