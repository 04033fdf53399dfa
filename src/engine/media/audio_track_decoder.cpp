#include "engine/media/audio_track_decoder.h"

#include <algorithm>
#include <array>
#include <bit>

#include "engine/media/av/conversion.h"
#include "engine/media/error.h"
#include "engine/media/source_check.h"

namespace boxlift::media {

namespace {

Selection single(std::shared_ptr<const InputFile> file, int stream) {
    Selection selection;
    selection.file = std::move(file);
    selection.isWhole = false;
    selection.streams = {stream};
    selection.transforms.resize(1);
    selection.hasAudio = true;
    return selection;
}

AudioConformer::Settings settings(const PacketSource& source, int stream,
                                  const AudioFormat& format) {
    return {format, AudioConformer::LateStart::silence,
            source.isDeclared() ? source.range(stream).end() : Time()};
}

} // namespace

AudioTrackDecoder::AudioTrackDecoder(std::shared_ptr<const InputFile> file, int stream,
                                     const AudioFormat& format, std::stop_token stop)
    : m_source(std::make_unique<PacketSource>(single(file, stream), std::move(stop))),
      m_stream(stream), m_channels(std::popcount(format.channelMask)),
      m_decoder(m_source->stream(stream), m_source->path()),
      m_conformer(settings(*m_source, stream, format), m_source->path()),
      m_packet(av::makePacket()) {
    checkIndexedSamples(m_source->context(), std::array{stream}, *file);
    checkStatedData(m_source->context(), *file);
}

std::size_t AudioTrackDecoder::read(std::span<float> into) {
    std::size_t done = 0;
    while (done < into.size()) {
        if (!m_runs.empty())
            done += take(into.subspan(done));
        else if (m_isAtEnd)
            break;
        else
            decodeMore();
    }
    return done;
}

std::size_t AudioTrackDecoder::take(std::span<float> into) {
    const AudioRun& run = m_runs.front();
    const auto channels = static_cast<std::size_t>(m_channels);
    const auto left = static_cast<std::size_t>(run.count - m_taken) * channels;
    const std::size_t count = std::min(left, into.size());
    if (run.frame) {
        const auto* samples = reinterpret_cast<const float*>(run.frame->data[0]);
        std::copy_n(samples + m_taken * m_channels, count, into.begin());
    } else {
        std::fill_n(into.begin(), count, 0.0F);
    }
    m_taken += static_cast<std::int64_t>(count / channels);
    if (count == left) {
        m_runs.pop_front();
        m_taken = 0;
    }
    return count;
}

void AudioTrackDecoder::decodeMore() {
    if (m_conformer.isComplete() || !m_source->next(*m_packet))
        return finish();
    const av::PacketUnref guard{*m_packet};
    if (m_packet->pts != AV_NOPTS_VALUE)
        m_packetsEnd = std::max(m_packetsEnd, av::toTime(m_packet->pts + m_packet->duration,
                                                         m_source->stream(m_stream).time_base));
    m_decoder.push(*m_packet, [this](const AVFrame& frame, Time at) {
        m_conformer.push(frame, at, [this](AudioRun run) { m_runs.push_back(std::move(run)); });
    });
}

void AudioTrackDecoder::finish() {
    const auto keep = [this](AudioRun run) { m_runs.push_back(std::move(run)); };
    m_decoder.finish([&](const AVFrame& frame, Time at) { m_conformer.push(frame, at, keep); });
    m_conformer.finish(keep);
    m_isAtEnd = true;
    checkEnd();
}

void AudioTrackDecoder::checkEnd() const {
    if (!m_source->isDeclared() || !endsEarly(m_source->range(m_stream).end(), m_conformer.end()))
        return;
    checkDeclaredEnd(m_source->range(m_stream).end(), m_packetsEnd, m_source->path());
    throw Error(ErrorKind::cannotDecode, "decode audio", m_source->path(),
                "the packets are all there and give too little sound");
}

} // namespace boxlift::media
