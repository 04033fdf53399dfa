#include "engine/media/index_editor.h"

#include <algorithm>
#include <optional>

#include "engine/media/index_boxes.h"
#include "engine/media/metadata_boxes.h"

namespace boxlift::media {

namespace {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;
using box_bytes::store;
using index_boxes::Contents;
using index_boxes::endOf;
using index_boxes::enter;
using index_boxes::FieldRow;
using index_boxes::find;
using index_boxes::forEachBox;
using index_boxes::grow;
using index_boxes::isLong;
using index_boxes::Nest;
using index_boxes::trackId;

/// What QuickTime files say of a track in a language that Macintosh computers had no number for.
constexpr std::uint64_t noLanguage = 0x7fff;

// ISO/IEC 14496-12, 8.2.2, 8.3.2 and 8.4.2.
constexpr FieldRow movieTimescale{12, 4, 20, 4};
constexpr FieldRow movieDuration{16, 4, 24, 8};
constexpr FieldRow trackDuration{20, 4, 28, 8};
constexpr FieldRow mediaLanguage{20, 2, 32, 2};

std::uint64_t valueOf(Contents field) {
    return numberIn(field, field.size());
}

/// The lengths of a track's edits (8.6.6), in order.
std::vector<Contents> editLengths(Contents list) {
    std::vector<Contents> lengths;
    constexpr std::size_t firstEdit = 8;
    const std::size_t bytes = isLong(list) ? 8 : 4;
    const std::size_t row = 2 * bytes + 4;
    for (std::size_t at = firstEdit; at + row <= list.size(); at += row)
        lengths.push_back(list.subspan(at, bytes));
    return lengths;
}

/// Takes what lies behind `limit` off the last edit. Whether there was any.
bool cutEdits(Contents list, std::uint64_t limit) {
    const auto lengths = editLengths(list);
    std::uint64_t total = 0;
    for (const Contents length : lengths)
        total += valueOf(length);
    if (lengths.empty() || total <= limit || total - limit >= valueOf(lengths.back()))
        return false;
    store(lengths.back(), valueOf(lengths.back()) - (total - limit));
    return true;
}

/// Five bits for each letter (8.4.2.3); nothing for what is no such code.
std::optional<std::uint64_t> packed(const std::string& language) {
    if (language.size() != 3)
        return std::nullopt;
    std::uint64_t value = 0;
    for (const char letter : language) {
        if (letter < 'a' || letter > 'z')
            return std::nullopt;
        value = value << 5 | static_cast<std::uint64_t>(letter - 0x60);
    }
    return value;
}

class Editor {
public:
    Editor(Contents movie, const IndexChanges& changes) : m_movie(movie), m_changes(changes) {}

    void editTracks() {
        const Contents header = find(m_movie, fourCharCode("mvhd"));
        const Contents timescale = movieTimescale.in(header);
        if (timescale.empty() || valueOf(timescale) == 0)
            return;
        m_timescale = static_cast<std::int64_t>(valueOf(timescale));
        forEachBox(m_movie, [this](FourCharCode type, Contents box) {
            if (type == fourCharCode("trak"))
                editTrack(box);
        });
        const Contents length = movieDuration.in(header);
        if (m_isCut && !length.empty())
            store(length, std::min(valueOf(length), m_longest));
    }

private:
    void editTrack(Contents track) {
        const Contents header = find(track, fourCharCode("tkhd"));
        const Contents number = trackId.in(header);
        if (number.empty())
            return;
        const auto isMeant = [&](const auto& change) { return change.id == valueOf(number); };
        const auto change = std::ranges::find_if(m_changes.tracks, isMeant);
        if (change != m_changes.tracks.end()) {
            setLanguage(track, change->language);
            cut(track, change->shownEnd);
        }
        m_longest = std::max(m_longest, valueOf(trackDuration.in(header)));
    }

    void cut(Contents track, Time end) {
        if (!end.isValid() || end <= Time::zero())
            return;
        const auto limit = static_cast<std::uint64_t>(end.toRate(m_timescale));
        const Contents list = find(find(track, fourCharCode("edts")), fourCharCode("elst"));
        if (!cutEdits(list, limit))
            return;
        const Contents length = trackDuration.in(find(track, fourCharCode("tkhd")));
        store(length, std::min(valueOf(length), limit));
        m_isCut = true;
    }

