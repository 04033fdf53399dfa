#include "support/media_payload.h"

#include <algorithm>
#include <array>

namespace boxlift::test {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 3> startCode = {0, 0, 1};

bool isHevc(Framing framing) {
    return framing == Framing::hevcStartCodes || framing == Framing::hevcLengths;
}

/// Delimiters and parameter sets: containers move, add and drop them.
bool isFraming(Framing framing, std::uint8_t header) {
    if (isHevc(framing)) {
        const int type = (header >> 1) & 0x3f;
        return type >= 32 && type <= 35;
    }
    const int type = header & 0x1f;
    return type >= 7 && type <= 9;
}

void emitUnit(Framing framing, Bytes unit, const PayloadSink& sink) {
    while (!unit.empty() && unit.back() == 0) {
        unit = unit.first(unit.size() - 1);
    }
    if (!unit.empty() && !isFraming(framing, unit.front())) {
        sink(unit);
    }
}

Bytes::iterator findStartCode(Bytes packet, Bytes::iterator from) {
    return std::search(from, packet.end(), startCode.begin(), startCode.end());
}

void splitAtStartCodes(Framing framing, Bytes packet, const PayloadSink& sink) {
    auto found = findStartCode(packet, packet.begin());
    while (found != packet.end()) {
        const auto begin = found + startCode.size();
        found = findStartCode(packet, begin);
        emitUnit(framing, Bytes(begin, found), sink);
    }
}

void splitAtLengths(const PayloadFormat& format, Bytes packet, const PayloadSink& sink) {
    while (packet.size() > format.lengthSize) {
        std::size_t length = 0;
        for (const std::uint8_t byte : packet.first(format.lengthSize)) {
            length = (length << 8) | byte;
        }
        packet = packet.subspan(format.lengthSize);
        length = std::min(length, packet.size());
        emitUnit(format.framing, packet.first(length), sink);
        packet = packet.subspan(length);
    }
}

Bytes withoutAdtsHeader(Bytes packet) {
    constexpr std::size_t plainHeader = 7;
    if (packet.size() < plainHeader || packet[0] != 0xff || (packet[1] & 0xf6) != 0xf0) {
        return packet;
    }
    const std::size_t length = (static_cast<std::size_t>(packet[3] & 3) << 11) |
                               (static_cast<std::size_t>(packet[4]) << 3) |
                               (static_cast<std::size_t>(packet[5]) >> 5);
    const bool hasChecksum = (packet[1] & 1) == 0;
    const std::size_t header = hasChecksum ? plainHeader + 2 : plainHeader;
    return length == packet.size() && length > header ? packet.subspan(header) : packet;
}

} // namespace

void forEachPayload(const PayloadFormat& format, std::span<const std::uint8_t> packet,
                    const PayloadSink& sink) {
    switch (format.framing) {
    case Framing::none:
        return sink(packet);
    case Framing::h264StartCodes:
    case Framing::hevcStartCodes:
        return splitAtStartCodes(format.framing, packet, sink);
    case Framing::h264Lengths:
    case Framing::hevcLengths:
        return splitAtLengths(format, packet, sink);
    case Framing::aac:
        return sink(withoutAdtsHeader(packet));
    }
}

void Hash::add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        m_value = (m_value ^ byte) * 0x100000001b3U;
    }
}

} // namespace boxlift::test
