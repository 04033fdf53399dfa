#include "engine/media/index_placer.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "engine/media/chunk_places.h"
#include "engine/media/error.h"
#include "engine/media/index_editor.h"
#include "engine/media/sample_tables.h"

namespace boxlift::media {

namespace {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;

constexpr std::int64_t blockSize = 1 << 20;

[[noreturn]] void fail(const OutputFile& file, const char* cause) {
    throw Error(ErrorKind::unknown, "place index", file.path(), cause);
}

void read(const OutputFile& file, std::int64_t offset, std::span<std::uint8_t> into) {
    while (!into.empty()) {
        const std::int64_t count = file.readAt(offset, std::as_writable_bytes(into));
        if (count <= 0)
            fail(file, "the output cannot be read back");
        offset += count;
        into = into.subspan(static_cast<std::size_t>(count));
    }
}

Bytes read(const OutputFile& file, std::int64_t offset, std::int64_t size) {
    Bytes bytes(static_cast<std::size_t>(size));
    read(file, offset, bytes);
    return bytes;
}

void write(OutputFile& file, std::int64_t offset, std::span<const std::uint8_t> bytes) {
    if (const int error = file.writeAt(offset, std::as_bytes(bytes)))
        throwWriteError(error, "write index", file.path());
}

/// Where a movie's media begins and ends. The index follows.
struct MediaPlace {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    /// Where what the container's writer left in front of the media for a longer header begins.
    std::int64_t fillerBegin = 0;
};

bool isFiller(FourCharCode type) {
    return type == fourCharCode("free") || type == fourCharCode("wide");
}

struct BoxHead {
    FourCharCode type = 0;
    std::int64_t size = 0;
};

BoxHead readHead(const OutputFile& file, std::int64_t from, std::int64_t end) {
    constexpr std::int64_t longHeader = 16;
    const Bytes header = read(file, from, std::min(longHeader, end - from));
    BoxHead head{static_cast<FourCharCode>(numberIn(std::span(header).subspan(4), 4)),
                 static_cast<std::int64_t>(numberIn(header, 4))};
    if (head.size == 1 && header.size() == longHeader)
        head.size = static_cast<std::int64_t>(numberIn(std::span(header).subspan(8), 8));
    return head;
}

MediaPlace findMedia(const OutputFile& file, const WrittenMovie& movie) {
    constexpr auto smallest = static_cast<std::int64_t>(headerSize);
    MediaPlace place{-1, movie.room, movie.room};
    while (movie.end - place.end >= smallest) {
        const BoxHead head = readHead(file, place.end, movie.end);
        if (head.size < smallest)
            break;
        if (place.begin < 0 && head.type == fourCharCode("mdat"))
            place.begin = place.end;
        place.end += head.size;
        if (place.begin < 0 && !isFiller(head.type))
            place.fillerBegin = place.end;
    }
    const auto written = movie.end + static_cast<std::int64_t>(movie.tail.size());
    if (place.begin < 0 || place.end < movie.end || place.end > written)
        fail(file, "there is no media");
    return place;
}

/// Writes what of the media is still in memory, and gives back the index.
Bytes splitTail(OutputFile& file, WrittenMovie movie, std::int64_t mediaEnd) {
    const auto rest = static_cast<std::size_t>(mediaEnd - movie.end);
    write(file, movie.end, std::span(movie.tail).first(rest));
    movie.tail.erase(movie.tail.begin(), movie.tail.begin() + static_cast<std::ptrdiff_t>(rest));
    const bool isIndex = movie.tail.size() >= headerSize &&
                         numberIn(movie.tail, 4) == movie.tail.size() &&
                         numberIn(std::span(movie.tail).subspan(4), 4) == fourCharCode("moov");
    if (!isIndex)
        fail(file, "there is no index");
    return std::move(movie.tail);
}

/// The index as it is to stand in the file.
Bytes completed(const OutputFile& file, Bytes index,
                const std::map<std::uint32_t, SampleRuns>& gathered, const IndexChanges& changes) {
    for (const auto& [track, samples] : gathered)
        if (!expandSamples(index, track, samples))
            fail(file, "the index does not fit its media");
    return editedIndex(std::move(index), changes);
}

/// Moves the media towards the end, the last of it first.
void moveMedia(OutputFile& file, const MediaPlace& media, std::int64_t by,
               const std::function<void(double)>& moved) {
    const auto total = static_cast<double>(media.end - media.begin);
    Bytes block(static_cast<std::size_t>(blockSize));
    for (std::int64_t end = media.end; end > media.begin;) {
        moved(static_cast<double>(media.end - end) / total);
        const std::int64_t begin = std::max(media.begin, end - blockSize);
        const auto part = std::span(block).first(static_cast<std::size_t>(end - begin));
        read(file, begin, part);
        write(file, begin + by, part);
        end = begin;
    }
    moved(1);
}

/// How far media that begins at `mediaBegin` must move to leave `size` bytes in front of it. What
/// is left over there has to have the room of a box.
std::int64_t lack(std::int64_t size, std::int64_t mediaBegin) {
    constexpr auto smallest = static_cast<std::int64_t>(headerSize);
    const std::int64_t left = mediaBegin - size;
    if (left == 0 || left >= smallest)
        return 0;
    return left < 0 ? -left : smallest - left;
}

/// What can be in a table of 32 bits when the media moves by no more than this.
std::uint64_t largestPlace(std::int64_t by) {
    constexpr std::int64_t most = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint64_t>(std::max<std::int64_t>(0, most - by));
}

/// Makes what is left in front of the media a box that players skip. Where something has stood, it
/// is cleared.
void fill(OutputFile& file, std::int64_t from, std::int64_t to, std::int64_t cleared) {
    if (from == to)
        return;
    Bytes header;
    box_bytes::put(header, static_cast<std::uint64_t>(to - from), 4);
    box_bytes::put(header, fourCharCode("free"), 4);
    const std::int64_t behind = from + static_cast<std::int64_t>(headerSize);
    const std::int64_t dirty = std::clamp(cleared, behind, to);
    write(file, dirty, Bytes(static_cast<std::size_t>(to - dirty)));
    write(file, from, header);
}

void placeInFront(OutputFile& file, const MediaPlace& media, std::int64_t room, Bytes index,
                  const std::function<void(double)>& moved) {
    const Bytes start = read(file, room, media.fillerBegin - room);
    const auto size = [&] { return static_cast<std::int64_t>(start.size() + index.size()); };
    std::int64_t by = lack(size(), media.begin);
    if (by > 0) {
        // Wider tables make the index longer, but never twice as long.
        chunk_places::widen(index, largestPlace(by + size()));
        by = lack(size(), media.begin);
        moveMedia(file, media, by, moved);
        chunk_places::move(index, static_cast<std::uint64_t>(by));
    }
    write(file, 0, start);
    write(file, static_cast<std::int64_t>(start.size()), index);
    fill(file, size(), media.begin + by, room);
}

} // namespace

void placeIndex(OutputFile& file, WrittenMovie movie, const IndexChanges& changes, IndexPlace place,
                const std::function<void(double)>& moved) {
    const std::int64_t room = movie.room;
    const MediaPlace media = findMedia(file, movie);
    const auto gathered = std::move(movie.gathered);
    Bytes index = completed(file, splitTail(file, std::move(movie), media.end), gathered, changes);
    if (place == IndexPlace::end)
        write(file, media.end, index);
    else
        placeInFront(file, media, room, std::move(index), moved);
}

} // namespace boxlift::media
