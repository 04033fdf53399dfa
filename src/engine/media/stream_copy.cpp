#include "engine/media/stream_copy.h"

#include <algorithm>
#include <array>
#include <new>

#include "engine/media/av/compat.h"

namespace boxlift::media {

namespace {

/// Keys that tell who wrote the samples, not what they are.
constexpr std::array foreignKeys{"encoder", "vendor_id"};

void requireMemory(int result) {
    if (result < 0)
        throw std::bad_alloc();
}

} // namespace

void copyStreamLabels(AVStream& to, const AVStream& from) {
    requireMemory(av_dict_copy(&to.metadata, from.metadata, 0));
    for (const char* key : foreignKeys)
        av_dict_set(&to.metadata, key, nullptr, 0);
    to.disposition = from.disposition;
}

void copyStreamDescription(AVStream& to, const AVStream& from) {
    requireMemory(avcodec_parameters_copy(to.codecpar, from.codecpar));
    requireMemory(av::copyStreamSideData(to, from));
    to.codecpar->codec_tag = 0;
    to.time_base = from.time_base;
    to.avg_frame_rate = from.avg_frame_rate;
    to.r_frame_rate = from.r_frame_rate;
    to.sample_aspect_ratio = from.sample_aspect_ratio;
    // The muxers look at the parameters alone, and refuse two words on it: the container's counts.
    if (from.sample_aspect_ratio.num > 0)
        to.codecpar->sample_aspect_ratio = from.sample_aspect_ratio;
    copyStreamLabels(to, from);
}

} // namespace boxlift::media
