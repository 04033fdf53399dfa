#include "engine/media/source_check.h"

#include <algorithm>
#include <string>

#include "engine/media/error.h"
#include "engine/media/movie_layout.h"
#include "engine/media/stated_data.h"

namespace boxlift::media {

namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& cause) {
    throw Error(ErrorKind::sourceEndsEarly, "check source", path, cause);
}

void checkSamplesAreHere(const AVFormatContext& context, std::span<const int> streams,
                         const InputFile& file) {
    const auto layout = MovieLayout::read(file, {});
    for (const int index : streams) {
        const auto id = static_cast<std::uint32_t>(context.streams[index]->id);
        const MovieTrack* track = layout ? layout->track(id) : nullptr;
        if (track && track->isElsewhere)
            throw Error(ErrorKind::sourceUnreadable, "check source", file.path(),
                        "the samples of stream " + std::to_string(index) + " lie in another file");
    }
}

} // namespace

void checkIndexedSamples(const AVFormatContext& context, std::span<const int> streams,
                         const InputFile& file) {
    checkSamplesAreHere(context, streams, file);
    for (const int index : streams) {
        AVStream* stream = context.streams[index];
        const int count = avformat_index_get_entries_count(stream);
        for (int i = 0; i < count; ++i) {
            const AVIndexEntry* entry = avformat_index_get_entry(stream, i);
            if (entry->pos > file.size() - entry->size)
                fail(file.path(), "sample " + std::to_string(i) + " of stream " +
                                      std::to_string(index) + " lies past the end of the file");
        }
    }
}

void checkStatedData(const AVFormatContext& context, const InputFile& file) {
    const auto data = statedData(file);
    const std::int64_t bitRate = context.nb_streams ? context.streams[0]->codecpar->bit_rate : 0;
    if (!data || bitRate <= 0)
        return;
    const auto seconds = [bitRate](std::int64_t bytes) {
        return static_cast<double>(bytes) * 8 / static_cast<double>(bitRate);
    };
    checkDeclaredEnd(Time::fromSeconds(seconds(data->size)),
                     Time::fromSeconds(seconds(std::min(data->size, file.size() - data->offset))),
                     file.path());
}

bool endsEarly(Time declared, Time reached) {
    if (!declared.isValid() || !reached.isValid())
        return false;
    const double tolerance = std::max(1.0, declared.seconds() / 100);
    return declared.seconds() - reached.seconds() > tolerance;
}

void checkDeclaredEnd(Time declared, Time reached, const std::filesystem::path& path) {
    if (endsEarly(declared, reached))
        fail(path, "ends at " + std::to_string(reached.seconds()) + " s, declared are " +
                       std::to_string(declared.seconds()) + " s");
}

} // namespace boxlift::media
