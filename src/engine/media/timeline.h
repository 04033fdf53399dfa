#pragma once

#include <optional>

#include "engine/media/av/demuxer.h"
#include "engine/media/movie_layout.h"
#include "engine/media/time.h"

namespace boxlift::media {

/// Where the tracks of an open container lie on its timeline, edits applied.
class Timeline {
public:
    /// Reads the movie's layout, or what the demuxer tells elsewhere. In a fragmented movie this
    /// walks over the fragments' headers: the demuxer is at the end afterwards.
    /// `layout` is that of the file, where it has been read already.
    static Timeline of(av::Demuxer& demuxer, std::stop_token stop,
                       std::optional<MovieLayout> layout = std::nullopt);

    TimeRange range(const AVStream& stream) const;
    /// Where the track's edits end what it shows; invalid where they do not say.
    Time shownEnd(const AVStream& stream) const;
    /// Whether the movie's index tells of every sample before any is read.
    bool isIndexed() const { return m_layout && !m_layout->isFragmented; }
    /// Whether a track shows several stretches of its media, one after the other.
    bool isSpliced(const AVStream& stream) const;
    /// See MovieTrack.
    bool hasPartialKeys(const AVStream& stream) const;
    /// The time at which the first track of sound or picture begins outside a movie; zero in one,
    /// whose time stamps count from its own zero.
    Time fileStart() const { return m_fileStart; }
    /// The end of the last track of sound or picture; invalid when unknown.
    Time duration() const { return m_duration; }
    /// Whether the durations are declared by the container, not guessed from bit rates or from the
    /// last time stamps.
    bool isDeclared() const { return m_isDeclared; }
    bool isProtected() const { return m_layout && m_layout->isProtected(); }

private:
    const MovieTrack* trackOf(const AVStream& stream) const;
    void readMovie(av::Demuxer& demuxer);
    void readStreams(const AVFormatContext& context);
    /// The end of the last track of sound or picture.
    Time lastEnd(const AVFormatContext& context) const;
    TimeRange movieRange(const AVStream& stream, const MovieTrack& track) const;
    TimeRange streamRange(const AVStream& stream) const;

    std::optional<MovieLayout> m_layout;
    Time m_fileStart = Time::zero();
    Time m_fileDuration;
    Time m_duration;
    bool m_isDeclared = false;
};

} // namespace boxlift::media
