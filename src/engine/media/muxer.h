#pragma once

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <stop_token>
#include <vector>

#include "engine/media/av/handles.h"
#include "engine/media/av/io.h"
#include "engine/media/expected_samples.h"
#include "engine/media/file_system.h"
#include "engine/media/index_changes.h"
#include "engine/media/index_placer.h"
#include "engine/media/output_file.h"
#include "engine/media/sample_gatherer.h"
#include "engine/media/time.h"
#include "model/file_type.h"

namespace boxlift::media {

/// Writes one MPEG-4 family file: add streams, write the header, write packets, finish. Nothing
/// stands under the output's name before finish() has succeeded; destroyed before that, nothing is
/// left. One thread at a time, except where said. All but the destructor throw media::Error, or
/// Cancelled when the token asks.
class Muxer {
public:
    Muxer(const OutputPlace& output, FileType type, IndexPlace index, std::stop_token stop);
    ~Muxer();
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    // Before the header.
    /// A new stream, to be filled in by the caller: parameters (codec tag zero unless one is
    /// wanted), time base, rates, dispositions, metadata.
    AVStream& addStream();
    /// Where the last thing that a stream shows ends, when that is less than all of its media.
    void setShownEnd(int stream, Time end) { m_shownEnds[stream] = end; }
    /// Names a stream's samples by a code that the library does not write by itself.
    void setEntryName(int stream, FourCharCode name) { m_entryNames[stream] = name; }
    /// What is known of a stream's samples. Where it is of all streams, and the file is large, room
    /// is left for an index in front, so that the media need not be moved to make it.
    void expect(int stream, const ExpectedSamples& samples) { m_expected[stream] = samples; }
    /// Keeps memory low where a stream has very many samples; see SampleGatherer for which ones it
    /// may have.
    void gatherSamples(int stream) { m_gatherers[stream]; }
    /// Carries over what belongs to the file as a whole: titles, dates, places and chapters, and
    /// the cover art where the type can hold it. `start` is the time in the source that becomes
    /// zero.
    void copyFileMetadata(const AVFormatContext& source, Time start);
    void writeHeader();

    // After the header.
    /// Writes a packet with `packet.stream_index` of ours and time stamps in that stream's time
    /// base (as the header has left it), interleaving by decoding time. Takes over the packet's
    /// reference.
    void write(AVPacket& packet);
    /// Writes the index, moves the media out of its way where it must, brings all to the disk and
    /// gives the file its name. The last act.
    void finish();
    /// Whether the room that has been left for the index is certain to do.
    bool isRoomCertain() const;
    /// Bytes that have been written to the file so far, counting what was written twice as two.
    std::int64_t bytesWritten() const { return m_file->bytesWritten(); }

    AVStream& stream(int index) { return *m_context->streams[index]; }
    FileType type() const { return m_type; }
    /// Any thread. How much of finish()'s moving of data is done, 0 to 1.
    double finishedFraction() const { return m_finishedFraction.load(); }

private:
    void fail(int code, std::string_view what);
    void addPictures(const AVFormatContext& source);
    void writePictures();
    void collectTrackChanges();
    void leaveRoom();
    void writeNow(AVPacket& packet);
    void writeTrailer();
    std::map<std::uint32_t, SampleRuns> takeGathered();

    FileType m_type;
    IndexPlace m_index;
    std::stop_token m_stop;
    std::unique_ptr<OutputFile> m_file;
    av::OutputIo m_io;
    av::OutputContextPtr m_context;
    /// Cover art that waits for the header.
    std::vector<av::PacketPtr> m_pictures;
    std::map<int, Time> m_shownEnds;
    std::map<int, FourCharCode> m_entryNames;
    std::map<int, ExpectedSamples> m_expected;
    std::map<int, SampleGatherer> m_gatherers;
    IndexChanges m_changes;
    /// Bytes at the beginning of the file that wait for the index.
    std::int64_t m_room = 0;
    std::atomic<double> m_finishedFraction = 0;
};

/// Whether files of this type call this codec's samples by this tag.
bool knowsTag(FileType type, AVCodecID codec, std::uint32_t tag);

/// Whether a header for these streams can be written into a file of this type: the muxer's own
/// word, from a try in memory. `streams` are templates: nothing of them is changed.
bool canMux(FileType type, std::span<const AVStream* const> streams);

} // namespace boxlift::media
