#include "engine/media/index_boxes.h"

#include <algorithm>

namespace boxlift::media::index_boxes {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;
using box_bytes::store;

namespace {

bool isTrack(Bytes& index, std::size_t track, std::uint32_t id) {
    const std::size_t size = endOf(index, track) - track - headerSize;
    const Contents number =
        trackId.in(find(Contents(index).subspan(track + headerSize, size), fourCharCode("tkhd")));
    return !number.empty() && numberIn(number, number.size()) == id;
}

/// Writes the sizes of the boxes around the innermost one's contents anew.
void resize(Bytes& index, const Nest& nest, std::size_t before, std::size_t now) {
    for (const std::size_t box : nest)
        store(Contents(index).subspan(box, 4), endOf(index, box) - box - before + now);
}

} // namespace

Contents find(Contents row, FourCharCode wanted) {
    Contents found;
    forEachBox(row, [&](FourCharCode type, Contents contents) {
        if (type == wanted && found.empty())
            found = contents;
    });
    return found;
}

std::size_t endOf(const Bytes& index, std::size_t box) {
    return box + static_cast<std::size_t>(numberIn(std::span(index).subspan(box), 4));
}

bool enter(Bytes& index, Nest& nest, std::size_t from, std::optional<FourCharCode> wanted) {
    std::size_t found = 0;
    const std::size_t end = endOf(index, nest.back());
    if (from >= end)
        return false;
    forEachBox(Contents(index).subspan(from, end - from), [&](FourCharCode type, Contents box) {
        if (found == 0 && (!wanted || type == *wanted))
            found = static_cast<std::size_t>(box.data() - index.data()) - headerSize;
    });
    if (found > 0)
        nest.push_back(found);
    return found > 0;
}

bool enterEach(Bytes& index, Nest& nest, std::initializer_list<FourCharCode> types) {
    return std::ranges::all_of(types, [&](FourCharCode type) {
        return enter(index, nest, nest.back() + headerSize, type);
    });
}

Nest nestOfTrack(Bytes& index, std::uint32_t id) {
    Nest nest{0};
    std::size_t from = headerSize;
    while (enter(index, nest, from, fourCharCode("trak"))) {
        if (isTrack(index, nest.back(), id))
            return nest;
        from = endOf(index, nest.back());
        nest.pop_back();
    }
    return {};
}

void grow(Bytes& index, const Nest& nest, const Bytes& added) {
    const auto end = static_cast<std::ptrdiff_t>(endOf(index, nest.back()));
    resize(index, nest, 0, added.size());
    index.insert(index.begin() + end, added.begin(), added.end());
}

void replace(Bytes& index, const Nest& nest, const Bytes& contents) {
    const auto begin = static_cast<std::ptrdiff_t>(nest.back() + headerSize);
    const auto end = static_cast<std::ptrdiff_t>(endOf(index, nest.back()));
    resize(index, nest, static_cast<std::size_t>(end - begin), contents.size());
    index.erase(index.begin() + begin, index.begin() + end);
    index.insert(index.begin() + begin, contents.begin(), contents.end());
}

} // namespace boxlift::media::index_boxes
