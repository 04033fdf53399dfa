#pragma once

#include <span>
#include <string_view>

#include "engine/media/box_bytes.h"

// The boxes that metadata is kept in, by QuickTime's keys or by the codes of music players.
namespace boxlift::media::metadata_boxes {

/// Kinds of values (QuickTime File Format, well-known types).
enum class ValueKind : std::uint32_t { binary = 0, text = 1, jpeg = 13, png = 14, integer = 21 };

/// Whether the outermost box has a version, as in MPEG-4 files.
enum class MetaForm { plain, versioned };

box_bytes::Bytes fullBox(FourCharCode type, std::span<const std::uint8_t> contents);

/// A value, without country and language.
box_bytes::Bytes value(ValueKind kind, std::span<const std::uint8_t> bytes);
box_bytes::Bytes value(std::string_view text);

/// `contents` under a handler, which tells what they are keyed by.
box_bytes::Bytes meta(MetaForm form, FourCharCode handler, std::span<const std::uint8_t> contents);

/// A list of items as music players write it. Without items it is as small as it gets.
box_bytes::Bytes itemList(std::span<const std::uint8_t> items);

} // namespace boxlift::media::metadata_boxes
