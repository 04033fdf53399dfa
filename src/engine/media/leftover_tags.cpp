#include "engine/media/leftover_tags.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "engine/media/metadata_boxes.h"

namespace boxlift::media::leftover_tags {

namespace {

using box_bytes::box;
using box_bytes::Bytes;
using box_bytes::put;
using metadata_boxes::fullBox;
using metadata_boxes::value;
using metadata_boxes::ValueKind;

/// A tag may be as long as the words of a long song.
constexpr std::size_t longestName = 255;
constexpr std::size_t longestValue = 65'536;

/// What the writers of all types write by themselves.
constexpr std::array writtenByAll{
    "title",     "artist",   "album",         "date", "comment", "genre",
    "copyright", "location", "creation_time", "make", "model",
};

/// What the writers of all but QuickTime files write as well.
constexpr std::array writtenByOthers{
    "album_artist", "composer",      "grouping",   "lyrics",   "description",
    "synopsis",     "show",          "episode_id", "network",  "keywords",
    "episode_sort", "season_number", "media_type", "hd_video", "gapless_playback",
    "compilation",  "track",         "disc",
};

/// What tells of the source's container or its making, or means something to one program alone.
constexpr std::array foreign{
    "major_brand", "minor_version", "compatible_brands", "timecode", "iTunSMPB", "vendor_id",
};
constexpr std::array foreignStarts{"com.", "id3v2_priv.", "encod"};

enum class Form { text, byte, longNumber, pair, paddedPair };

struct ItemRow {
    const char* key;
    FourCharCode code;
    Form form;
};

constexpr FourCharCode copyrightSign = 0xa9000000;

constexpr FourCharCode signedCode(const char (&text)[4]) {
    return copyrightSign | static_cast<FourCharCode>(text[0]) << 16 |
           static_cast<FourCharCode>(text[1]) << 8 | static_cast<FourCharCode>(text[2]);
}

constexpr std::array rows{
    ItemRow{"album_artist", fourCharCode("aART"), Form::text},
    ItemRow{"composer", signedCode("wrt"), Form::text},
    ItemRow{"grouping", signedCode("grp"), Form::text},
    ItemRow{"lyrics", signedCode("lyr"), Form::text},
    ItemRow{"description", fourCharCode("desc"), Form::text},
    ItemRow{"synopsis", fourCharCode("ldes"), Form::text},
    ItemRow{"show", fourCharCode("tvsh"), Form::text},
    ItemRow{"episode_id", fourCharCode("tven"), Form::text},
    ItemRow{"network", fourCharCode("tvnn"), Form::text},
    ItemRow{"keywords", fourCharCode("keyw"), Form::text},
    ItemRow{"category", fourCharCode("catg"), Form::text},
    ItemRow{"sort_name", fourCharCode("sonm"), Form::text},
    ItemRow{"sort_artist", fourCharCode("soar"), Form::text},
    ItemRow{"sort_album", fourCharCode("soal"), Form::text},
    ItemRow{"sort_album_artist", fourCharCode("soaa"), Form::text},
    ItemRow{"sort_composer", fourCharCode("soco"), Form::text},
    ItemRow{"sort_show", fourCharCode("sosn"), Form::text},
    ItemRow{"episode_sort", fourCharCode("tves"), Form::longNumber},
    ItemRow{"season_number", fourCharCode("tvsn"), Form::longNumber},
    ItemRow{"media_type", fourCharCode("stik"), Form::byte},
    ItemRow{"hd_video", fourCharCode("hdvd"), Form::byte},
    ItemRow{"gapless_playback", fourCharCode("pgap"), Form::byte},
    ItemRow{"compilation", fourCharCode("cpil"), Form::byte},
    ItemRow{"podcast", fourCharCode("pcst"), Form::byte},
    ItemRow{"rating", fourCharCode("rtng"), Form::byte},
    ItemRow{"track", fourCharCode("trkn"), Form::paddedPair},
    ItemRow{"disc", fourCharCode("disk"), Form::pair},
};

bool isSame(std::string_view a, std::string_view b) {
    return av_strncasecmp(a.data(), b.data(), std::min(a.size(), b.size())) == 0 &&
           a.size() == b.size();
}

template <typename List>
bool contains(const List& list, std::string_view key) {
    return std::ranges::any_of(list, [key](const char* other) { return isSame(key, other); });
}

/// "title-eng" beside "title": the same once more for one language.
bool isTranslation(const AVDictionary* tags, std::string_view key) {
    constexpr std::size_t suffix = 4;
    if (key.size() <= suffix || key[key.size() - suffix] != '-')
        return false;
    const std::string base(key.substr(0, key.size() - suffix));
    return av_dict_get(tags, base.c_str(), nullptr, 0) != nullptr;
}

bool isLeftOver(FileType type, const AVDictionary* tags, const AVDictionaryEntry& tag) {
    const std::string_view key(tag.key);
    const std::size_t length = std::string_view(tag.value).size();
    if (key.empty() || key.size() > longestName || length == 0 || length > longestValue)
        return false;
    const bool isForeign =
        contains(foreign, key) || std::ranges::any_of(foreignStarts, [key](std::string_view start) {
            return isSame(key.substr(0, start.size()), start);
        });
    const bool isWritten =
        contains(writtenByAll, key) ||
        (type != FileType::AVFileTypeQuickTimeMovie && contains(writtenByOthers, key));
    return !isForeign && !isWritten && !isTranslation(tags, key);
}

std::optional<std::uint16_t> numberIn(std::string_view text) {
    std::uint16_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

/// "3/12" or "3".
Bytes pairOf(std::string_view text, int padding) {
    const std::size_t slash = text.find('/');
    const auto total =
        slash == std::string_view::npos ? std::nullopt : numberIn(text.substr(slash + 1));
    Bytes bytes;
    put(bytes, 0, 2);
    put(bytes, numberIn(text).value_or(0), 2);
    put(bytes, total.value_or(0), 2);
    put(bytes, 0, padding);
    return value(ValueKind::binary, bytes);
}

Bytes numberOf(std::string_view text, int bytes) {
    Bytes number;
    put(number, numberIn(text).value_or(0), bytes);
    return value(ValueKind::integer, number);
}

Bytes valueOf(Form form, std::string_view text) {
    switch (form) {
    case Form::text:
        return value(text);
    case Form::byte:
        return numberOf(text, 1);
    case Form::longNumber:
        return numberOf(text, 4);
    case Form::pair:
        return pairOf(text, 0);
    case Form::paddedPair:
        return pairOf(text, 2);
    }
    return {};
}

Bytes named(std::string_view key, std::string_view text) {
    Bytes owner;
    put(owner, "com.apple.iTunes");
    Bytes name;
    put(name, key);
    Bytes contents = fullBox(fourCharCode("mean"), owner);
    put(contents, fullBox(fourCharCode("name"), name));
    put(contents, value(text));
    return box(fourCharCode("----"), contents);
}

Bytes item(std::string_view key, std::string_view text) {
    const auto row =
        std::ranges::find_if(rows, [key](const ItemRow& other) { return isSame(key, other.key); });
    const bool hasCode = row != rows.end() && (row->form == Form::text || numberIn(text));
    return hasCode ? box(row->code, valueOf(row->form, text)) : named(key, text);
}

} // namespace

Bytes items(FileType type, const AVDictionary* tags) {
    Bytes bytes;
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)))
        if (isLeftOver(type, tags, *tag))
            put(bytes, item(tag->key, tag->value));
    return bytes;
}

} // namespace boxlift::media::leftover_tags
