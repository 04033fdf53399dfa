#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

#include "engine/media/input_file.h"
#include "engine/media/time.h"
#include "model/four_char_code.h"

namespace boxlift::media {

/// What a track's boxes say of its place on the movie's timeline and of its protection
/// (ISO/IEC 14496-12: tkhd 8.3.2, mdhd 8.4.2, stsd 8.5.2, elst 8.6.6, dref 8.7.2).
struct MovieTrack {
    std::uint32_t id = 0;
    /// Length of the media before editing; invalid when it is not told.
    Time mediaDuration;
    bool hasEdits = false;
    /// Length of the empty edits before the first that shows media.
    Time leadingGap = Time::zero();
    /// Sum of all edits; zero in fragmented files, where the edit means "all that there is".
    Time editedEnd = Time::zero();
    /// Where in the media the first edit that shows media begins.
    Time mediaStart = Time::zero();
    int mediaEdits = 0;
    std::vector<FourCharCode> sampleEntries;
    /// Whether the samples lie in another file.
    bool isElsewhere = false;
    /// Whether some samples are said to be such that decoding can begin with them, though samples
    /// behind them that are shown earlier may be broken then (`stps` in QuickTime; the group "rap "
    /// of ISO/IEC 14496-12, 10.4).
    bool hasPartialKeys = false;
};

/// The index of a QuickTime or MPEG-4 file, read with a few small reads: not the sample tables'
/// rows.
struct MovieLayout {
    bool isFragmented = false;
    std::vector<MovieTrack> tracks;

    /// Nothing when the file has no index that can be read. Never throws for bad contents;
    /// Cancelled when the token asks.
    static std::optional<MovieLayout> read(const InputFile& file, std::stop_token stop);

    /// Null when there is no such track.
    const MovieTrack* track(std::uint32_t id) const;
    /// Whether some track's samples are encrypted (FairPlay, Common Encryption).
    bool isProtected() const;
    /// Whether some track has no number that its fragments could refer to.
    bool hasUnnumberedTrack() const;
};

} // namespace boxlift::media
