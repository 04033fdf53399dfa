#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/media/audio_stretch.h"
#include "engine/media/stretch_plan.h"
#include "engine/media/worker_threads.h"

namespace boxlift::media {

/// Encodes one run of 16-bit audio as AAC-LC on all cores: stretches of it on threads of their own,
/// joined packet by packet (see Note [Joining stretches]). Throws media::Error.
class StretchedEncoder {
public:
    /// `path` for error messages.
    StretchedEncoder(const AudioEncoder::Settings& settings, const StretchPlan& plan,
                     const std::filesystem::path& path);
    ~StretchedEncoder();
    StretchedEncoder(const StretchedEncoder&) = delete;
    StretchedEncoder& operator=(const StretchedEncoder&) = delete;

    /// Starts the threads. Once, before anything is pushed.
    void start();

    // The feeding thread.
    /// Waits for room. The first buffer's position is where the run begins; the others follow one
    /// another. False when it has ended: the buffer is dropped.
    bool push(SampleBuffer buffer, std::int64_t position);
    bool isPushImmediate() const;
    /// Waits for isPushImmediate(), at most `timeout`; tells whether it holds.
    bool waitForRoom(std::chrono::milliseconds timeout);
    void close();
    /// Waits until all that was pushed before close() is encoded and has been taken, at most
    /// `timeout`; tells whether that is so, or it has ended otherwise.
    bool waitUntilTaken(std::chrono::milliseconds timeout);

    // The thread that takes the packets.
    /// The next packet in samples from the timeline's zero; waits for it. Null at the end, or after
    /// an abort. Throws what a worker threw.
    av::PacketPtr next();

    // Any thread.
    /// No more packets come, no more buffers go.
    void abort();
    /// How many samples have been encoded, on all threads together.
    std::int64_t encodedCount() const { return m_encoded.load(); }

private:
    using StretchPtr = std::shared_ptr<AudioStretch>;

    void feed(const PcmSlice& slice);
    void openStretch();
    void remember(const PcmSlice& slice);
    bool hasRoom() const { return m_isClosed || m_hasEnded || !m_isFull; }
    void work();
    av::PacketPtr nextOfStretches();
    bool isSeam(const AVPacket& packet);
    void taken(const AVPacket& packet);
    void end();
    void wakeAll();

    const AudioEncoder::Settings m_settings;
    const StretchPlan m_plan;
    const std::filesystem::path m_path;

    // The feeding thread.
    std::int64_t m_origin = 0;
    std::int64_t m_nextBegin = 0;
    /// What the next stretch will need of what has been fed already.
    std::deque<PcmSlice> m_recent;
    std::vector<StretchPtr> m_feeding;

    // The thread that takes the packets.
    StretchPtr m_current;
    StretchPtr m_following;

    // Any thread.
    std::atomic<std::int64_t> m_encoded = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::int64_t m_waiting = 0; ///< Samples that were pushed and have not been taken.
    bool m_isFull = false;
    bool m_isClosed = false;
    bool m_hasEnded = false;
    std::vector<std::weak_ptr<AudioStretch>> m_stretches;
    BoundedQueue<StretchPtr> m_forWorkers;
    BoundedQueue<StretchPtr> m_inOrder;

    WorkerThreads m_threads;
};

} // namespace boxlift::media
