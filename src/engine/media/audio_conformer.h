#pragma once

#include <filesystem>
#include <functional>

#include "engine/media/audio_aligner.h"
#include "engine/media/audio_converter.h"
#include "engine/media/audio_run.h"

namespace boxlift::media {

/// Makes of a track's decoded, stamped frames one seamless run of samples of one format: gaps
/// become silence, overlaps are trimmed, the end is cut where it is declared. One thread.
class AudioConformer {
public:
    enum class LateStart {
        silence, ///< The run begins at zero.
        kept,    ///< The run begins where the audio begins.
    };
    struct Settings {
        AudioFormat format;
        LateStart lateStart = LateStart::silence;
        Time end; ///< Invalid where the length is not known.
    };
    /// Takes runs, each beginning where the last has ended.
    using Sink = std::function<void(AudioRun)>;

    /// `path` for error messages.
    AudioConformer(const Settings& settings, const std::filesystem::path& path);

    /// `at` is the frame's place on the asset's timeline, invalid when it is not known.
    void push(const AVFrame& frame, Time at, const Sink& sink);
    /// No more frames come: gives out what is left.
    void finish(const Sink& sink);

    /// Where the audio that was given out ends.
    Time end() const { return Time::fromRate(m_position, m_format.sampleRate); }
    /// Whether the declared end has been reached: nothing more will be given out.
    bool isComplete() const { return m_hasEnd && m_position >= m_endPosition; }

private:
    void moveTo(Time start, const Sink& sink);
    void emit(AudioRun run, const Sink& sink);
    AudioConverter::Sink emitter(const Sink& sink);

    AudioFormat m_format;
    LateStart m_lateStart;
    AudioAligner m_aligner;
    AudioConverter m_converter;
    bool m_hasBegun = false;
    bool m_hasEnd = false;
    std::int64_t m_endPosition = 0;
    std::int64_t m_position = 0;
};

} // namespace boxlift::media
