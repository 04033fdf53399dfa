#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "engine/media/audio_encoder.h"
#include "engine/media/bounded_queue.h"
#include "engine/media/pcm_slice.h"

namespace boxlift::media {

// Note: [Joining stretches]
// A stretch's encoder begins early: what is encoded until it reaches its begin is thrown away, so
// that rate control, noise thresholds and the choice of windows have come to where an encoder that
// began at the file's start would be, or near. It also goes on a little past its end, so that its
// last packets and the first ones of the stretch that follows are of the same samples. The seam is
// put where both have used the same window: there the halves of the two overlapping transforms
// cancel each other's aliasing as they do within one encoding. Where no packet of the overlap says
// that they have (channels with windows of their own, which are not read, as where one has onsets
// all the time), they are joined at its end regardless. That does no harm: an encoder chooses its
// windows by the last few frames alone, so after the lead both have the same ones. Were they not,
// one frame would be noisy, once in a stretch; to lose the whole file would be worse.
//
// What lasts longest is the least demand for bits that the encoder's model has seen, which it
// forgets over some 500 frames. docs/performance.md has what shorter and longer leads cost.

/// One stretch of a longer run of audio, encoded by itself. Memory is bounded by who feeds it.
class AudioStretch {
public:
    static constexpr std::int64_t frameLength = 1024;
    static constexpr std::int64_t lead = 700 * frameLength;
    /// Within which the seam with the next stretch is looked for.
    static constexpr std::int64_t overlap = 32 * frameLength;

    /// Time stamps of packets, in samples; `begin` and `end` are whole numbers of frames from the
    /// first sample of the whole run, which is at `origin`.
    AudioStretch(std::int64_t origin, std::int64_t begin, std::int64_t end);

    // The feeding thread.
    /// Takes what of the slice it needs. False when it needs no more.
    bool feed(const PcmSlice& slice);
    void endOfInput() { m_input.close(); }

    // The encoding thread.
    /// Adds to `encoded` what has come out from begin to end.
    void encode(const AudioEncoder::Settings& settings, const std::filesystem::path& path,
                std::atomic<std::int64_t>& encoded);

    // The thread that takes the packets.
    /// The next packet, from begin to a little past end; waits for it. Null after the last.
    av::PacketPtr next();
    std::int64_t end() const { return m_end; }

    // Any thread.
    /// Nothing more of it is needed.
    void abort();

private:
    using Packets = std::vector<av::PacketPtr>;

    void take(AVPacket& packet, std::atomic<std::int64_t>& encoded);
    void handOver();

    const bool m_isFirst;
    const std::int64_t m_begin;
    const std::int64_t m_end;
    const std::int64_t m_inputBegin;
    const std::int64_t m_inputEnd;
    BoundedQueue<PcmSlice> m_input;
    /// In handfuls, for waking a thread costs more than a packet.
    BoundedQueue<Packets> m_packets;
    Packets m_filling; ///< The encoding thread's.
    Packets m_taking;  ///< The thread's that takes them, as is the next one.
    std::size_t m_takingPosition = 0;
};

} // namespace boxlift::media
