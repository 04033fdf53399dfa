#include "engine/media/index_room.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace boxlift::media {

namespace {

// ISO/IEC 14496-12, 8.6 and 8.7: the bytes of a row of each table.
constexpr std::int64_t timeRow = 8;
constexpr std::int64_t compositionRow = 8;
constexpr std::int64_t sizeRow = 4;
constexpr std::int64_t dependencyRow = 1;
/// A row of `stss`, and of QuickTime's `stps`.
constexpr std::int64_t keyRows = 8;
constexpr std::int64_t chunkRow = 12;
constexpr std::int64_t shortPlace = 4;
constexpr std::int64_t longPlace = 8;

/// The headers of a track's or a movie's boxes, or the names around a label.
constexpr std::int64_t boxesOfMovie = 4096;
constexpr std::int64_t boxesOfTrack = 4096;
constexpr std::int64_t boxesOfLabel = 64;

/// A chunk ends where another track's samples come between, and before it is a mebibyte large.
std::int64_t largestChunkCount(const ExpectedSamples& track, std::int64_t samplesOfAll) {
    constexpr std::int64_t chunkBytes = 1 << 20;
    const std::int64_t others = samplesOfAll - track.count;
    return std::min(track.count, others + 1 + 2 * (track.bytes / chunkBytes + 1));
}

std::int64_t tables(const ExpectedSamples& track, std::int64_t samplesOfAll, bool isLong) {
    const std::int64_t row = sizeRow + (track.mayBeReordered ? compositionRow + dependencyRow : 0);
    return track.count * row + track.timeRuns * timeRow + track.keys * keyRows +
           largestChunkCount(track, samplesOfAll) * (chunkRow + (isLong ? longPlace : shortPlace));
}

std::int64_t largestTables(std::span<const ExpectedSamples> tracks) {
    // So many bytes before the end of 32 bits the index itself begins to matter.
    constexpr std::int64_t bytesOfRows = 64;
    std::int64_t samples = 0;
    std::int64_t bytes = 0;
    for (const ExpectedSamples& track : tracks) {
        samples += track.count;
        bytes += track.bytes;
    }
    const bool isLong = bytes + bytesOfRows * samples > std::numeric_limits<std::uint32_t>::max();
    std::int64_t size = 0;
    for (const ExpectedSamples& track : tracks)
        size += tables(track, samples, isLong);
    return size;
}

/// In a form of 8 bits or of 16, and perhaps for two kinds of readers.
std::int64_t labels(const AVDictionary* dictionary) {
    constexpr std::int64_t copies = 4;
    std::int64_t size = 0;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)))
        size += boxesOfLabel + copies * static_cast<std::int64_t>(std::strlen(entry->key) +
                                                                  std::strlen(entry->value));
    return size;
}

std::int64_t description(const AVStream& stream) {
    return boxesOfTrack + std::int64_t{2} * stream.codecpar->extradata_size +
           labels(stream.metadata);
}

std::int64_t chapterTrack(const AVFormatContext& movie) {
    ExpectedSamples titles;
    titles.count = titles.timeRuns = titles.keys = movie.nb_chapters;
    return boxesOfTrack + tables(titles, 2 * titles.count, true);
}

} // namespace

std::int64_t largestIndex(const AVFormatContext& movie, std::span<const ExpectedSamples> tracks) {
    std::int64_t size = boxesOfMovie + labels(movie.metadata) + largestTables(tracks);
    for (const AVStream* stream : std::span(movie.streams, movie.nb_streams))
        size += description(*stream);
    return movie.nb_chapters > 0 ? size + chapterTrack(movie) : size;
}

} // namespace boxlift::media
