#include "engine/media/aac_window.h"

namespace boxlift::media {

namespace {

/// Reads big-endian fields from the first bytes of a packet.
class Bits {
public:
    explicit Bits(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes)
            m_bits = m_bits << 8 | byte;
    }

    unsigned take(unsigned count) {
        m_left -= count;
        return m_bits >> m_left & ((1U << count) - 1);
    }

private:
    std::uint32_t m_bits = 0;
    unsigned m_left = 32;
};

constexpr unsigned singleChannel = 0;
constexpr unsigned channelPair = 1;

} // namespace

std::optional<AacWindow> readAacWindow(std::span<const std::uint8_t> packet) {
    constexpr std::size_t needed = 4;
    if (packet.size() < needed)
        return std::nullopt;
    Bits bits(packet.first(needed));
    const unsigned element = bits.take(3);
    bits.take(4); // Instance tag.
    if (element == singleChannel)
        bits.take(8); // Global gain.
    else if (element != channelPair || bits.take(1) == 0)
        return std::nullopt;
    bits.take(1); // Reserved.
    const auto sequence = static_cast<int>(bits.take(2));
    return AacWindow{sequence, static_cast<int>(bits.take(1))};
}

} // namespace boxlift::media
