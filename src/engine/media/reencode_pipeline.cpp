#include "engine/media/reencode_pipeline.h"

#include <algorithm>
#include <new>

#include "engine/media/av/check.h"
#include "model/cancelled.h"

namespace boxlift::media {

namespace {

/// Packets of one track that wait: enough for the way in which files mix their tracks.
constexpr std::size_t packetsWaiting = 48;
/// Pictures that wait: a 4K one with 10 bits takes 25 MB.
constexpr std::size_t decodedWaiting = 4;
constexpr std::size_t filteredWaiting = 2;
constexpr std::size_t encodedWaiting = 128;

av::PacketPtr takeOver(AVPacket& packet) {
    av::PacketPtr taken = av::makePacket();
    av_packet_move_ref(taken.get(), &packet);
    return taken;
}

av::FramePtr takeOver(AVFrame& frame) {
    av::FramePtr taken = av::makeFrame();
    av_frame_move_ref(taken.get(), &frame);
    return taken;
}

/// A queue that has ended refuses because all is being ended.
void requireTaken(bool wasTaken) {
    if (!wasTaken)
        throw Cancelled();
}

} // namespace

ReencodePipeline::Track::Track(int from, int to)
    : stream(from), output(to), packets(packetsWaiting) {}

ReencodePipeline::VideoTrack::VideoTrack(int from, int to, VideoStages ownStages)
    : Track(from, to), stages(std::move(ownStages)), decoded(decodedWaiting),
      filtered(filteredWaiting) {
    timeBase = stages.encoder->timeBase();
}

ReencodePipeline::OtherTrack::OtherTrack(int from, int to,
                                         std::unique_ptr<TrackTranscoder> ownTranscoder)
    : Track(from, to), transcoder(std::move(ownTranscoder)) {
    timeBase = transcoder->timeBase();
}

ReencodePipeline::ReencodePipeline(PacketSource& source, std::stop_token stop)
    : m_source(source), m_stop(std::move(stop)), m_encoded(encodedWaiting),
      m_threads([this] { wakeAll(); }) {}

ReencodePipeline::~ReencodePipeline() = default;

void ReencodePipeline::addVideo(int stream, int output, VideoStages stages) {
    m_tracks.push_back(
        m_videoTracks.emplace_back(std::make_unique<VideoTrack>(stream, output, std::move(stages)))
            .get());
}

void ReencodePipeline::addTrack(int stream, int output,
                                std::unique_ptr<TrackTranscoder> transcoder) {
    m_tracks.push_back(
        m_otherTracks
            .emplace_back(std::make_unique<OtherTrack>(stream, output, std::move(transcoder)))
            .get());
}

AVRational ReencodePipeline::timeBase(int output) const {
    const auto found = std::find_if(m_tracks.begin(), m_tracks.end(), [output](const Track* track) {
        return track->output == output;
    });
    return found == m_tracks.end() ? AVRational{1, 1} : (*found)->timeBase;
}

void ReencodePipeline::start() {
    m_running.store(m_tracks.size());
    for (const auto& track : m_videoTracks)
        start(*track);
    for (const auto& track : m_otherTracks)
        start(*track);
    m_threads.start("boxlift.read", [this] { read(); });
}

void ReencodePipeline::start(VideoTrack& track) {
    m_threads.start("boxlift.decode", [this, &track] { decode(track); });
    m_threads.start("boxlift.filter", [this, &track] { filter(track); });
    m_threads.start("boxlift.encode", [this, &track] { encode(track); });
}

void ReencodePipeline::start(OtherTrack& track) {
    m_threads.start("boxlift.track", [this, &track] { transcode(track); });
}

av::PacketPtr ReencodePipeline::next() {
    const std::stop_callback wake(m_stop, [this] { m_threads.abort(); });
    std::optional<av::PacketPtr> packet = m_encoded.pop();
    throwIfStopped(m_stop);
    if (packet)
        return std::move(*packet);
    m_threads.join();
    throwIfStopped(m_stop);
    m_threads.rethrow();
    return nullptr;
}

void ReencodePipeline::read() {
    const av::PacketPtr packet = av::makePacket();
    while (m_source.next(*packet)) {
        m_fractionRead.store(m_source.fraction(*packet));
        for (Track* track : m_tracks)
            if (track->stream == packet->stream_index) {
                requireTaken(track->packets.push(takeOver(*packet)));
                break;
            }
        av_packet_unref(packet.get());
    }
    for (Track* track : m_tracks)
        track->packets.close();
}

/// All of a queue through one stage, to its end; false when all is being ended instead.
template <typename T, typename Stage, typename Sink>
bool ReencodePipeline::pass(BoundedQueue<T>& from, Stage& through, const Sink& to) {
    while (const auto item = from.pop())
        through.push(**item, to);
    if (m_threads.isAborted())
        return false;
    through.finish(to);
    return true;
}

void ReencodePipeline::decode(VideoTrack& track) {
    const VideoDecoder::Sink sink = [&track](AVFrame& frame) {
        requireTaken(track.decoded.push(takeOver(frame)));
    };
    if (pass(track.packets, *track.stages.decoder, sink))
        track.decoded.close();
}

void ReencodePipeline::filter(VideoTrack& track) {
    const VideoFilter::Sink sink = [&track](AVFrame& frame) {
        requireTaken(track.filtered.push(takeOver(frame)));
    };
    if (pass(track.decoded, *track.stages.filter, sink))
        track.filtered.close();
}

void ReencodePipeline::encode(VideoTrack& track) {
    const VideoEncoder::Sink sink = [&](AVPacket& packet) { emit(track, packet); };
    if (pass(track.filtered, *track.stages.encoder, sink))
        endTrack();
}

void ReencodePipeline::transcode(OtherTrack& track) {
    const TrackTranscoder::Sink sink = [&](AVPacket& packet) { emit(track, packet); };
    if (pass(track.packets, *track.transcoder, sink))
        endTrack();
}

void ReencodePipeline::emit(const Track& track, AVPacket& packet) {
    packet.stream_index = track.output;
    requireTaken(m_encoded.push(takeOver(packet)));
}

void ReencodePipeline::endTrack() {
    if (m_running.fetch_sub(1) == 1)
        m_encoded.close();
}

void ReencodePipeline::wakeAll() {
    for (const auto& track : m_videoTracks) {
        track->decoded.abort();
        track->filtered.abort();
    }
    for (Track* track : m_tracks)
        track->packets.abort();
    m_encoded.abort();
}

} // namespace boxlift::media
