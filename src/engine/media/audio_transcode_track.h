#pragma once

#include <filesystem>

#include "engine/media/audio_conformer.h"
#include "engine/media/audio_decoder.h"
#include "engine/media/audio_encoder.h"
#include "engine/media/track_transcoder.h"

namespace boxlift::media {

/// Decodes one audio track and encodes it again as AAC-LC, in step with its time stamps: what
/// starts late stays late. One thread. Throws media::Error.
class AudioTranscodeTrack : public TrackTranscoder {
public:
    /// `source` has been probed; it must outlive the object. `start` is the time, in the clock of
    /// the packets, that becomes zero; what lies before it is cut off, and what lies after `end`
    /// (counted from zero) where that is valid. `path` for error messages.
    AudioTranscodeTrack(const AVStream& source, Time start, const std::filesystem::path& path,
                        Time end = {});

    void describe(AVStream& to) const override { m_encoder.describe(to); }
    AVRational timeBase() const override { return m_encoder.timeBase(); }
    void push(const AVPacket& packet, const Sink& sink) override;
    void finish(const Sink& sink) override;

private:
    AudioConformer::Sink encode(const Sink& sink);

    Time m_start;
    AudioDecoder m_decoder;
    AudioEncoder m_encoder;
    AudioConformer m_conformer;
};

/// What a track with these parameters becomes: its sample rate is kept where AAC has it and it is
/// at most 48 kHz, its channels up to 5.1.
AudioEncoder::Settings transcodeSettings(const AVCodecParameters& source);

} // namespace boxlift::media
