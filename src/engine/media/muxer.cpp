#include "engine/media/muxer.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>

#include "engine/media/av/check.h"
#include "engine/media/av/log.h"
#include "engine/media/dolby_vision.h"
#include "engine/media/extra_metadata.h"
#include "engine/media/file_metadata.h"
#include "engine/media/index_room.h"
#include "engine/media/spherical.h"
#include "engine/media/stream_copy.h"
#include "model/cancelled.h"

namespace boxlift::media {

namespace {

/// Moving the media of a file of this size costs next to nothing; waste in it would show.
constexpr std::int64_t smallFile = 8 << 20;
constexpr std::int64_t pageSize = 4096;

struct FormatRow {
    FileType type;
    const char* muxer;
};

constexpr std::array formats{
    FormatRow{FileType::AVFileTypeMPEG4, "mp4"},
    FormatRow{FileType::AVFileTypeQuickTimeMovie, "mov"},
    FormatRow{FileType::AVFileTypeAppleM4A, "ipod"},
};

const char* muxerName(FileType type) {
    for (const FormatRow& row : formats)
        if (row.type == type)
            return row.muxer;
    return formats.front().muxer;
}

av::OutputContextPtr makeContext(FileType type) {
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, muxerName(type), nullptr) < 0)
        throw std::bad_alloc();
    // Extensions that everybody reads, such as the Dolby Vision configuration, count as unofficial.
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    return av::OutputContextPtr(context);
}

AVStream& newStream(AVFormatContext& context) {
    AVStream* stream = avformat_new_stream(&context, nullptr);
    if (!stream)
        throw std::bad_alloc();
    return *stream;
}

/// Edits are counted in the movie's time scale; the usual 1000 would round them to milliseconds.
int movieTimescale(const AVFormatContext& context) {
    for (const AVStream* stream : std::span(context.streams, context.nb_streams))
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO && stream->codecpar->sample_rate > 0)
            return stream->codecpar->sample_rate;
    return 90000;
}

void setHeaderOptions(av::Options& options, FileType type, int timescale) {
    // Nero's chapter list beside QuickTime's chapter track upsets tag editors.
    options.set("movflags", "+disable_chpl");
    // From a stream's "timecode" the muxer makes a track; only QuickTime has a use for it.
    options.set("write_tmcd", type == FileType::AVFileTypeQuickTimeMovie ? "auto" : "0");
    options.set("movie_timescale", timescale);
}

/// The muxer numbers its tracks from 1.
std::uint32_t trackNumber(int stream) {
    return static_cast<std::uint32_t>(stream) + 1;
}

/// Discards the result of a dynamic buffer.
void dropBuffer(AVIOContext* io) {
    std::uint8_t* bytes = nullptr;
    avio_close_dyn_buf(io, &bytes);
    av_free(bytes);
}

} // namespace

Muxer::Muxer(const OutputPlace& output, FileType type, IndexPlace index, std::stop_token stop)
    : m_type(type), m_index(index), m_stop(std::move(stop)), m_file(output.create()),
      m_io(*m_file, m_stop), m_context(makeContext(type)) {
    av::captureLog();
    m_context->pb = m_io.context();
    m_context->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_context->flush_packets = 0;
}

Muxer::~Muxer() = default;

void Muxer::fail(int code, std::string_view what) {
    throwIfStopped(m_stop);
    if (m_io.writeError())
        throwWriteError(m_io.writeError(), what, m_file->path());
    av::check(code, av::Operation::mux, what, m_file->path());
}

AVStream& Muxer::addStream() {
    return newStream(*m_context);
}

void Muxer::copyFileMetadata(const AVFormatContext& source, Time start) {
    copyMetadata(*m_context, source, start);
    addPictures(source);
    addExtraMetadata(m_changes, m_type, source);
}

void Muxer::addPictures(const AVFormatContext& source) {
    for (const AVStream* stream : std::span(source.streams, source.nb_streams)) {
        if (!canHoldPicture(m_type, *stream))
            continue;
        AVStream& copy = addStream();
        copyStreamDescription(copy, *stream);
        copy.disposition = AV_DISPOSITION_ATTACHED_PIC;
        av::PacketPtr picture(av_packet_clone(&stream->attached_pic));
        if (!picture)
            throw std::bad_alloc();
        picture->stream_index = copy.index;
        picture->pts = picture->dts = 0;
        m_pictures.push_back(std::move(picture));
    }
}

void Muxer::writeHeader() {
    collectTrackChanges();
    leaveRoom();
    av::Options options;
    setHeaderOptions(options, m_type, movieTimescale(*m_context));
    const int result = avformat_write_header(m_context.get(), options.address());
    if (result < 0)
        fail(result, "write header");
    writePictures();
}

