#include "engine/media/movie_layout.h"

#include <algorithm>
#include <array>
#include <limits>

#include "model/cancelled.h"

namespace boxlift::media {

namespace {

constexpr std::array protectedEntries{
    fourCharCode("drms"), fourCharCode("drmi"), fourCharCode("encv"),
    fourCharCode("enca"), fourCharCode("encs"), fourCharCode("enct"),
};

/// More of anything than a sane file has; what lies beyond is not looked at.
constexpr int maximumBoxes = 100'000;
constexpr std::uint32_t maximumEdits = 10'000;
constexpr std::uint32_t maximumEntries = 256;

/// A piece of the file in memory, the one that was asked for last.
class Window {
public:
    explicit Window(const InputFile& file) : m_file(file) {}

    std::int64_t fileSize() const { return m_file.size(); }

    /// Zero where the file has ended or cannot be read.
    std::uint8_t byteAt(std::int64_t position) {
        if (position < m_start || position >= m_start + m_count)
            fill(position);
        const std::int64_t index = position - m_start;
        return index < m_count ? m_bytes[static_cast<std::size_t>(index)] : 0;
    }

private:
    /// The index of a short clip; in a long one's, the boxes between two tables of samples.
    static constexpr std::size_t capacity = 4096;

    void fill(std::int64_t position) {
        m_start = position;
        m_count = m_file.readAt(position, std::as_writable_bytes(std::span(m_bytes)));
    }

    const InputFile& m_file;
    std::array<std::uint8_t, capacity> m_bytes{};
    std::int64_t m_start = 0;
    std::int64_t m_count = 0;
};

/// A part of the file, read field by field; reading past the end gives zeros.
class Span {
public:
    Span(Window& window, std::int64_t begin, std::int64_t end)
        : m_window(&window), m_position(begin), m_end(std::min(end, window.fileSize())) {}

    std::int64_t position() const { return m_position; }
    std::int64_t end() const { return m_end; }
    std::int64_t left() const { return m_end - m_position; }
    void skip(std::int64_t bytes) { m_position += bytes; }
    Span part(std::int64_t begin, std::int64_t end) const {
        return {*m_window, begin, std::min(end, m_end)};
    }

    std::uint64_t number(int bytes) {
        std::uint64_t value = 0;
        for (const std::int64_t last = m_position + bytes; m_position < last; ++m_position)
            value = value << 8 | (m_position < m_end ? m_window->byteAt(m_position) : 0U);
        return value;
    }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int64_t i32() { return static_cast<std::int32_t>(number(4)); }
    std::int64_t i64() { return static_cast<std::int64_t>(number(8)); }

private:
    Window* m_window;
    std::int64_t m_position;
    std::int64_t m_end;
};

/// Calls `visit(type, contents)` for each box in `parent` until it returns false.
template <typename Visit>
void forEachBox(Span parent, Visit visit) {
    for (int count = 0; count < maximumBoxes && parent.left() >= 8; ++count) {
        const std::int64_t start = parent.position();
        std::int64_t size = parent.u32();
        const FourCharCode type = parent.u32();
        if (size == 1)
            size = parent.i64();
        else if (size == 0)
            size = parent.end() - start;
        const std::int64_t header = parent.position() - start;
        if (size < header)
            return;
        const std::int64_t next = size > parent.end() - start ? parent.end() : start + size;
        if (!visit(type, parent.part(parent.position(), next)))
            return;
        parent.skip(next - parent.position());
    }
}

Time duration(std::uint64_t value, std::uint32_t timescale, int bytes) {
    const bool unknown = value == (bytes == 4 ? 0xffffffffU : ~std::uint64_t{0});
    if (unknown || timescale == 0)
        return {};
    return Time::fromSeconds(static_cast<double>(value) / timescale);
}

/// The time scale and length of an `mvhd` or `mdhd`.
struct HeaderTimes {
    std::uint32_t timescale = 0;
    Time length;
};

HeaderTimes readHeaderTimes(Span box) {
    const bool isLong = box.number(1) == 1;
    box.skip(3 + (isLong ? 16 : 8));
    HeaderTimes times;
    times.timescale = box.u32();
    const int bytes = isLong ? 8 : 4;
    times.length = duration(box.number(bytes), times.timescale, bytes);
    return times;
}

std::uint32_t readTrackId(Span box) {
    const bool isLong = box.number(1) == 1;
    box.skip(3 + (isLong ? 16 : 8));
    return box.u32();
}

struct Edit {
    Time length;
    std::int64_t mediaTime = 0; ///< In the media's time scale; negative for an empty edit.
};

std::vector<Edit> readEdits(Span box, std::uint32_t movieTimescale) {
    const bool isLong = box.number(1) == 1;
    box.skip(3);
    const std::uint32_t count = std::min(box.u32(), maximumEdits);
    std::vector<Edit> edits;
    for (std::uint32_t i = 0; i < count && box.left() > 0; ++i) {
        const std::uint64_t length = box.number(isLong ? 8 : 4);
        const std::int64_t mediaTime = isLong ? box.i64() : box.i32();
        box.skip(4);
        edits.push_back({duration(length, movieTimescale, isLong ? 8 : 4), mediaTime});
    }
    return edits;
}

void applyEdits(MovieTrack& track, const std::vector<Edit>& edits, std::uint32_t mediaTimescale) {
    for (const Edit& edit : edits) {
        const bool isEmpty = edit.mediaTime < 0;
        const Time length = edit.length.isValid() ? edit.length : Time::zero();
        if (isEmpty && track.mediaEdits == 0)
            track.leadingGap = track.leadingGap + length;
        if (!isEmpty && track.mediaEdits++ == 0 && mediaTimescale)
            track.mediaStart = Time::fromSeconds(static_cast<double>(edit.mediaTime) /
                                                 static_cast<double>(mediaTimescale));
        track.editedEnd = track.editedEnd + length;
    }
    track.hasEdits = track.mediaEdits > 0;
}

std::vector<FourCharCode> readSampleEntries(Span box) {
    box.skip(4);
    const std::uint32_t count = std::min(box.u32(), maximumEntries);
    std::vector<FourCharCode> entries;
    forEachBox(box, [&](FourCharCode type, Span) {
        entries.push_back(type);
        return entries.size() < count;
    });
    return entries;
}

/// Whether there are references to data and each is to another file.
bool isAllElsewhere(Span box) {
    box.skip(4);
    const std::uint32_t count = std::min(box.u32(), maximumEntries);
    std::uint32_t elsewhere = 0;
    forEachBox(box, [&](FourCharCode, Span entry) {
        constexpr std::uint32_t selfContained = 1;
        elsewhere += (entry.u32() & selfContained) != 0 ? 0 : 1;
        return elsewhere < count;
    });
    return count > 0 && elsewhere == count;
}

/// Whether a grouping of samples tells of keys.
bool groupsKeys(Span box) {
    box.skip(4);
    return box.u32() == fourCharCode("rap ");
}

/// Where a track's boxes may lie, from the track down: bounds how deep a file can lead us.
struct NestingRow {
    FourCharCode outer;
    FourCharCode inner;
};

constexpr std::array nesting{
    NestingRow{fourCharCode("trak"), fourCharCode("edts")},
    NestingRow{fourCharCode("trak"), fourCharCode("mdia")},
    NestingRow{fourCharCode("mdia"), fourCharCode("minf")},
    NestingRow{fourCharCode("minf"), fourCharCode("stbl")},
    NestingRow{fourCharCode("minf"), fourCharCode("dinf")},
};

bool mayLieIn(FourCharCode outer, FourCharCode inner) {
    return std::any_of(nesting.begin(), nesting.end(), [&](const NestingRow& row) {
        return row.outer == outer && row.inner == inner;
    });
}

/// The boxes of one track, gathered before they are made sense of: their order is free.
struct TrackBoxes {
    MovieTrack track;
    HeaderTimes media;
    std::vector<Edit> edits;

