#include "engine/media/index_trust.h"

#include <algorithm>

#include "engine/media/av/demuxer.h"

namespace boxlift::media {

namespace {

/// Codecs whose samples the library takes from a movie's index as they are. Those of others may
/// hold several frames, or pieces, that have to be told apart.
bool isTakenAsItIs(const AVCodecParameters& parameters) {
    switch (parameters.codec_id) {
    case AV_CODEC_ID_AAC:
    case AV_CODEC_ID_ALAC:
    case AV_CODEC_ID_MOV_TEXT:
        return true;
    default:
        return av_get_exact_bits_per_sample(parameters.codec_id) > 0;
    }
}

/// Of a list of key frames that is empty the library makes one that has the first; where there is
/// no list it takes all samples for such.
bool tellsKeyFrames(const AVStream& stream) {
    const int count = avformat_index_get_entries_count(&stream);
    int keys = 0;
    for (int i = 0; i < count; ++i)
        keys += (av::indexEntry(stream, i)->flags & AVINDEX_KEYFRAME) != 0;
    return keys > 1 && keys < count;
}

/// A sample lasts until the next one, and the last one until the media's end: none where it begins
/// there.
bool tellsLastLength(const AVStream& stream) {
    const int count = avformat_index_get_entries_count(&stream);
    return count > 0 && av::indexEntry(stream, count - 1)->timestamp < stream.duration;
}

bool isH264(const AVStream& stream) {
    return stream.codecpar->codec_id == AV_CODEC_ID_H264;
}

} // namespace

bool indexSparesParsing(const AVFormatContext& movie, std::span<const int> streams) {
    const auto isDescribed = [&](int index) {
        const AVStream& stream = *movie.streams[index];
        return isH264(stream) ? tellsKeyFrames(stream) && tellsLastLength(stream)
                              : isTakenAsItIs(*stream.codecpar);
    };
    return std::ranges::any_of(streams, [&](int index) { return isH264(*movie.streams[index]); }) &&
           std::ranges::all_of(streams, isDescribed);
}

} // namespace boxlift::media
