#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

#include "engine/media/asset.h"
#include "engine/media/input_file.h"

namespace boxlift::media {

/// A track of a file, known by its stream's number.
class FileTrack : public AssetTrack {
public:
    struct Facts {
        int streamIndex = 0;
        MediaType mediaType = MediaType::other;
        std::optional<FormatDescription> format;
        Size naturalSize;
        TimeRange timeRange;
        AffineTransform preferredTransform;
    };

    FileTrack(std::shared_ptr<const InputFile> file, const Facts& facts)
        : m_file(std::move(file)), m_facts(facts) {}

    const std::shared_ptr<const InputFile>& file() const { return m_file; }
    int streamIndex() const { return m_facts.streamIndex; }

    MediaType mediaType() const override { return m_facts.mediaType; }
    std::vector<FormatDescription> formatDescriptions() const override;
    Size naturalSize() const override { return m_facts.naturalSize; }
    TimeRange timeRange() const override { return m_facts.timeRange; }
    AffineTransform preferredTransform() const override { return m_facts.preferredTransform; }

private:
    std::shared_ptr<const InputFile> m_file;
    Facts m_facts;
};

/// A media file. Its header is read once, when it is opened; it keeps the file open, no demuxer.
class FileAsset : public Asset {
public:
    static std::shared_ptr<const FileAsset> open(std::shared_ptr<const InputFile> file,
                                                 std::stop_token stop);

    const std::shared_ptr<const InputFile>& file() const { return m_file; }

    bool isReadable() const override { return m_isReadable; }
    Time duration() const override { return m_duration; }
    std::vector<std::shared_ptr<const AssetTrack>> tracks() const override { return m_tracks; }

private:
    explicit FileAsset(std::shared_ptr<const InputFile> file) : m_file(std::move(file)) {}

    std::shared_ptr<const InputFile> m_file;
    bool m_isReadable = true;
    Time m_duration;
    std::vector<std::shared_ptr<const AssetTrack>> m_tracks;
};

} // namespace boxlift::media
