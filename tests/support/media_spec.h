#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace boxlift::test {

/// Options as FFmpeg names them. One that nobody understands makes the generator throw.
using Options = std::map<std::string, std::string>;

struct Ratio {
    int numerator = 0;
    int denominator = 1;

    friend bool operator==(const Ratio&, const Ratio&) = default;
};

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct DisplayMatrix {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    friend bool operator==(const DisplayMatrix&, const DisplayMatrix&) = default;
};

/// FFmpeg's names ("bt709", "smpte2084", "bt2020nc", "tv" or "pc"); an empty one leaves the
/// property untagged. Tags alone: the picture's values do not change with them.
struct ColourTags {
    std::string primaries{};
    std::string transfer{};
    std::string matrix{};
    std::string range{};

    friend bool operator==(const ColourTags&, const ColourTags&) = default;
};

/// One moving test picture; see media_pattern.h for what it shows.
struct VideoSpec {
    std::string codec = "libx264";
    int width = 160;
    int height = 120;
    Ratio frameRate = {25, 1};
    /// Frames are shown for half and for one and a half of a frame's time in turn.
    bool variableFrameRate = false;
    /// Empty: 4:2:0 with 8 bits where the encoder has it, else the encoder's first choice.
    std::string pixelFormat{};
    int bFrames = 0;
    int keyFrameInterval = 12;
    /// Bits per second; 0 is the encoder's default.
    std::int64_t bitRate = 0;
    /// Clockwise, a multiple of 90. The pixels are not turned, the display matrix says it.
    int rotation = 0;
    /// Flipped left to right before the rotation; by the display matrix, too.
    bool mirrored = false;
    /// Stands in for `rotation` and `mirrored`, to the letter.
    std::optional<DisplayMatrix> displayMatrix{};
    Ratio sampleAspect = {1, 1};
    /// Two fields per frame, the top one first, the bottom one half a frame's time later.
    bool interlaced = false;
    /// For pixel formats with alpha.
    bool leftHalfTransparent = false;
    ColourTags colour{};
    /// Four characters such as "hvc1"; empty is the container's own choice.
    std::string codecTag{};
    double startSeconds = 0;
    std::optional<double> seconds{};
    /// Three letters. MOV files keep only those of an old list: "ger", "fra", "eng", not "deu".
    std::string language{};
    bool isDefault = false;
    Options encoderOptions{};
};

enum class Signal { tone, noise, impulses, silence };

/// Nothing is stored from `at` on for `length`; what would have followed comes that much later.
/// By time stamps, so not for PCM in MPEG-4 files, whose samples have none.
struct Gap {
    double at = 0;
    double length = 0;
};

struct AudioSpec {
    std::string codec = "aac";
    int sampleRate = 44100;
    /// "mono", "stereo", "5.1", "5.1(side)"...
    std::string layout = "stereo";
    /// Empty: the encoder's first choice.
    std::string sampleFormat{};
    Signal signal = Signal::tone;
    /// Hertz, by channel; starts over when there are more channels than entries.
    std::vector<double> frequencies = {440};
    double amplitude = 0.5;
    /// Where `Signal::impulses` has a single sample of `amplitude`, in every channel.
    std::vector<std::int64_t> impulses{};
    std::int64_t bitRate = 0;
    std::optional<Gap> gap{};
    std::string codecTag{};
    /// In MPEG-4 files a late track's priming comes before this, as a silent lead-in.
    double startSeconds = 0;
    std::optional<double> seconds{};
    std::string language{};
    bool isDefault = false;
    Options encoderOptions{};
};

struct SubtitleEvent {
    double start = 0;
    double end = 0;
    std::string text{};
};

struct SubtitleSpec {
    std::string codec = "mov_text";
    std::vector<SubtitleEvent> events{};
    std::string language{};
    bool isDefault = false;
};

struct ChapterSpec {
    std::string title{};
    double start = 0;
    double end = 0;
};

struct CoverSpec {
    /// "png" or "mjpeg".
    std::string codec = "png";
    int size = 32;
};

/// A file. Streams come in the order video, audio, subtitles, cover.
struct MediaSpec {
    /// FFmpeg's name of the muxer.
    std::string format = "mov";
    /// Of every track that does not say otherwise.
    double seconds = 1;
    std::vector<VideoSpec> video{};
    std::vector<AudioSpec> audio{};
    std::vector<SubtitleSpec> subtitles{};
    std::optional<CoverSpec> cover{};
    std::map<std::string, std::string> metadata{};
    std::vector<ChapterSpec> chapters{};
    /// "01:00:00:00" gives MOV and MP4 files a timecode track.
    std::string timecode{};
    Options muxerOptions{};
};

} // namespace boxlift::test
