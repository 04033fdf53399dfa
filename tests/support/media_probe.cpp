#include "support/media_probe.h"

#include <array>
#include <cctype>
#include <stdexcept>

#include "support/media_input.h"
#include "support/media_libav.h"
#include "support/media_payload.h"

namespace boxlift::test {

namespace {

Ratio toRatio(AVRational value) {
    return {value.num, value.den};
}

std::string orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

std::optional<double> toSeconds(std::int64_t ticks, AVRational timeBase) {
    if (ticks == AV_NOPTS_VALUE) {
        return std::nullopt;
    }
    return static_cast<double>(ticks) * av_q2d(timeBase);
}

std::optional<std::int64_t> toTicks(std::int64_t ticks) {
    return ticks != AV_NOPTS_VALUE ? std::optional(ticks) : std::nullopt;
}

StreamKind toKind(AVMediaType type) {
    switch (type) {
    case AVMEDIA_TYPE_VIDEO:
        return StreamKind::video;
    case AVMEDIA_TYPE_AUDIO:
        return StreamKind::audio;
    case AVMEDIA_TYPE_SUBTITLE:
        return StreamKind::subtitle;
    case AVMEDIA_TYPE_DATA:
        return StreamKind::data;
    default:
        return StreamKind::other;
    }
}

std::string toText(std::uint32_t tag) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const int character = static_cast<int>((tag >> shift) & 0xff);
        if (std::isprint(character) != 0) {
            text += static_cast<char>(character);
        }
    }
    return text;
}

std::string toText(AVFieldOrder order) {
    constexpr std::array names = {"unknown", "progressive", "tt", "bb", "tb", "bt"};
    return names.at(static_cast<std::size_t>(order));
}

ColourTags coloursOf(const AVCodecParameters& parameters) {
    ColourTags tags;
    if (parameters.color_primaries != AVCOL_PRI_UNSPECIFIED) {
        tags.primaries = orEmpty(av_color_primaries_name(parameters.color_primaries));
    }
    if (parameters.color_trc != AVCOL_TRC_UNSPECIFIED) {
        tags.transfer = orEmpty(av_color_transfer_name(parameters.color_trc));
    }
    if (parameters.color_space != AVCOL_SPC_UNSPECIFIED) {
        tags.matrix = orEmpty(av_color_space_name(parameters.color_space));
    }
    if (parameters.color_range != AVCOL_RANGE_UNSPECIFIED) {
        tags.range = orEmpty(av_color_range_name(parameters.color_range));
    }
    return tags;
}

std::optional<DisplayMatrix> matrixOf(const AVStream& stream) {
    const auto numbers = libav::readDisplayMatrix(stream);
    if (numbers.empty()) {
        return std::nullopt;
    }
    const auto real = [&](std::size_t index) { return numbers[index] / 65536.0; };
    return DisplayMatrix{real(0), real(1), real(3), real(4), real(6), real(7)};
}

std::string projectionOf(const AVStream& stream) {
    const auto* data = libav::sideData(stream, AV_PKT_DATA_SPHERICAL);
    const auto* mapping = reinterpret_cast<const AVSphericalMapping*>(data);
    return mapping != nullptr ? av_spherical_projection_name(mapping->projection) : "";
}

std::string stereoOf(const AVStream& stream) {
    const auto* data = libav::sideData(stream, AV_PKT_DATA_STEREO3D);
    const auto* stereo = reinterpret_cast<const AVStereo3D*>(data);
    return stereo != nullptr ? av_stereo3d_type_name(stereo->type) : "";
}

void describeVideo(const AVStream& stream, ProbedStream& probed) {
    const AVCodecParameters& parameters = *stream.codecpar;
    probed.width = parameters.width;
    probed.height = parameters.height;
    probed.sampleAspect =
        toRatio(stream.sample_aspect_ratio.num != 0 ? stream.sample_aspect_ratio
                                                    : parameters.sample_aspect_ratio);
    probed.averageFrameRate = toRatio(stream.avg_frame_rate);
    probed.pixelFormat =
        orEmpty(av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format)));
    probed.displayMatrix = matrixOf(stream);
    probed.projection = projectionOf(stream);
    probed.stereo = stereoOf(stream);
    probed.colour = coloursOf(parameters);
    probed.fieldOrder = toText(parameters.field_order);
}

void describeAudio(const AVCodecParameters& parameters, ProbedStream& probed) {
    std::array<char, 128> layout{};
    av_channel_layout_describe(&parameters.ch_layout, layout.data(), layout.size());
    probed.sampleRate = parameters.sample_rate;
    probed.channels = parameters.ch_layout.nb_channels;
    probed.layout = layout.data();
}

ProbedStream describeStream(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    ProbedStream probed;
    probed.kind = toKind(parameters.codec_type);
    probed.codec = avcodec_get_name(parameters.codec_id);
    probed.profile = orEmpty(avcodec_profile_name(parameters.codec_id, parameters.profile));
    probed.codecTag = toText(parameters.codec_tag);
    probed.timeBase = toRatio(stream.time_base);
    probed.startSeconds = toSeconds(stream.start_time, stream.time_base);
    probed.durationSeconds = toSeconds(stream.duration, stream.time_base);
    probed.metadata = libav::toOptions(stream.metadata);
    probed.language = probed.metadata.contains("language") ? probed.metadata["language"] : "";
    probed.isDefault = (stream.disposition & AV_DISPOSITION_DEFAULT) != 0;
    probed.isAttachedPicture = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    probed.hasHeaderData = parameters.extradata_size > 0;
    probed.bitRate = parameters.bit_rate;
    if (probed.kind == StreamKind::video) {
        describeVideo(stream, probed);
    } else if (probed.kind == StreamKind::audio) {
        describeAudio(parameters, probed);
    }
    return probed;
}

