#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/media_spec.h"

namespace boxlift::test {

enum class StreamKind { video, audio, subtitle, data, other };

/// Times in ticks of the stream's time base.
struct ProbedPacket {
    std::optional<std::int64_t> pts{};
    std::optional<std::int64_t> dts{};
    std::int64_t duration = 0;
    std::size_t size = 0;
    bool isKey = false;
    /// Decoded but not shown.
    bool isDiscarded = false;
    /// Of the payload with its framing taken away: see media_payload.h.
    std::uint64_t payloadHash = 0;
};

struct ProbedStream {
    StreamKind kind = StreamKind::other;
    std::string codec{};
    std::string profile{};
    /// As many of four characters as are printable; empty where the container has none.
    std::string codecTag{};
    Ratio timeBase{};
    std::optional<double> startSeconds{};
    std::optional<double> durationSeconds{};
    std::string language{};
    std::map<std::string, std::string> metadata{};
    bool isDefault = false;
    bool isAttachedPicture = false;
    bool hasHeaderData = false;
    std::int64_t bitRate = 0;

    int width = 0;
    int height = 0;
    /// 0:1 where unknown.
    Ratio sampleAspect{};
    Ratio averageFrameRate{};
    std::string pixelFormat{};
    std::optional<DisplayMatrix> displayMatrix{};
    /// How the pictures are to be projected around the viewer, and which eye sees what, as FFmpeg
    /// names it ("equirectangular", "top and bottom"); empty where untold.
    std::string projection{};
    std::string stereo{};
    /// Empty where untagged.
    ColourTags colour{};
    /// "progressive", "tt", "bb", "tb", "bt" or "unknown".
    std::string fieldOrder{};

    int sampleRate = 0;
    int channels = 0;
    std::string layout{};

    std::vector<ProbedPacket> packets{};
    /// Over all payloads as one run of bytes, for formats whose packets have no size of their own.
    std::uint64_t payloadHash = 0;

    double seconds(std::int64_t ticks) const;
    /// Of each packet in file order, without framing.
    std::vector<std::uint64_t> payloadHashes() const;
};

struct ProbedFile {
    /// FFmpeg's name of the demuxer, such as "mov,mp4,m4a,3gp,3g2,mj2".
    std::string format{};
    std::optional<double> startSeconds{};
    std::optional<double> durationSeconds{};
    std::map<std::string, std::string> metadata{};
    std::vector<ChapterSpec> chapters{};
    std::vector<ProbedStream> streams{};

    /// Cover pictures left out for video.
    std::vector<const ProbedStream*> all(StreamKind kind) const;
    /// The one with this number among its kind; throws std::out_of_range when there is none.
    const ProbedStream& video(std::size_t number = 0) const;
    const ProbedStream& audio(std::size_t number = 0) const;
};

/// Reads the whole file with FFmpeg's default settings. Throws std::runtime_error.
ProbedFile probe(const std::filesystem::path& path);

} // namespace boxlift::test
