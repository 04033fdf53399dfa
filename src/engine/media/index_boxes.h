#pragma once

#include <optional>
#include <span>
#include <vector>

#include "engine/media/box_bytes.h"

// Finding one's way in a movie's index in memory, and making it longer.
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

/// The places of boxes that lie in one another, outermost first.
using Nest = std::vector<std::size_t>;

/// Where the box that begins at `box` ends.
std::size_t endOf(const box_bytes::Bytes& index, std::size_t box);

/// Goes on to the first box of this type that begins at or after `from` within the innermost box.
bool enter(box_bytes::Bytes& index, Nest& nest, std::size_t from,
           std::optional<FourCharCode> wanted);

/// Puts bytes at the end of the innermost box.
void grow(box_bytes::Bytes& index, const Nest& nest, const box_bytes::Bytes& added);

} // namespace boxlift::media::index_boxes