void Muxer::collectTrackChanges() {
    for (AVStream* stream : std::span(m_context->streams, m_context->nb_streams)) {
        IndexChanges::Track track;
        track.id = trackNumber(stream->index);
        if (const auto end = m_shownEnds.find(stream->index); end != m_shownEnds.end())
            track.shownEnd = end->second;
        if (const auto name = m_entryNames.find(stream->index); name != m_entryNames.end())
            track.entryName = name->second;
        const auto* language = av_dict_get(stream->metadata, "language", nullptr, 0);
        // Into QuickTime files the muxer writes only those of an old list.
        if (language && m_type == FileType::AVFileTypeQuickTimeMovie)
            track.language = language->value;
        // Of QuickTime files it leaves out what MPEG-4 files are given.
        if (m_type == FileType::AVFileTypeQuickTimeMovie)
            track.sampleEntry = dolby_vision::configurationBox(*stream);
        box_bytes::put(track.sampleEntry, spherical::takeDescription(*stream));
        if (!track.empty())
            m_changes.tracks.push_back(std::move(track));
    }
}

void Muxer::leaveRoom() {
    if (m_index == IndexPlace::end || m_expected.empty())
        return;
    std::vector<ExpectedSamples> tracks;
    std::int64_t bytes = 0;
    for (const auto& [stream, samples] : m_expected) {
        tracks.push_back(samples);
        bytes += samples.bytes;
    }
    if (bytes < smallFile)
        return;
    std::int64_t size = largestIndex(*m_context, tracks);
    for (const av::PacketPtr& picture : m_pictures)
        size += picture->size;
    size += static_cast<std::int64_t>(m_changes.largestGrowth());
    m_room = (size / pageSize + 1) * pageSize;
    avio_seek(m_io.context(), m_room, SEEK_SET);
}

bool Muxer::isRoomCertain() const {
    return m_index == IndexPlace::end ||
           (m_room > 0 && std::ranges::all_of(m_expected, [](const auto& expected) {
                return expected.second.isCertain;
            }));
}

void Muxer::writePictures() {
    for (const av::PacketPtr& picture : m_pictures)
        write(*picture);
    m_pictures.clear();
}

void Muxer::write(AVPacket& packet) {
    throwIfStopped(m_stop);
    const auto gatherer = m_gatherers.find(packet.stream_index);
    if (gatherer == m_gatherers.end())
        writeNow(packet);
    else if (const av::PacketPtr run = gatherer->second.add(packet))
        writeNow(*run);
}

void Muxer::writeNow(AVPacket& packet) {
    const int result = av_interleaved_write_frame(m_context.get(), &packet);
    if (result < 0 || m_io.writeError())
        fail(std::min(result, 0), "write media");
}

void Muxer::writeTrailer() {
    for (auto& [stream, gatherer] : m_gatherers)
        if (const av::PacketPtr run = gatherer.take())
            writeNow(*run);
    int result = av_interleaved_write_frame(m_context.get(), nullptr);
    avio_flush(m_io.context());
    m_io.keepTail();
    if (result >= 0)
        result = av_write_trailer(m_context.get());
    avio_flush(m_io.context());
    m_io.finishWrites();
    if (result >= 0)
        result = m_io.context()->error;
    if (result < 0 || m_io.writeError())
        fail(result, "write index");
}

std::map<std::uint32_t, SampleRuns> Muxer::takeGathered() {
    std::map<std::uint32_t, SampleRuns> gathered;
    for (auto& [stream, gatherer] : m_gatherers)
        if (SampleRuns samples = gatherer.takeSamples(); !samples.runs.empty())
            gathered[trackNumber(stream)] = std::move(samples);
    return gathered;
}

void Muxer::finish() {
    writeTrailer();
    const std::int64_t end = m_io.tailBegin();
    placeIndex(*m_file, {m_room, end, m_io.takeTail(), takeGathered()}, m_changes, m_index,
               [this](double fraction) {
                   throwIfStopped(m_stop);
                   m_finishedFraction.store(fraction);
               });
    m_file->sync();
    throwIfStopped(m_stop);
    m_file->publish();
    m_finishedFraction.store(1);
}

bool knowsTag(FileType type, AVCodecID codec, std::uint32_t tag) {
    const AVOutputFormat* format = av_guess_format(muxerName(type), nullptr, nullptr);
    return tag != 0 && format && av_codec_get_id(format->codec_tag, tag) == codec;
}

bool canMux(FileType type, std::span<const AVStream* const> streams) {
    av::captureLog();
    const av::OutputContextPtr context = makeContext(type);
    for (const AVStream* stream : streams)
        copyStreamDescription(newStream(*context), *stream);
    // Without an I/O context the muxer would crash.
    if (avio_open_dyn_buf(&context->pb) < 0)
        throw std::bad_alloc();
    av::Options options;
    const bool accepted = avformat_write_header(context.get(), options.address()) >= 0;
    dropBuffer(context->pb);
    context->pb = nullptr;
    return accepted;
}

} // namespace boxlift::media
