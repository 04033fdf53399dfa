#include "engine/media/sample_gatherer.h"

#include <cstring>
#include <new>

namespace boxlift::media {

namespace {

/// Six seconds of sound at 44.1 kHz. Twice as many would save next to nothing more.
constexpr std::uint32_t mostSamples = 256;
/// A chunk of the file should not be much larger than the mebibyte that the writer aims at.
constexpr int mostBytes = 1 << 19;

} // namespace

av::PacketPtr SampleGatherer::add(AVPacket& packet) {
    const av::PacketUnref guard{packet};
    // The writer leaves such packets out, too.
    if (packet.size == 0)
        return nullptr;
    m_samples.sizes.push_back(static_cast<std::uint32_t>(packet.size));
    if (continues(packet)) {
        append(packet);
        return nullptr;
    }
    av::PacketPtr complete = take();
    begin(packet);
    return complete;
}

bool SampleGatherer::continues(const AVPacket& packet) const {
    if (!m_gathered)
        return false;
    const SampleRuns::Run& run = m_samples.runs.back();
    return run.samples < mostSamples && m_gathered->size + packet.size <= mostBytes &&
           run.duration > 0 && m_lastDuration == run.duration && packet.duration > 0 &&
           packet.dts == m_gathered->dts + m_gathered->duration &&
           packet.pts - packet.dts == m_gathered->pts - m_gathered->dts &&
           packet.flags == m_gathered->flags && packet.side_data_elems == 0;
}

void SampleGatherer::begin(AVPacket& packet) {
    m_lastDuration = packet.duration;
    m_samples.runs.push_back({1, static_cast<std::uint32_t>(packet.duration)});
    m_gathered = av::makePacket();
    av_packet_move_ref(m_gathered.get(), &packet);
}

void SampleGatherer::append(const AVPacket& packet) {
    const int before = m_gathered->size;
    if (av_grow_packet(m_gathered.get(), packet.size) < 0)
        throw std::bad_alloc();
    std::memcpy(m_gathered->data + before, packet.data, static_cast<std::size_t>(packet.size));
    m_gathered->duration += packet.duration;
    m_lastDuration = packet.duration;
    ++m_samples.runs.back().samples;
}

av::PacketPtr SampleGatherer::take() {
    return std::move(m_gathered);
}

} // namespace boxlift::media
