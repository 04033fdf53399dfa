#include "engine/media/audio_conformer.h"

#include <algorithm>

namespace boxlift::media {

namespace {

/// Where no end is declared nothing bounds a gap that a broken stamp opens.
AudioAligner::LongJumps longJumps(Time end) {
    return end.isValid() ? AudioAligner::LongJumps::kept : AudioAligner::LongJumps::bridged;
}

} // namespace

AudioConformer::AudioConformer(const Settings& settings, const std::filesystem::path& path)
    : m_format(settings.format), m_lateStart(settings.lateStart),
      m_aligner(longJumps(settings.end)), m_converter(settings.format, path),
      m_hasEnd(settings.end.isValid()),
      m_endPosition(m_hasEnd ? settings.end.toRate(settings.format.sampleRate) : 0) {}

AudioConverter::Sink AudioConformer::emitter(const Sink& sink) {
    return [this, &sink](av::FramePtr frame) {
        const std::int64_t count = frame->nb_samples;
        emit({m_position, count, std::move(frame)}, sink);
    };
}

void AudioConformer::push(const AVFrame& frame, Time at, const Sink& sink) {
    const bool isEmpty = frame.nb_samples <= 0 || frame.sample_rate <= 0;
    if (isEmpty || frame.ch_layout.nb_channels <= 0 || isComplete())
        return;
    const auto placement = m_aligner.place(at, frame.nb_samples, frame.sample_rate);
    if (placement.start) {
        m_converter.flush(emitter(sink));
        moveTo(*placement.start, sink);
    }
    if (placement.skip < frame.nb_samples)
        m_converter.convert(frame, static_cast<int>(placement.skip), emitter(sink));
}

void AudioConformer::moveTo(Time start, const Sink& sink) {
    const std::int64_t position = start.toRate(m_format.sampleRate);
    if (!m_hasBegun && m_lateStart == LateStart::kept)
        m_position = position;
    else if (position > m_position)
        emit({m_position, position - m_position, nullptr}, sink);
    m_hasBegun = true;
}

void AudioConformer::finish(const Sink& sink) {
    m_converter.flush(emitter(sink));
}

void AudioConformer::emit(AudioRun run, const Sink& sink) {
    if (m_hasEnd)
        run.count = std::clamp<std::int64_t>(m_endPosition - m_position, 0, run.count);
    if (run.count == 0)
        return;
    if (run.frame)
        run.frame->nb_samples = static_cast<int>(run.count);
    m_position += run.count;
    sink(std::move(run));
}

} // namespace boxlift::media
