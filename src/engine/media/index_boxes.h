#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

#include "engine/media/box_bytes.h"

// Finding one's way in a movie's index in memory, and changing its length.
namespace boxlift::media::index_boxes {

using Contents = std::span<std::uint8_t>;

/// Calls `visit(type, contents)` for each box in a row of boxes.
template <typename Visit>
void forEachBox(Contents row, Visit visit) {
    using namespace box_bytes;
    while (row.size() >= headerSize) {
        const auto size = static_cast<std::size_t>(numberIn(row, 4));
        if (size < headerSize || size > row.size())
            return;
        visit(static_cast<FourCharCode>(numberIn(row.subspan(4), 4)),
              row.subspan(headerSize, size - headerSize));
        row = row.subspan(size);
    }
}

/// The contents of the first box of this type; empty when there is none.
Contents find(Contents row, FourCharCode wanted);

/// Whether a full box is of the version whose times and lengths have 64 bits.
inline bool isLong(Contents box) {
    return !box.empty() && box[0] == 1;
}

/// A number of a full box, whose place and length depend on its version; empty when cut off.
struct FieldRow {
    std::size_t shortAt;
    std::size_t shortBytes;
    std::size_t longAt;
    std::size_t longBytes;

    Contents in(Contents box) const {
        const std::size_t at = isLong(box) ? longAt : shortAt;
        const std::size_t bytes = isLong(box) ? longBytes : shortBytes;
        return box.size() >= at + bytes ? box.subspan(at, bytes) : Contents();
    }
};

/// In the track's header, `tkhd` (ISO/IEC 14496-12, 8.3.2).
constexpr FieldRow trackId{12, 4, 20, 4};

/// The places of boxes that lie in one another, outermost first.
using Nest = std::vector<std::size_t>;

/// Where the box that begins at `box` ends.
std::size_t endOf(const box_bytes::Bytes& index, std::size_t box);

/// Goes on to the first box of this type that begins at or after `from` within the innermost box.
bool enter(box_bytes::Bytes& index, Nest& nest, std::size_t from,
           std::optional<FourCharCode> wanted);

/// Goes on to the first box of each type within the one before.
bool enterEach(box_bytes::Bytes& index, Nest& nest, std::initializer_list<FourCharCode> types);

/// From the index down to the track with this number; empty when there is none.
Nest nestOfTrack(box_bytes::Bytes& index, std::uint32_t id);

/// Puts bytes at the end of the innermost box.
void grow(box_bytes::Bytes& index, const Nest& nest, const box_bytes::Bytes& added);

/// Gives the innermost box other contents.
void replace(box_bytes::Bytes& index, const Nest& nest, const box_bytes::Bytes& contents);

} // namespace boxlift::media::index_boxes
