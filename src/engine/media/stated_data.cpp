#include "engine/media/stated_data.h"

#include <algorithm>
#include <array>
#include <bit>

#include "model/four_char_code.h"

namespace boxlift::media {

namespace {

constexpr int maximumChunks = 1000;
/// From here on a 32-bit size is what streaming recorders write for "unknown".
constexpr std::int64_t openSize = 0x7fff'0000;

/// `bytes` bytes at `offset` as a number; 0 past the end of the file.
std::uint64_t numberAt(const InputFile& file, std::int64_t offset, int bytes, std::endian order) {
    std::array<std::uint8_t, 8> buffer{};
    const auto part = std::span(buffer).first(static_cast<std::size_t>(bytes));
    if (offset < 0 || file.readAt(offset, std::as_writable_bytes(part)) != bytes)
        return 0;
    if (order == std::endian::little)
        std::reverse(part.begin(), part.end());
    std::uint64_t value = 0;
    for (const std::uint8_t byte : part)
        value = value << 8 | byte;
    return value;
}

FourCharCode codeAt(const InputFile& file, std::int64_t offset) {
    return static_cast<FourCharCode>(numberAt(file, offset, 4, std::endian::big));
}

std::int64_t sizeAt(const InputFile& file, std::int64_t offset, int bytes, std::endian order) {
    return static_cast<std::int64_t>(numberAt(file, offset, bytes, order));
}

/// How the chunks of a kind of file are laid out.
struct Layout {
    std::int64_t firstChunk;
    std::int64_t codeBytes; ///< Wave64 names chunks by 16 bytes whose first four are the code.
    int sizeBytes;
    std::endian order;
    bool countsHeader; ///< Whether a chunk's size counts its header.
    std::int64_t alignment;
};

constexpr Layout riff{12, 4, 4, std::endian::little, false, 2};
constexpr Layout wave64{40, 16, 8, std::endian::little, true, 8};
constexpr Layout coreAudio{8, 4, 8, std::endian::big, false, 1};

const Layout* layoutOf(const InputFile& file) {
    const FourCharCode code = codeAt(file, 0);
    const bool isWave = codeAt(file, 8) == fourCharCode("WAVE");
    if (isWave && (code == fourCharCode("RIFF") || code == fourCharCode("RF64")))
        return &riff;
    if (code == fourCharCode("riff") && codeAt(file, 24) == fourCharCode("wave"))
        return &wave64;
    return code == fourCharCode("caff") ? &coreAudio : nullptr;
}

/// The 64-bit size that stands in for a data chunk's in RF64: ds64 is the first chunk there.
std::int64_t longSize(const InputFile& file) {
    constexpr std::int64_t dataSizeAt = 28;
    return codeAt(file, riff.firstChunk) == fourCharCode("ds64")
               ? sizeAt(file, dataSizeAt, 8, std::endian::little)
               : 0;
}

std::optional<StatedData> stated(const InputFile& file, const Layout& layout, std::int64_t offset,
                                 std::int64_t size) {
    if (&layout == &riff && size >= openSize)
        size = longSize(file);
    // Core Audio files store the number of edits in front of the samples.
    const std::int64_t skipped = &layout == &coreAudio ? 4 : 0;
    if (size <= skipped)
        return std::nullopt;
    return StatedData{offset + skipped, size - skipped};
}

} // namespace

std::optional<StatedData> statedData(const InputFile& file) {
    const Layout* layout = layoutOf(file);
    if (!layout)
        return std::nullopt;
    const std::int64_t header = layout->codeBytes + layout->sizeBytes;
    std::int64_t position = layout->firstChunk;
    for (int i = 0; i < maximumChunks && position + header <= file.size(); ++i) {
        std::int64_t size =
            sizeAt(file, position + layout->codeBytes, layout->sizeBytes, layout->order);
        size -= layout->countsHeader ? header : 0;
        if (codeAt(file, position) == fourCharCode("data"))
            return stated(file, *layout, position + header, size);
        if (size < 0 || size > file.size() - position)
            return std::nullopt;
        const std::int64_t end = position + header + size;
        position = (end + layout->alignment - 1) / layout->alignment * layout->alignment;
    }
    return std::nullopt;
}

} // namespace boxlift::media
