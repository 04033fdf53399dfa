#include "engine/media/audio_stretch.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace boxlift::media {

namespace {

/// Packets that are handed over together.
constexpr std::size_t handful = 16;
constexpr auto unbounded = std::numeric_limits<std::size_t>::max();

/// The encoder holds frames back: what is to come out unharmed needs some more behind it.
constexpr std::int64_t encoderDelay = 4 * AudioStretch::frameLength;

} // namespace

AudioStretch::AudioStretch(std::int64_t origin, std::int64_t begin, std::int64_t end)
    : m_isFirst(begin == origin), m_begin(begin), m_end(end),
      m_inputBegin(std::max(origin, begin - lead)), m_inputEnd(end + overlap + encoderDelay),
      m_input(unbounded), m_packets(unbounded) {}

bool AudioStretch::feed(const PcmSlice& slice) {
    PcmSlice part = clip(slice, m_inputBegin, m_inputEnd);
    if (part.count > 0)
        m_input.push(std::move(part));
    if (slice.end() < m_inputEnd)
        return true;
    m_input.close();
    return false;
}

void AudioStretch::encode(const AudioEncoder::Settings& settings, const std::filesystem::path& path,
                          std::atomic<std::int64_t>& encoded) {
    AudioEncoder encoder(settings, path);
    const AudioEncoder::Sink sink = [&](AVPacket& packet) { take(packet, encoded); };
    while (const auto slice = m_input.pop())
        encoder.push(toRun(*slice), sink);
    encoder.finish(sink);
    handOver();
    m_packets.close();
}

void AudioStretch::take(AVPacket& packet, std::atomic<std::int64_t>& encoded) {
    // Priming belongs to the first stretch alone.
    const bool isBefore = packet.pts < m_begin && !m_isFirst;
    if (isBefore || packet.pts >= m_end + overlap)
        return;
    if (packet.pts < m_end)
        encoded += packet.duration;
    m_filling.push_back(av::makePacket());
    av_packet_move_ref(m_filling.back().get(), &packet);
    if (m_filling.size() == handful)
        handOver();
}

void AudioStretch::handOver() {
    if (!m_filling.empty())
        m_packets.push(std::exchange(m_filling, {}));
}

av::PacketPtr AudioStretch::next() {
    if (m_takingPosition == m_taking.size()) {
        m_taking = m_packets.pop().value_or(Packets());
        m_takingPosition = 0;
    }
    return m_taking.empty() ? nullptr : std::move(m_taking[m_takingPosition++]);
}

void AudioStretch::abort() {
    m_input.abort();
    m_packets.abort();
}

} // namespace boxlift::media
