#pragma once

#include <memory>
#include <vector>

#include "engine/media/composition.h"
#include "engine/media/file_asset.h"

namespace boxlift::media {

/// A track of a composition that shows one whole track of a file at that track's own place.
class FileCompositionTrack : public MutableCompositionTrack {
public:
    explicit FileCompositionTrack(MediaType type) : m_type(type) {}

    /// Null until a range was inserted.
    const FileTrack* source() const { return m_source.get(); }

    void insertTimeRange(const TimeRange& range, std::shared_ptr<const AssetTrack> source,
                         Time at) override;
    void setPreferredTransform(const AffineTransform& transform) override;

    MediaType mediaType() const override { return m_type; }
    std::vector<FormatDescription> formatDescriptions() const override;
    Size naturalSize() const override;
    TimeRange timeRange() const override { return m_range; }
    AffineTransform preferredTransform() const override { return m_transform; }

private:
    MediaType m_type;
    std::shared_ptr<const FileTrack> m_source;
    TimeRange m_range{Time::zero(), Time::zero()};
    AffineTransform m_transform;
};

/// A selection of the tracks of one file.
class FileComposition : public MutableComposition {
public:
    /// Null while it shows nothing.
    std::shared_ptr<const InputFile> file() const;
    const std::vector<std::shared_ptr<FileCompositionTrack>>& selection() const { return m_tracks; }

    std::shared_ptr<MutableCompositionTrack>
    addMutableTrack(MediaType type, std::int32_t preferredTrackId) override;

    bool isReadable() const override { return true; }
    Time duration() const override;
    std::vector<std::shared_ptr<const AssetTrack>> tracks() const override;

private:
    std::vector<std::shared_ptr<FileCompositionTrack>> m_tracks;
};

} // namespace boxlift::media
