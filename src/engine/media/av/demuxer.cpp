#include "engine/media/av/demuxer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>

#include "engine/media/av/check.h"
#include "engine/media/av/log.h"
#include "engine/media/containers.h"
#include "model/cancelled.h"

namespace boxlift::media::av {

namespace {

constexpr int headerBufferSize = 32 << 10;
constexpr int streamBufferSize = 1 << 20;
constexpr std::int64_t maximumStreams = 256;
constexpr auto openingTime = std::chrono::seconds(15);
/// Enough for transport streams whose sparse tracks start late.
constexpr std::int64_t probeBytes = 8 << 20;
constexpr std::int64_t probeMicroseconds = 5'000'000;

int refuseOtherFiles(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) noexcept {
    return AVERROR(EPERM);
}

bool tellsEnough(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    switch (parameters.codec_type) {
    case AVMEDIA_TYPE_VIDEO:
        return isPicture(stream) || (parameters.width > 0 && parameters.height > 0);
    case AVMEDIA_TYPE_AUDIO:
        // FLAC's header has all that there is to know, but only its parser takes it out.
        return parameters.sample_rate > 0 ||
               (parameters.codec_id == AV_CODEC_ID_FLAC && parameters.extradata_size > 0);
    default:
        return true;
    }
}

/// Spares asking every demuxer that there is; null where they have to be asked.
const AVInputFormat* obviousFormat(const InputFile& file) {
    std::array<char, 16> start{};
    const std::int64_t count = file.readAt(0, std::as_writable_bytes(std::span(start)));
    const char* name = count > 0
                           ? containers::demuxerOf({start.data(), static_cast<std::size_t>(count)})
                           : nullptr;
    return name ? av_find_input_format(name) : nullptr;
}

} // namespace

bool isPicture(const AVStream& stream) {
    return (stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS)) !=
           0;
}

const AVIndexEntry* indexEntry(const AVStream& stream, int number) {
    // The library only looks it up, but takes no constant.
    return avformat_index_get_entry(const_cast<AVStream*>(&stream), number);
}

Demuxer::Demuxer(std::shared_ptr<const InputFile> file, ProbeDepth depth, std::stop_token stop)
    : m_stop(std::move(stop)),
      m_io(std::move(file), depth == ProbeDepth::header ? headerBufferSize : streamBufferSize,
           m_stop) {}

std::unique_ptr<Demuxer> Demuxer::open(std::shared_ptr<const InputFile> file, ProbeDepth depth,
                                       std::stop_token stop) {
    captureLog();
    // What another file's opening left there would only mislead.
    takeLastLogLine();
    std::unique_ptr<Demuxer> demuxer(new Demuxer(std::move(file), depth, std::move(stop)));
    demuxer->m_io.setDeadline(Clock::now() + openingTime);
    demuxer->openContext(depth);
    demuxer->probe(depth);
    demuxer->m_io.setDeadline(Clock::time_point::max());
    return demuxer;
}

int Demuxer::interrupted(void* self) noexcept {
    return static_cast<const Demuxer*>(self)->m_io.isInterrupted();
}

void Demuxer::fail(int code, std::string_view what) const {
    throwIfStopped(m_stop);
    if (m_io.readError())
        check(AVERROR(m_io.readError()), Operation::read, what, path());
    // An interruption that nobody asked for is the deadline.
    check(code == AVERROR_EXIT ? AVERROR_INVALIDDATA : code, Operation::open, what, path());
}

void Demuxer::openContext(ProbeDepth depth) {
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        throw std::bad_alloc();
    context->pb = m_io.context();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    // Not with AVFMT_FLAG_NOFILLIN, though the library wants both together: what a movie's index
    // leaves out of the pictures' lengths is still to be filled in, which needs no parser.
    if (depth == ProbeDepth::index)
        context->flags |= AVFMT_FLAG_NOPARSE;
    context->io_open = refuseOtherFiles;
    context->interrupt_callback = {&Demuxer::interrupted, this};
    context->probesize = probeBytes;
    context->max_analyze_duration = probeMicroseconds;

    Options options;
    options.set("format_whitelist", containers::allowedDemuxers().c_str());
    options.set("max_streams", maximumStreams);
    const int result =
        avformat_open_input(&context, nullptr, obviousFormat(m_io.file()), options.address());
    if (result < 0)
        fail(result, "open source"); // The context has been freed.
    m_context.reset(context);
}

void Demuxer::probe(ProbeDepth depth) {
    if (depth != ProbeDepth::streams && headerTellsAll())
        return;
    const int result = avformat_find_stream_info(m_context.get(), nullptr);
    if (result < 0 || m_stop.stop_requested())
        fail(std::min(result, 0), "probe source");
}

bool Demuxer::headerTellsAll() const {
    if (!containers::hasFullHeader(m_context->iformat->name))
        return false;
    const std::span streams(m_context->streams, m_context->nb_streams);
    const bool known = std::all_of(streams.begin(), streams.end(),
                                   [](const AVStream* stream) { return tellsEnough(*stream); });
    // A movie's own index tells its length; see MovieLayout.
    const bool timed = isMovie() || std::all_of(streams.begin(), streams.end(), [](auto* stream) {
                           return isPicture(*stream) || stream->duration != AV_NOPTS_VALUE;
                       });
    return known && timed;
}

bool Demuxer::isMovie() const {
    return std::strncmp(m_context->iformat->name, "mov,", 4) == 0;
}

bool Demuxer::read(AVPacket& packet) {
    throwIfStopped(m_stop);
    const int result = av_read_frame(m_context.get(), &packet);
    if (result >= 0)
        return true;
    throwIfStopped(m_stop);
    if (m_io.readError())
        check(AVERROR(m_io.readError()), Operation::read, "read source", path());
    if (result == AVERROR_EOF)
        return false;
    check(result, Operation::read, "read source", path());
    return false;
}

} // namespace boxlift::media::av