std::vector<ChapterSpec> chaptersOf(const AVFormatContext& input) {
    std::vector<ChapterSpec> chapters;
    for (unsigned index = 0; index < input.nb_chapters; ++index) {
        const AVChapter& chapter = *input.chapters[index];
        Options metadata = libav::toOptions(chapter.metadata);
        chapters.push_back({metadata["title"],
                            static_cast<double>(chapter.start) * av_q2d(chapter.time_base),
                            static_cast<double>(chapter.end) * av_q2d(chapter.time_base)});
    }
    return chapters;
}

/// `avcC` and `hvcC` records begin with their version, start codes with a zero.
PayloadFormat payloadFormatOf(const AVCodecParameters& parameters) {
    const std::span header(parameters.extradata,
                           static_cast<std::size_t>(parameters.extradata_size));
    if (parameters.codec_id == AV_CODEC_ID_AAC) {
        return {.framing = Framing::aac};
    }
    if (parameters.codec_id == AV_CODEC_ID_H264) {
        const bool lengths = header.size() > 4 && header[0] == 1;
        return lengths ? PayloadFormat{Framing::h264Lengths, (header[4] & 3U) + 1}
                       : PayloadFormat{Framing::h264StartCodes};
    }
    if (parameters.codec_id == AV_CODEC_ID_HEVC) {
        const bool lengths = header.size() > 21 && header[0] == 1;
        return lengths ? PayloadFormat{Framing::hevcLengths, (header[21] & 3U) + 1}
                       : PayloadFormat{Framing::hevcStartCodes};
    }
    return {};
}

ProbedPacket describePacket(const AVPacket& packet, const PayloadFormat& format, Hash& total) {
    ProbedPacket probed;
    probed.pts = toTicks(packet.pts);
    probed.dts = toTicks(packet.dts);
    probed.duration = packet.duration;
    probed.size = static_cast<std::size_t>(packet.size);
    probed.isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
    probed.isDiscarded = (packet.flags & AV_PKT_FLAG_DISCARD) != 0;
    Hash own;
    forEachPayload(format, {packet.data, probed.size}, [&](auto bytes) {
        own.add(bytes);
        total.add(bytes);
    });
    probed.payloadHash = own.value();
    return probed;
}

void readPackets(AVFormatContext& input, std::vector<ProbedStream>& streams) {
    std::vector<Hash> totals(streams.size());
    const libav::PacketPtr packet = libav::makePacket();
    while (readPacket(input, *packet)) {
        const auto index = static_cast<std::size_t>(packet->stream_index);
        const PayloadFormat format = payloadFormatOf(*input.streams[index]->codecpar);
        streams.at(index).packets.push_back(describePacket(*packet, format, totals[index]));
        streams[index].payloadHash = totals[index].value();
        av_packet_unref(packet.get());
    }
}

const ProbedStream& pick(const ProbedFile& file, StreamKind kind, std::size_t number) {
    const auto streams = file.all(kind);
    if (number >= streams.size()) {
        throw std::out_of_range("the file has only " + std::to_string(streams.size()) +
                                " streams of this kind");
    }
    return *streams[number];
}

} // namespace

double ProbedStream::seconds(std::int64_t ticks) const {
    return static_cast<double>(ticks) * timeBase.numerator / timeBase.denominator;
}

std::vector<std::uint64_t> ProbedStream::payloadHashes() const {
    std::vector<std::uint64_t> hashes;
    for (const ProbedPacket& packet : packets) {
        hashes.push_back(packet.payloadHash);
    }
    return hashes;
}

std::vector<const ProbedStream*> ProbedFile::all(StreamKind kind) const {
    std::vector<const ProbedStream*> found;
    for (const ProbedStream& stream : streams) {
        if (stream.kind == kind && !stream.isAttachedPicture) {
            found.push_back(&stream);
        }
    }
    return found;
}

const ProbedStream& ProbedFile::video(std::size_t number) const {
    return pick(*this, StreamKind::video, number);
}

const ProbedStream& ProbedFile::audio(std::size_t number) const {
    return pick(*this, StreamKind::audio, number);
}

ProbedFile probe(const std::filesystem::path& path) {
    const libav::InputPtr input = openInput(path);
    ProbedFile file;
    file.format = input->iformat->name;
    file.startSeconds = toSeconds(input->start_time, {1, AV_TIME_BASE});
    file.durationSeconds = toSeconds(input->duration, {1, AV_TIME_BASE});
    file.metadata = libav::toOptions(input->metadata);
    file.chapters = chaptersOf(*input);
    for (unsigned index = 0; index < input->nb_streams; ++index) {
        file.streams.push_back(describeStream(*input->streams[index]));
    }
    readPackets(*input, file.streams);
    return file;
}

} // namespace boxlift::test
