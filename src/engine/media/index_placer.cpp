#include "engine/media/index_rewriter.h"

#include <array>

#include "engine/media/error.h"
#include "engine/media/index_editor.h"

namespace boxlift::media {

namespace {

using box_bytes::Bytes;
using box_bytes::numberIn;

[[noreturn]] void fail(const OutputFile& file, const char* cause) {
    throw Error(ErrorKind::unknown, "change index", file.path(), cause);
}

Bytes read(const OutputFile& file, std::int64_t offset, std::int64_t size) {
    Bytes bytes(static_cast<std::size_t>(size));
    for (std::size_t done = 0; done < bytes.size();) {
        const auto rest = std::span(bytes).subspan(done);
        const std::int64_t count =
            file.readAt(offset + static_cast<std::int64_t>(done), std::as_writable_bytes(rest));
        if (count <= 0)
            fail(file, "it cannot be read back");
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

void write(OutputFile& file, std::int64_t offset, const Bytes& bytes) {
    if (const int error = file.writeAt(offset, std::as_bytes(std::span(bytes))))
        throwWriteError(error, "write index", file.path());
}

struct Place {
    std::int64_t start = 0;
    std::int64_t size = 0;
};

/// Where the index lies among the boxes that follow the reserved bytes.
Place findIndex(const OutputFile& file, std::int64_t from, std::int64_t end) {
    constexpr std::int64_t longHeader = 16;
    while (end - from >= static_cast<std::int64_t>(box_bytes::headerSize)) {
        const Bytes header = read(file, from, std::min(longHeader, end - from));
        auto size = static_cast<std::int64_t>(numberIn(header, 4));
        if (size == 1 && header.size() == longHeader)
            size = static_cast<std::int64_t>(numberIn(std::span(header).subspan(8), 8));
        if (size < static_cast<std::int64_t>(box_bytes::headerSize) || size > end - from)
            break;
        if (numberIn(std::span(header).subspan(4), 4) == fourCharCode("moov"))
            return {from, size};
        from += size;
    }
    fail(file, "there is no index");
}

/// Fills what is left of the reserved bytes in front of the media.
void appendFiller(Bytes& bytes, std::int64_t size) {
    if (size > 0)
        box_bytes::put(
            bytes, box_bytes::box(fourCharCode("free"),
                                  Bytes(static_cast<std::size_t>(size) - box_bytes::headerSize)));
}

} // namespace

void rewriteIndex(OutputFile& file, std::int64_t size, std::int64_t reserved,
                  const IndexChanges& changes) {
    const Place place = findIndex(file, reserved, size);
    const bool isLast = place.start + place.size == size;
    const Bytes index = read(file, place.start, place.size);
    const Bytes edited = editedIndex(index, changes);
    if (isLast) {
        if (edited != index)
            write(file, place.start, edited);
        return;
    }
    // All that stands before the media moves to the beginning, the index grows behind it.
    Bytes front = read(file, reserved, place.start - reserved);
    box_bytes::put(front, edited);
    const std::int64_t left = place.start + place.size - static_cast<std::int64_t>(front.size());
    if (left != 0 && left < static_cast<std::int64_t>(box_bytes::headerSize))
        fail(file, "it has grown by too much");
    appendFiller(front, left);
    write(file, 0, front);
}

} // namespace boxlift::media
