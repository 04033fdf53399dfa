#include "engine/media/chunk_places.h"

#include <optional>
#include <utility>

#include "engine/media/index_boxes.h"

namespace boxlift::media::chunk_places {

namespace {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;
using box_bytes::store;
using index_boxes::Contents;
using index_boxes::endOf;
using index_boxes::enter;
using index_boxes::Nest;

constexpr FourCharCode shortTable = fourCharCode("stco");
constexpr FourCharCode longTable = fourCharCode("co64");

/// One table: its place in the index, and the width of a place in bytes.
struct Table {
    Nest nest;
    std::size_t width;

    /// A table's places follow a version and their number; empty when it is cut off.
    Contents places(Bytes& index) const {
        constexpr std::size_t first = headerSize + 8;
        const std::size_t size = endOf(index, nest.back()) - nest.back();
        if (size < first)
            return {};
        const Contents box = Contents(index).subspan(nest.back(), size);
        const std::size_t bytes = static_cast<std::size_t>(numberIn(box.subspan(12), 4)) * width;
        return bytes <= size - first ? box.subspan(first, bytes) : Contents();
    }
};

/// The table of the innermost box, a track.
std::optional<Table> tableOf(Bytes& index, Nest track) {
    if (!index_boxes::enterEach(index, track,
                                {fourCharCode("mdia"), fourCharCode("minf"), fourCharCode("stbl")}))
        return std::nullopt;
    const std::size_t from = track.back() + headerSize;
    if (enter(index, track, from, shortTable))
        return Table{std::move(track), 4};
    if (enter(index, track, from, longTable))
        return Table{std::move(track), 8};
    return std::nullopt;
}

/// Calls `visit(table)` for each track's table.
template <typename Visit>
void forEachTable(Bytes& index, Visit visit) {
    Nest nest{0};
    std::size_t from = headerSize;
    while (enter(index, nest, from, fourCharCode("trak"))) {
        if (const auto table = tableOf(index, nest))
            visit(*table);
        from = endOf(index, nest.back());
        nest.pop_back();
    }
}

bool reachesBeyond(Contents places, std::size_t width, std::uint64_t largest) {
    for (; !places.empty(); places = places.subspan(width))
        if (numberIn(places, width) > largest)
            return true;
    return false;
}

void widenTable(Bytes& index, const Table& table) {
    const std::size_t count = table.places(index).size() / 4;
    index_boxes::grow(index, table.nest, Bytes(4 * count));
    store(Contents(index).subspan(table.nest.back() + 4, 4), longTable);
    // From the last: each lands where none is left to be read.
    const Contents places = Table{table.nest, 8}.places(index);
    for (std::size_t i = count; i-- > 0;)
        store(places.subspan(8 * i, 8), numberIn(places.subspan(4 * i), 4));
}

} // namespace

void widen(Bytes& index, std::uint64_t largest) {
    forEachTable(index, [&](const Table& table) {
        if (table.width == 4 && reachesBeyond(table.places(index), 4, largest))
            widenTable(index, table);
    });
}

void move(Bytes& index, std::uint64_t by) {
    forEachTable(index, [&](const Table& table) {
        Contents places = table.places(index);
        for (; !places.empty(); places = places.subspan(table.width))
            store(places.first(table.width), numberIn(places, table.width) + by);
    });
}

} // namespace boxlift::media::chunk_places