    static void setLanguage(Contents track, const std::string& language) {
        const Contents field =
            mediaLanguage.in(find(find(track, fourCharCode("mdia")), fourCharCode("mdhd")));
        const auto code = packed(language);
        if (code && !field.empty() && valueOf(field) == noLanguage)
            store(field, *code);
    }

    Contents m_movie;
    const IndexChanges& m_changes;
    std::int64_t m_timescale = 0;
    std::uint64_t m_longest = 0;
    bool m_isCut = false;
};

/// From the index down to a track's first sample entry; empty when there is none.
Nest nestOfSampleEntry(Bytes& index, std::uint32_t id) {
    Nest nest = index_boxes::nestOfTrack(index, id);
    if (nest.empty() || !index_boxes::enterEach(index, nest,
                                                {fourCharCode("mdia"), fourCharCode("minf"),
                                                 fourCharCode("stbl"), fourCharCode("stsd")}))
        return {};
    // The entries follow a version and their number.
    constexpr std::size_t firstEntry = headerSize + 8;
    return enter(index, nest, nest.back() + firstEntry, std::nullopt) ? nest : Nest();
}

/// Whether the muxer has already written a box of this type into a picture's sample entry.
bool hasBox(Bytes& index, std::size_t entry, FourCharCode type) {
    constexpr std::size_t firstBox = headerSize + 78;
    const std::size_t size = endOf(index, entry) - entry;
    return size > firstBox &&
           !find(Contents(index).subspan(entry + firstBox, size - firstBox), type).empty();
}

void extend(Bytes& index, const Nest& nest, Bytes added) {
    forEachBox(added, [&](FourCharCode type, Contents contents) {
        if (!hasBox(index, nest.back(), type))
            grow(index, nest, box_bytes::box(type, contents));
    });
}

void changeSampleEntry(Bytes& index, const IndexChanges::Track& track) {
    const Nest nest = nestOfSampleEntry(index, track.id);
    if (nest.empty())
        return;
    if (track.entryName != 0)
        store(Contents(index).subspan(nest.back() + 4, 4), track.entryName);
    if (!track.sampleEntry.empty())
        extend(index, nest, track.sampleEntry);
}

/// Where the items are listed; empty when there is no such list.
Nest nestOfItems(Bytes& index) {
    constexpr std::size_t firstOfVersioned = headerSize + 4;
    Nest nest{0};
    const bool isThere = enter(index, nest, headerSize, fourCharCode("udta")) &&
                         enter(index, nest, nest.back() + headerSize, fourCharCode("meta")) &&
                         enter(index, nest, nest.back() + firstOfVersioned, fourCharCode("ilst"));
    return isThere ? nest : Nest();
}

/// The movie's user data, or a new box for it at the end.
Nest nestOfUserData(Bytes& index) {
    Nest nest{0};
    if (!enter(index, nest, headerSize, fourCharCode("udta"))) {
        grow(index, {0}, box_bytes::box(fourCharCode("udta"), {}));
        enter(index, nest, headerSize, fourCharCode("udta"));
    }
    return nest;
}

void addItems(Bytes& index, const Bytes& items) {
    const Nest standing = nestOfItems(index);
    if (!standing.empty())
        grow(index, standing, items);
    else
        grow(index, nestOfUserData(index), metadata_boxes::itemList(items));
}

} // namespace

Bytes editedIndex(Bytes index, const IndexChanges& changes) {
    if (index.size() < headerSize || endOf(index, 0) != index.size())
        return index;
    Editor(Contents(index).subspan(headerSize), changes).editTracks();
    for (const IndexChanges::Track& track : changes.tracks)
        changeSampleEntry(index, track);
    if (!changes.items.empty())
        addItems(index, changes.items);
    if (!changes.movie.empty())
        grow(index, {0}, changes.movie);
    return index;
}

std::size_t IndexChanges::largestGrowth() const {
    std::size_t growth = movie.size();
    for (const Track& track : tracks)
        growth += track.sampleEntry.size();
    return items.empty() ? growth : growth + headerSize + metadata_boxes::itemList(items).size();
}

} // namespace boxlift::media
