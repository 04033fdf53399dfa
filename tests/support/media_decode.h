#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace boxlift::test {

/// Interleaved samples. The first one lies at `startSeconds` of the file's timeline; gaps in the
/// time stamps are silence.
struct DecodedAudio {
    int sampleRate = 0;
    int channels = 0;
    std::string layout{};
    double startSeconds = 0;
    std::vector<float> samples{};

    /// Per channel.
    std::size_t length() const { return samples.size() / static_cast<std::size_t>(channels); }
    double seconds() const { return static_cast<double>(length()) / sampleRate; }
    float at(std::size_t sample, int channel) const;
};

/// Decodes the audio track with this number. Where the container states an edited length, what
/// lies beyond it is cut off. Throws std::runtime_error, std::out_of_range.
DecodedAudio decodeAudio(const std::filesystem::path& path, std::size_t number = 0);

/// The luma plane of a picture in 8 bits and limited range, not turned.
struct LumaFrame {
    int width = 0;
    int height = 0;
    double seconds = 0;
    bool isInterlaced = false;
    std::vector<std::uint8_t> luma{};

    std::uint8_t at(int x, int y) const;
};

struct VideoDecodeOptions {
    std::size_t maxFrames = std::numeric_limits<std::size_t>::max();
    std::size_t number = 0;
    /// Scaled to this size when given.
    int width = 0;
    int height = 0;
};

/// Decodes a video track, in order of presentation. Throws std::runtime_error, std::out_of_range.
std::vector<LumaFrame> decodeVideo(const std::filesystem::path& path,
                                   const VideoDecodeOptions& options = {});

} // namespace boxlift::test
