#pragma once

#include <deque>
#include <memory>
#include <span>
#include <stop_token>

#include "engine/media/audio_conformer.h"
#include "engine/media/audio_decoder.h"
#include "engine/media/packet_source.h"

namespace boxlift::media {

/// One audio stream of a file as a row of samples from the asset's zero to
/// the track's edited end. One thread. Throws media::Error, and Cancelled when the token asks.
class AudioTrackDecoder {
public:
    /// `format` is interleaved float, AV_SAMPLE_FMT_FLT.
    AudioTrackDecoder(std::shared_ptr<const InputFile> file, int stream, const AudioFormat& format,
                      std::stop_token stop);

    /// Fills `into` with interleaved samples; returns the number written, less than asked for only
    /// at the end.
    std::size_t read(std::span<float> into);

private:
    std::size_t take(std::span<float> into);
    void decodeMore();
    void finish();
    void checkEnd() const;

    std::unique_ptr<PacketSource> m_source;
    int m_stream;
    int m_channels;
    AudioDecoder m_decoder;
    AudioConformer m_conformer;
    av::PacketPtr m_packet;
    /// Decoded, not yet read; the first from m_taken samples on.
    std::deque<AudioRun> m_runs;
    std::int64_t m_taken = 0;
    /// Where the sound of the packets read so far ends, by their own word.
    Time m_packetsEnd = Time::zero();
    bool m_isAtEnd = false;
};

} // namespace boxlift::media
