#pragma once

#include <memory>
#include <set>
#include <stop_token>
#include <vector>

#include "engine/media/av/demuxer.h"
#include "engine/media/selection.h"
#include "engine/media/timeline.h"

namespace boxlift::media {

/// The packets of a selection, in the file's order, with clean time stamps: the file's start is
/// removed once, jumps of broadcast streams are closed. One thread. Throws media::Error, and
/// Cancelled when the token asks.
class PacketSource {
public:
    PacketSource(const Selection& selection, std::stop_token stop);

    const AVFormatContext& context() const { return m_demuxer->context(); }
    const AVStream& stream(int index) const { return *context().streams[index]; }
    const std::filesystem::path& path() const { return m_demuxer->path(); }
    /// Bytes.
    std::int64_t fileSize() const { return m_demuxer->file()->size(); }
    bool isMovie() const { return m_demuxer->isMovie(); }
    /// The time in the file that becomes zero.
    Time start() const { return m_start; }
    /// Where a stream lies on the asset's timeline.
    const TimeRange& range(int stream) const { return m_ranges[static_cast<std::size_t>(stream)]; }
    /// Where its edits end what a stream shows; invalid where they do not say.
    Time shownEnd(int stream) const { return m_shownEnds[static_cast<std::size_t>(stream)]; }
    /// Whether the streams' indexes tell of every packet.
    bool isIndexed() const { return m_isIndexed; }
    Time duration() const { return m_duration; }
    /// Whether a stream is put together from several stretches of its media.
    bool isSpliced(int stream) const;
    /// Numbers of the streams that are neither sound nor picture nor chapters.
    std::vector<int> otherStreams() const;
    /// Whether the durations are the container's own word.
    bool isDeclared() const { return m_isDeclared; }

    /// Takes a stream's packets in, besides those of the selection.
    void select(int stream);
    /// Leaves a stream of the selection out.
    void ignore(int stream);
    /// From here on the samples of a movie come as its index describes them, where that says enough
    /// of those that are taken; returns whether it does. Before the first packet, and after the
    /// last select() or ignore(). Not for decoding.
    bool trustIndex(std::stop_token stop);
    /// The next packet, in its stream's time base; false at the end.
    bool next(AVPacket& packet);
    /// How much of the file has been read when `packet` is the last that came, 0 to 1: by time
    /// where the duration is declared, else by position.
    double fraction(const AVPacket& packet) const;

private:
    struct StreamState {
        Time expected;            ///< Where the next packet should begin; invalid before the first.
        Time jump = Time::zero(); ///< What its clock's jumps have added up to so far.
        bool isTaken = false;
    };

    void readTimeline(const Selection& selection, std::stop_token stop);
    void take(const Timeline& timeline, const AVFormatContext& context);
    Time movieStart() const;
    std::vector<int> takenStreams() const;
    std::unique_ptr<av::Demuxer> openUnparsed(std::stop_token stop) const;
    bool isReadAlike(const AVFormatContext& other) const;
    void closeJumps(const AVPacket& packet, StreamState& state);
    void shift(AVPacket& packet, Time jump) const;

    std::unique_ptr<av::Demuxer> m_demuxer;
    /// Where packets come from instead once the index is trusted; else null.
    std::unique_ptr<av::Demuxer> m_reader;
    std::vector<TimeRange> m_ranges;
    std::vector<Time> m_shownEnds;
    std::vector<StreamState> m_states;
    std::vector<int> m_spliced;
    std::set<int> m_partialKeys;
    std::set<int> m_chapterTexts;
    Time m_duration;
    Time m_start = Time::zero();
    /// What jumps have added up to in the stream that is furthest.
    Time m_jump = Time::zero();
    bool m_isDeclared = false;
    bool m_isIndexed = false;
};

} // namespace boxlift::media
