#include "engine/media/extra_metadata.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "engine/media/file_metadata.h"
#include "engine/media/leftover_tags.h"
#include "engine/media/metadata_boxes.h"

namespace boxlift::media {

namespace {

using box_bytes::box;
using box_bytes::Bytes;
using box_bytes::put;
using metadata_boxes::MetaForm;
using metadata_boxes::value;
using metadata_boxes::ValueKind;

constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr std::string_view keyPrefix = "com.apple.quicktime.";

/// Plain keys that files other than QuickTime's have no other place for, or only a rounded one.
struct KeyRow {
    const char* plain;
    const char* full;
};

constexpr std::array cameraKeys{
    KeyRow{"make", "com.apple.quicktime.make"},
    KeyRow{"model", "com.apple.quicktime.model"},
    KeyRow{"location", "com.apple.quicktime.location.ISO6709"},
};

struct KeyedValue {
    std::string_view key;
    std::string_view value;
};

/// As the library prints what the source has as a number.
bool isNumber(std::string_view text) {
    if (text.starts_with('-'))
        text.remove_prefix(1);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return std::ranges::any_of(text, isDigit) && std::ranges::count(text, '.') <= 1 &&
           std::ranges::all_of(text, [&](char c) { return isDigit(c) || c == '.'; });
}

/// Numbers are left out: they would have to be stored in the form that the source had them in,
/// which is not told.
std::vector<KeyedValue> keyedValues(FileType type, const AVDictionary* tags) {
    std::vector<KeyedValue> values;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX)))
        if (std::string_view(entry->key).starts_with(keyPrefix) && !isNumber(entry->value))
            values.push_back({entry->key, entry->value});
    if (type == mov)
        return values;
    for (const KeyRow& row : cameraKeys) {
        entry = av_dict_get(tags, row.plain, nullptr, 0);
        if (entry && !av_dict_get(tags, row.full, nullptr, 0))
            values.push_back({row.full, entry->value});
    }
    return values;
}

Bytes keyedMetadata(FileType type, const std::vector<KeyedValue>& values) {
    Bytes keys;
    Bytes list;
    put(keys, values.size(), 4);
    std::uint32_t number = 0;
    for (const KeyedValue& pair : values) {
        Bytes key;
        put(key, pair.key);
        put(keys, box(fourCharCode("mdta"), key));
        put(list, box(++number, value(pair.value)));
    }
    Bytes contents = metadata_boxes::fullBox(fourCharCode("keys"), keys);
    put(contents, box(fourCharCode("ilst"), list));
    return metadata_boxes::meta(type == mov ? MetaForm::plain : MetaForm::versioned,
                                fourCharCode("mdta"), contents);
}

/// The cover, for files whose writer does not take it.
Bytes coverItem(const AVFormatContext& source) {
    Bytes pictures;
    for (const AVStream* stream : std::span(source.streams, source.nb_streams)) {
        if (!isCoverPicture(*stream))
            continue;
        const bool isPng = stream->codecpar->codec_id == AV_CODEC_ID_PNG;
        put(pictures, value(isPng ? ValueKind::png : ValueKind::jpeg,
                            {stream->attached_pic.data,
                             static_cast<std::size_t>(stream->attached_pic.size)}));
    }
    return pictures.empty() ? Bytes() : box(fourCharCode("covr"), pictures);
}

} // namespace

void addExtraMetadata(IndexChanges& changes, FileType type, const AVFormatContext& source) {
    const auto values = keyedValues(type, source.metadata);
    if (!values.empty())
        put(changes.movie, keyedMetadata(type, values));
    put(changes.items, leftover_tags::items(type, source.metadata));
    if (type == mov)
        put(changes.items, coverItem(source));
}

} // namespace boxlift::media
