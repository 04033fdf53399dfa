#include "engine/media/expected_samples.h"

#include <algorithm>

#include "engine/media/packet_source.h"

namespace boxlift::media {

namespace {

/// Sound's frames are this long or longer, but for speech codecs.
constexpr double usualFrameLength = 1024;
constexpr double highestUsualRate = 60;
/// Guesses are better a fifth too high than a little too low.
constexpr double margin = 1.2;

bool isVideo(const AVStream& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
}

/// Time stamps that are rescaled round now this way and now that.
bool keepsItsClock(const AVStream& stream) {
    const AVRational base = stream.time_base;
    return base.num == 1 && (isVideo(stream) || base.den == stream.codecpar->sample_rate);
}

ExpectedSamples countIndex(const AVStream& stream) {
    ExpectedSamples samples;
    samples.count = avformat_index_get_entries_count(&stream);
    std::int64_t previous = AV_NOPTS_VALUE;
    std::int64_t length = -1;
    for (int i = 0; i < samples.count; ++i) {
        const AVIndexEntry& entry = *av::indexEntry(stream, i);
        samples.bytes += entry.size;
        samples.keys += (entry.flags & AVINDEX_KEYFRAME) != 0;
        if (previous != AV_NOPTS_VALUE && entry.timestamp - previous != length) {
            ++samples.timeRuns;
            length = entry.timestamp - previous;
        }
        previous = entry.timestamp;
    }
    if (!keepsItsClock(stream))
        samples.timeRuns = samples.count;
    samples.isCertain = true;
    return samples;
}

double pictureRate(const AVStream& stream) {
    const AVRational rate = stream.avg_frame_rate;
    return rate.num > 0 && rate.den > 0 ? av_q2d(rate) : highestUsualRate;
}

double samplesPerSecond(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (isVideo(stream))
        return pictureRate(stream);
    return parameters.codec_type == AVMEDIA_TYPE_AUDIO ? parameters.sample_rate / usualFrameLength
                                                       : 1;
}

ExpectedSamples guess(const PacketSource& source, int index) {
    const Time length = std::max(source.range(index).end(), source.duration());
    ExpectedSamples samples;
    if (length.isValid())
        samples.count = static_cast<std::int64_t>(margin * length.seconds() *
                                                  samplesPerSecond(source.stream(index)));
    samples.timeRuns = samples.keys = samples.count;
    samples.bytes = source.fileSize();
    return samples;
}

} // namespace

ExpectedSamples copiedSamples(const PacketSource& source, int index) {
    const AVStream& stream = source.stream(index);
    ExpectedSamples samples = source.isIndexed() ? countIndex(stream) : guess(source, index);
    samples.mayBeReordered = isVideo(stream);
    return samples;
}

ExpectedSamples encodedSamples(const PacketSource& source, int index) {
    const AVStream& stream = source.stream(index);
    ExpectedSamples samples = guess(source, index);
    if (isVideo(stream) && source.isIndexed())
        samples.count = samples.timeRuns = samples.keys = avformat_index_get_entries_count(&stream);
    samples.mayBeReordered = isVideo(stream);
    return samples;
}

} // namespace boxlift::media
