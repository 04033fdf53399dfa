#include "engine/media/reencode_tracks.h"

#include <algorithm>

#include "engine/media/audio_transcode_track.h"
#include "engine/media/av/conversion.h"
#include "engine/media/error.h"
#include "engine/media/expected_samples.h"
#include "engine/media/reencode_video.h"
#include "engine/media/source_check.h"
#include "engine/media/spherical.h"
#include "engine/media/stream_copy.h"
#include "engine/media/text_copy_track.h"

namespace boxlift::media {

namespace {

bool isKnown(const AVCodecParameters& parameters) {
    return parameters.width > 0 || parameters.sample_rate > 0;
}

} // namespace

void ReencodeTracks::add(const Selection& selection, ExportPreset preset) {
    for (std::size_t i = 0; i < selection.streams.size(); ++i) {
        const int stream = selection.streams[i];
        if (isEmpty(stream))
            continue;
        if (m_source.stream(stream).codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            addVideo(stream, preset, selection.transforms[i]);
        else
            addAudio(stream);
    }
    if (m_outputs.empty())
        throw Error(ErrorKind::cannotDecode, "encode tracks", m_source.path(), "there is no media");
    if (selection.isWhole && m_muxer.type() != FileType::AVFileTypeAppleM4A)
        addTexts();
}

bool ReencodeTracks::isEmpty(int index) const {
    const AVStream& stream = m_source.stream(index);
    const bool hasSamples =
        stream.start_time != AV_NOPTS_VALUE || avformat_index_get_entries_count(&stream) > 0;
    // Elsewhere than in a movie, what the samples are like has been learnt from samples.
    if (hasSamples || (!m_source.isMovie() && isKnown(*stream.codecpar)))
        return false;
    // Nothing has been seen of it so far. A movie that promises more is damaged.
    if (m_source.isDeclared())
        checkDeclaredEnd(m_source.range(index).end(), Time::zero(), m_source.path());
    return true;
}

void ReencodeTracks::addVideo(int index, ExportPreset preset,
                              const std::optional<AffineTransform>& turn) {
    ReencodePipeline::VideoStages stages = makeVideoStages(m_source, index, preset);
    const AVStream& source = m_source.stream(index);
    AVStream& stream = m_muxer.addStream();
    stages.encoder->describe(stream);
    copyStreamLabels(stream, source);
    setOrientation(stream, source, turn);
    spherical::copyDescription(stream, source);
    m_pipeline.addVideo(index, stream.index, std::move(stages));
    remember(index);
}

void ReencodeTracks::addAudio(int index) {
    const AVStream& source = m_source.stream(index);
    const Time end = m_source.isDeclared() ? m_source.range(index).end() : Time();
    auto transcoder =
        std::make_unique<AudioTranscodeTrack>(source, Time::zero(), m_source.path(), end);
    AVStream& stream = m_muxer.addStream();
    transcoder->describe(stream);
    copyStreamLabels(stream, source);
    m_pipeline.addTrack(index, stream.index, std::move(transcoder));
    remember(index);
}

void ReencodeTracks::addTexts() {
    for (const int index : m_source.otherStreams()) {
        const AVStream& source = m_source.stream(index);
        if (source.codecpar->codec_id != AV_CODEC_ID_MOV_TEXT)
            continue;
        m_source.select(index);
        auto copy = std::make_unique<TextCopyTrack>(source);
        AVStream& stream = m_muxer.addStream();
        copy->describe(stream);
        m_muxer.expect(stream.index, copiedSamples(m_source, index));
        m_pipeline.addTrack(index, stream.index, std::move(copy));
    }
}

void ReencodeTracks::remember(int stream) {
    m_muxer.expect(static_cast<int>(m_outputs.size()), encodedSamples(m_source, stream));
    m_outputs.push_back({m_source.range(stream), Time()});
}

void ReencodeTracks::write(AVPacket& packet) {
    const int number = packet.stream_index;
    const AVRational timeBase = m_pipeline.timeBase(number);
    if (static_cast<std::size_t>(number) < m_outputs.size()) {
        Output& output = m_outputs[static_cast<std::size_t>(number)];
        output.end = std::max(output.end, av::toTime(packet.pts + packet.duration, timeBase));
    }
    av_packet_rescale_ts(&packet, timeBase, m_muxer.stream(number).time_base);
    m_muxer.write(packet);
}

double ReencodeTracks::fraction() const {
    double whole = 0;
    double done = 0;
    for (const Output& output : m_outputs) {
        const double length = output.range.duration.seconds();
        if (!(length > 0))
            continue;
        whole += length;
        if (output.end.isValid())
            done += std::clamp((output.end - output.range.start).seconds(), 0.0, length);
    }
    return whole > 0 ? done / whole : 0;
}

void ReencodeTracks::checkEnds() const {
    if (std::none_of(m_outputs.begin(), m_outputs.end(),
                     [](const Output& output) { return output.end.isValid(); }))
        throw Error(ErrorKind::cannotDecode, "encode tracks", m_source.path(), "there is no media");
    for (const Output& output : m_outputs) {
        const Time reached = output.end.isValid() ? output.end : Time::zero();
        if (m_source.isDeclared())
            checkDeclaredEnd(output.range.end(), reached, m_source.path());
    }
}

} // namespace boxlift::media
