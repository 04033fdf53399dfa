#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "support/media_libav.h"
#include "support/media_spec.h"

namespace boxlift::test {

/// One stream of a file in the making. Made before the container's header is written (it adds its
/// stream), advanced after.
class Track {
public:
    virtual ~Track() = default;

    /// Where the next piece lies, in seconds; infinity when all has been written.
    virtual double position() const = 0;
    /// Writes the next piece.
    virtual void advance() = 0;
};

std::unique_ptr<Track> makeVideoTrack(AVFormatContext& container, const VideoSpec& spec,
                                      double seconds);
std::unique_ptr<Track> makeAudioTrack(AVFormatContext& container, const AudioSpec& spec,
                                      double seconds);
std::unique_ptr<Track> makeSubtitleTrack(AVFormatContext& container, const SubtitleSpec& spec);
std::unique_ptr<Track> makeCoverTrack(AVFormatContext& container, const CoverSpec& spec);

/// What a stream is called and where it lies.
struct StreamTraits {
    std::string codecTag{};
    std::string language{};
    bool isDefault = false;
    double startSeconds = 0;
    std::optional<Gap> gap{};
};

/// An encoder that is configured next and opened then. Throws MissingEncoder.
libav::CodecPtr prepareEncoder(const std::string& name, const AVFormatContext& container);
void openEncoder(AVCodecContext& encoder, const Options& options);
/// Adds a stream for what an open encoder makes.
AVStream& addStream(AVFormatContext& container, const AVCodecContext& encoder,
                    const StreamTraits& traits);

/// Pairs an open encoder with its stream: frames in, packets to the container.
class StreamEncoder {
public:
    /// Of a packet that has none, in the encoder's time base, by its presentation time.
    using DurationOf = std::function<std::int64_t(std::int64_t)>;

    StreamEncoder(AVFormatContext& container, libav::CodecPtr encoder, const StreamTraits& traits,
                  DurationOf durationOf = {});

    AVCodecContext& context() { return *m_encoder; }
    AVStream& stream() { return m_stream; }
    /// No frame means that there will be no more.
    void encode(const AVFrame* frame);

private:
    void place(AVPacket& packet) const;

    AVFormatContext& m_container;
    libav::CodecPtr m_encoder;
    StreamTraits m_traits;
    DurationOf m_durationOf;
    AVStream& m_stream;
};

} // namespace boxlift::test