    void gather(FourCharCode outer, Span contents, std::uint32_t movieTimescale) {
        forEachBox(contents, [&](FourCharCode type, Span box) {
            visit(outer, type, box, movieTimescale);
            return true;
        });
    }

    void visit(FourCharCode outer, FourCharCode type, Span box, std::uint32_t movieTimescale) {
        if (type == fourCharCode("tkhd"))
            track.id = readTrackId(box);
        else if (type == fourCharCode("elst"))
            edits = readEdits(box, movieTimescale);
        else if (type == fourCharCode("mdhd"))
            media = readHeaderTimes(box);
        else if (type == fourCharCode("stsd"))
            track.sampleEntries = readSampleEntries(box);
        else if (type == fourCharCode("dref"))
            track.isElsewhere = isAllElsewhere(box);
        else if (type == fourCharCode("stps") || (type == fourCharCode("sbgp") && groupsKeys(box)))
            track.hasPartialKeys = true;
        else if (mayLieIn(outer, type))
            gather(type, box, movieTimescale);
    }

    MovieTrack finish() {
        track.mediaDuration = media.length;
        applyEdits(track, edits, media.timescale);
        return track;
    }
};

MovieLayout readMovie(Span movie) {
    MovieLayout layout;
    std::uint32_t timescale = 0;
    forEachBox(movie, [&](FourCharCode type, Span box) {
        if (type == fourCharCode("mvhd"))
            timescale = readHeaderTimes(box).timescale;
        layout.isFragmented = layout.isFragmented || type == fourCharCode("mvex");
        return true;
    });
    forEachBox(movie, [&](FourCharCode type, Span box) {
        if (type != fourCharCode("trak"))
            return true;
        TrackBoxes boxes;
        boxes.gather(type, box, timescale);
        layout.tracks.push_back(boxes.finish());
        return true;
    });
    return layout;
}

} // namespace

std::optional<MovieLayout> MovieLayout::read(const InputFile& file, std::stop_token stop) {
    std::optional<MovieLayout> layout;
    Window window(file);
    forEachBox(Span(window, 0, file.size()), [&](FourCharCode type, Span box) {
        if (stop.stop_requested())
            throw Cancelled();
        if (type == fourCharCode("moov"))
            layout = readMovie(box);
        return !layout;
    });
    return layout;
}

const MovieTrack* MovieLayout::track(std::uint32_t id) const {
    const auto found = std::find_if(tracks.begin(), tracks.end(),
                                    [id](const MovieTrack& track) { return track.id == id; });
    return found == tracks.end() ? nullptr : &*found;
}

bool MovieLayout::isProtected() const {
    return std::any_of(tracks.begin(), tracks.end(), [](const MovieTrack& track) {
        return std::any_of(track.sampleEntries.begin(), track.sampleEntries.end(), [](auto entry) {
            return std::find(protectedEntries.begin(), protectedEntries.end(), entry) !=
                   protectedEntries.end();
        });
    });
}

// libavformat keeps numbers in an int.
bool MovieLayout::hasUnnumberedTrack() const {
    return std::any_of(tracks.begin(), tracks.end(), [](const MovieTrack& track) {
        return track.id == 0 || track.id > std::numeric_limits<std::int32_t>::max();
    });
}

} // namespace boxlift::media
