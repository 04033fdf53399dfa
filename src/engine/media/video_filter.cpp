#include "engine/media/video_filter.h"

#include <new>
#include <utility>

#include "engine/media/av/check.h"
#include "engine/media/av/compat.h"
#include "engine/media/video_filter_chain.h"

namespace boxlift::media {

namespace {

/// Frames carry these for displays of high dynamic range; encoders would pass them on.
constexpr AVFrameSideDataType highRangeData[] = {
    AV_FRAME_DATA_MASTERING_DISPLAY_METADATA,
    AV_FRAME_DATA_CONTENT_LIGHT_LEVEL,
    AV_FRAME_DATA_DYNAMIC_HDR_PLUS,
    AV_FRAME_DATA_DOVI_RPU_BUFFER,
    AV_FRAME_DATA_DOVI_METADATA,
};

template <typename T>
T& notNull(T* object) {
    if (!object)
        throw std::bad_alloc();
    return *object;
}

struct SourceParametersDeleter {
    void operator()(AVBufferSrcParameters* parameters) const { av_free(parameters); }
};

} // namespace

VideoFilter::VideoFilter(PictureSize size, const VideoColour& tags, AVRational timeBase,
                         const std::filesystem::path& path)
    : m_size(size), m_tags(tags), m_timeBase(timeBase), m_path(path), m_frame(av::makeFrame()) {}

int VideoFilter::check(int result, const char* what) const {
    return av::check(result, av::Operation::filter, what, m_path);
}

VideoFilter::Input VideoFilter::describe(const AVFrame& frame) const {
    Input input;
    input.format = static_cast<AVPixelFormat>(frame.format);
    input.size = {frame.width, frame.height};
    input.colour = VideoColour::of(frame).completedBy(m_tags);
    if (input.colour.isHighRange())
        input.colour = completedHighRange(input.colour, input.format);
    // Once there are fields the deinterlacer stays: it lets whole pictures pass.
    input.isInterlaced = av::isInterlaced(frame) || (m_input && m_input->isInterlaced);
    return input;
}

void VideoFilter::push(AVFrame& frame, const Sink& sink) {
    const Input input = describe(frame);
    if (!m_input || *m_input != input) {
        finish(sink);
        build(input);
    }
    input.colour.applyTo(frame);
    m_lastDuration = av::frameDuration(frame);
    check(av_buffersrc_add_frame(m_source, &frame), "filter pictures");
    receive(sink);
}

void VideoFilter::finish(const Sink& sink) {
    if (!m_graph)
        return;
    check(av_buffersrc_add_frame(m_source, nullptr), "finish filtering");
    receive(sink);
    m_graph.reset();
}

void VideoFilter::build(const Input& input) {
    m_graph.reset(avfilter_graph_alloc());
    notNull(m_graph.get());
    addSource(input);
    addChain(filterChain({input.format, input.size, input.colour, input.isInterlaced}, m_size));
    check(avfilter_graph_config(m_graph.get(), nullptr), "configure filters");
    m_input = input;
}

void VideoFilter::addSource(const Input& input) {
    m_source =
        &notNull(avfilter_graph_alloc_filter(m_graph.get(), avfilter_get_by_name("buffer"), "in"));
    const std::unique_ptr<AVBufferSrcParameters, SourceParametersDeleter> parameters(
        av_buffersrc_parameters_alloc());
    notNull(parameters.get());
    parameters->format = input.format;
    parameters->width = input.size.width;
    parameters->height = input.size.height;
    parameters->time_base = m_timeBase;
    av::setSourceColour(*parameters, input.colour.matrix, input.colour.range);
    check(av_buffersrc_parameters_set(m_source, parameters.get()), "describe pictures");
    check(avfilter_init_str(m_source, nullptr), "start filters");
}

void VideoFilter::addChain(const std::string& chain) {
    check(avfilter_graph_create_filter(&m_sink, avfilter_get_by_name("buffersink"), "out", nullptr,
                                       nullptr, m_graph.get()),
          "start filters");
    AVFilterInOut* from = avfilter_inout_alloc();
    AVFilterInOut* to = avfilter_inout_alloc();
    av::FilterInOutPtr fromOwner(from);
    av::FilterInOutPtr toOwner(to);
    notNull(from).name = av_strdup("in");
    from->filter_ctx = m_source;
    notNull(to).name = av_strdup("out");
    to->filter_ctx = m_sink;
    AVFilterInOut* inputs = toOwner.release();
    AVFilterInOut* outputs = fromOwner.release();
    const int result =
        avfilter_graph_parse_ptr(m_graph.get(), chain.c_str(), &inputs, &outputs, nullptr);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    check(result, "parse filters");
}

void VideoFilter::receive(const Sink& sink) {
    const AVRational timeBase = av_buffersink_get_time_base(m_sink);
    const VideoColour colour = encodedColour(m_input->colour, m_input->format, m_size);
    for (;;) {
        const av::FrameUnref guard{*m_frame};
        const int result = av_buffersink_get_frame(m_sink, m_frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result, "filter pictures");
        if (m_frame->pts != AV_NOPTS_VALUE)
            m_frame->pts = av_rescale_q(m_frame->pts, timeBase, m_timeBase);
        av::setFrameDuration(*m_frame, m_lastDuration);
        colour.applyTo(*m_frame);
        if (m_input->colour.isHighRange())
            for (const AVFrameSideDataType type : highRangeData)
                av_frame_remove_side_data(m_frame.get(), type);
        sink(*m_frame);
    }
}

} // namespace boxlift::media
