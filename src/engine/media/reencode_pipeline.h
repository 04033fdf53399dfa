#pragma once

#include <atomic>
#include <memory>
#include <stop_token>
#include <vector>

#include "engine/media/bounded_queue.h"
#include "engine/media/packet_source.h"
#include "engine/media/track_transcoder.h"
#include "engine/media/video_decoder.h"
#include "engine/media/video_encoder.h"
#include "engine/media/video_filter.h"
#include "engine/media/worker_threads.h"

namespace boxlift::media {

/// Runs the tracks of a source through their codecs, on threads of its own: one reads the source;
/// each track of pictures has one that decodes, one that filters and one that encodes; each other
/// track has one. What they make comes out, mixed, at next(). Bounded queues lie between them. The
/// first failure, a stop or the destructor ends all.
class ReencodePipeline {
public:
    struct VideoStages {
        std::unique_ptr<VideoDecoder> decoder;
        std::unique_ptr<VideoFilter> filter;
        std::unique_ptr<VideoEncoder> encoder;
    };

    ReencodePipeline(PacketSource& source, std::stop_token stop);
    ~ReencodePipeline();

    // The owner's thread.
    /// Before start(). `stream` is the source's, `output` numbers the packets that come out.
    void addVideo(int stream, int output, VideoStages stages);
    void addTrack(int stream, int output, std::unique_ptr<TrackTranscoder> transcoder);
    /// From here on the source belongs to the pipeline's thread, but for what never changes.
    void start();
    /// The next packet of any track, with `stream_index` the output's number and time stamps in
    /// `timeBase(output)`; null when all tracks have ended. Throws what the first failing thread
    /// threw, Cancelled after a stop.
    av::PacketPtr next();
    AVRational timeBase(int output) const;

    /// Any thread. How much of the source has been read, 0 to 1.
    double fractionRead() const { return m_fractionRead.load(); }

private:
    using PacketQueue = BoundedQueue<av::PacketPtr>;
    using FrameQueue = BoundedQueue<av::FramePtr>;

    struct Track {
        Track(int stream, int output);
        virtual ~Track() = default;

        int stream;
        int output;
        AVRational timeBase{1, 1};
        PacketQueue packets;
    };
    struct VideoTrack : Track {
        VideoTrack(int stream, int output, VideoStages stages);

        VideoStages stages;
        FrameQueue decoded;
        FrameQueue filtered;
    };
    struct OtherTrack : Track {
        OtherTrack(int stream, int output, std::unique_ptr<TrackTranscoder> transcoder);

        std::unique_ptr<TrackTranscoder> transcoder;
    };

    void start(VideoTrack& track);
    void start(OtherTrack& track);
    void read();
    void decode(VideoTrack& track);
    void filter(VideoTrack& track);
    void encode(VideoTrack& track);
    void transcode(OtherTrack& track);
    template <typename T, typename Stage, typename Sink>
    bool pass(BoundedQueue<T>& from, Stage& through, const Sink& to);
    /// Hands a packet on to next().
    void emit(const Track& track, AVPacket& packet);
    void endTrack();
    void wakeAll();

    PacketSource& m_source;
    std::stop_token m_stop;
    std::vector<std::unique_ptr<VideoTrack>> m_videoTracks;
    std::vector<std::unique_ptr<OtherTrack>> m_otherTracks;
    std::vector<Track*> m_tracks; ///< All of them.
    PacketQueue m_encoded;
    std::atomic<std::size_t> m_running = 0;
    std::atomic<double> m_fractionRead = 0;
    WorkerThreads m_threads;
};

} // namespace boxlift::media
