#include "engine/media/index_boxes.h"

namespace boxlift::media::index_boxes {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;
using box_bytes::store;

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

void grow(Bytes& index, const Nest& nest, const Bytes& added) {
    const auto end = static_cast<std::ptrdiff_t>(endOf(index, nest.back()));
    for (const std::size_t box : nest)
        store(Contents(index).subspan(box, 4), endOf(index, box) - box + added.size());
    index.insert(index.begin() + end, added.begin(), added.end());
}

} // namespace boxlift::media::index_boxes
