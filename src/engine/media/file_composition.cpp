#include "engine/media/file_composition.h"

#include <algorithm>

#include "engine/media/error.h"

namespace boxlift::media {

void FileCompositionTrack::insertTimeRange(const TimeRange& range,
                                           std::shared_ptr<const AssetTrack> source, Time at) {
    const auto fileTrack = std::dynamic_pointer_cast<const FileTrack>(source);
    const bool isWhole = fileTrack && range == fileTrack->timeRange() && at == range.start;
    if (!isWhole || m_source || fileTrack->mediaType() != m_type)
        throw Error(ErrorKind::unknown, "insert time range",
                    fileTrack ? fileTrack->file()->path() : std::filesystem::path(),
                    "only a whole track can be inserted, once, at its own place");
    m_source = fileTrack;
    m_range = range;
}

void FileCompositionTrack::setPreferredTransform(const AffineTransform& transform) {
    m_transform = transform;
}

std::vector<FormatDescription> FileCompositionTrack::formatDescriptions() const {
    return m_source ? m_source->formatDescriptions() : std::vector<FormatDescription>();
}

Size FileCompositionTrack::naturalSize() const {
    return m_source ? m_source->naturalSize() : Size();
}

std::shared_ptr<const InputFile> FileComposition::file() const {
    for (const auto& track : m_tracks)
        if (track->source())
            return track->source()->file();
    return nullptr;
}

std::shared_ptr<MutableCompositionTrack> FileComposition::addMutableTrack(MediaType type,
                                                                          std::int32_t) {
    if (type != MediaType::video && type != MediaType::audio)
        return nullptr;
    return m_tracks.emplace_back(std::make_shared<FileCompositionTrack>(type));
}

Time FileComposition::duration() const {
    Time end = Time::zero();
    for (const auto& track : m_tracks)
        end = std::max(end, track->timeRange().end());
    return end;
}

std::vector<std::shared_ptr<const AssetTrack>> FileComposition::tracks() const {
    return {m_tracks.begin(), m_tracks.end()};
}

} // namespace boxlift::media
