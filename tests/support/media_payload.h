#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace boxlift::test {

enum class Framing {
    /// The packet is the payload.
    none,
    h264StartCodes,
    h264Lengths,
    hevcStartCodes,
    hevcLengths,
    /// AAC that may carry ADTS headers.
    aac
};

/// How a stream's packets are framed.
struct PayloadFormat {
    Framing framing = Framing::none;
    /// Bytes of each length in front of a unit.
    std::size_t lengthSize = 4;
};

using PayloadSink = std::function<void(std::span<const std::uint8_t>)>;

/// Gives the sink what is left of a packet without its framing: no start codes and no lengths,
/// delimiters and parameter sets, no ADTS header. So a copy compares equal to its source whatever
/// the two containers make of the framing.
void forEachPayload(const PayloadFormat& format, std::span<const std::uint8_t> packet,
                    const PayloadSink& sink);

/// FNV-1a with 64 bits.
class Hash {
public:
    void add(std::span<const std::uint8_t> bytes);
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325U;
};

} // namespace boxlift::test
