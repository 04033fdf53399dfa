#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "engine/media/av/handles.h"
#include "engine/media/encode_settings.h"
#include "engine/media/video_colour.h"

namespace boxlift::media {

/// Makes any decoded picture into what the encoder takes: one size, square pixels, 8-bit 4:2:0 in
/// limited range, without fields, alpha or high dynamic range. When the pictures' own properties
/// change in mid-stream it starts anew with the new ones. One thread. Throws media::Error.
class VideoFilter {
public:
    /// Takes over the frame's reference. Time stamps stay as they were.
    using Sink = std::function<void(AVFrame&)>;

    /// `tags` stand in for what the frames leave untagged.
    VideoFilter(PictureSize size, const VideoColour& tags, AVRational timeBase,
                const std::filesystem::path& path);

    /// Takes over the frame's reference.
    void push(AVFrame& frame, const Sink& sink);
    void finish(const Sink& sink);

private:
    /// What a graph is made for.
    struct Input {
        AVPixelFormat format = AV_PIX_FMT_NONE;
        PictureSize size;
        VideoColour colour;
        bool isInterlaced = false;

        friend bool operator==(const Input&, const Input&) = default;
    };

    Input describe(const AVFrame& frame) const;
    void build(const Input& input);
    void addSource(const Input& input);
    void addChain(const std::string& chain);
    void receive(const Sink& sink);
    int check(int result, const char* what) const;

    PictureSize m_size;
    VideoColour m_tags;
    AVRational m_timeBase;
    std::filesystem::path m_path;

    std::optional<Input> m_input;
    av::FilterGraphPtr m_graph;
    AVFilterContext* m_source = nullptr; ///< Belongs to the graph.
    AVFilterContext* m_sink = nullptr;   ///< Belongs to the graph.
    av::FramePtr m_frame;
    std::int64_t m_lastDuration = 0;
};

} // namespace boxlift::media
