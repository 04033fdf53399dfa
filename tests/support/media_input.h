#pragma once

#include <filesystem>

#include "support/media_libav.h"

namespace boxlift::test {

/// Opened with FFmpeg's default settings, its streams known. Throws std::runtime_error.
libav::InputPtr openInput(const std::filesystem::path& path);
/// False at the end. Throws std::runtime_error.
bool readPacket(AVFormatContext& input, AVPacket& packet);

/// Decodes one stream of a file.
class StreamDecoder {
public:
    /// The stream with this number among those of its kind, cover pictures left out.
    StreamDecoder(const std::filesystem::path& path, AVMediaType type, std::size_t number);

    const AVFormatContext& input() const { return *m_input; }
    const AVStream& stream() const { return *m_stream; }
    /// The next frame, valid until the next call; none at the end.
    const AVFrame* next();

private:
    void feed();

    libav::InputPtr m_input;
    const AVStream* m_stream;
    libav::CodecPtr m_decoder;
    libav::PacketPtr m_packet;
    libav::FramePtr m_frame;
};

} // namespace boxlift::test
