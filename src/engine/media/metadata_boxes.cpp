#include "engine/media/metadata_boxes.h"

namespace boxlift::media::metadata_boxes {

using box_bytes::box;
using box_bytes::Bytes;
using box_bytes::put;

Bytes fullBox(FourCharCode type, std::span<const std::uint8_t> contents) {
    Bytes bytes(4);
    put(bytes, contents);
    return box(type, bytes);
}

Bytes value(ValueKind kind, std::span<const std::uint8_t> bytes) {
    Bytes contents;
    put(contents, static_cast<std::uint32_t>(kind), 4);
    put(contents, 0, 4);
    put(contents, bytes);
    return box(fourCharCode("data"), contents);
}

Bytes value(std::string_view text) {
    Bytes bytes;
    put(bytes, text);
    return value(ValueKind::text, bytes);
}

Bytes meta(MetaForm form, FourCharCode handler, std::span<const std::uint8_t> contents) {
    Bytes description;
    put(description, 0, 4);
    put(description, handler, 4);
    put(description, handler == fourCharCode("mdir") ? fourCharCode("appl") : 0, 4);
    put(description, 0, 8); // Two reserved numbers.
    put(description, 0, 1); // An empty name.
    Bytes all = fullBox(fourCharCode("hdlr"), description);
    put(all, contents);
    return form == MetaForm::plain ? box(fourCharCode("meta"), all)
                                   : fullBox(fourCharCode("meta"), all);
}

Bytes itemList(std::span<const std::uint8_t> items) {
    return meta(MetaForm::versioned, fourCharCode("mdir"), box(fourCharCode("ilst"), items));
}

} // namespace boxlift::media::metadata_boxes
