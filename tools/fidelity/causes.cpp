#include "fidelity/causes.h"

#include <algorithm>
#include <array>

namespace boxlift::fidelity {

namespace {

constexpr std::array rows{
    CauseRow{"timecode", "Only QuickTime files have a use for a timecode track."},
    CauseRow{"text beside sound", "Files of sound alone hold no subtitles."},
    CauseRow{"foreign subtitles", "They are pictures or a text format that these containers cannot "
                                  "hold."},
    CauseRow{"data", "Tracks of data (sensors, hints, private streams) mean something to their "
                     "maker's software alone; the library writes none of them."},
    CauseRow{"odd picture", "Only PNG and JPEG that can be read can be cover art."},
    CauseRow{"chapters behind the end", "A mark behind the end would make the file longer."},
    CauseRow{"numbered key", "A number must be stored in the form that it had, which the library "
                             "does not tell."},
    CauseRow{"key of one program", "It means something to the program that wrote it alone."},
    CauseRow{"private tag", "Bytes of one program in an ID3 tag."},
    CauseRow{"odd date", "It is no date, one without a day, or the beginning of the computer's "
                         "time, which stands for none."},
    CauseRow{"odd number", "A track or disc number that is none."},
    CauseRow{"short language", "Only codes of three letters can be stored."},
    CauseRow{"stretching matrix", "The pictures are stretched or shrunk by the turn's matrix; an "
                                  "encoding has square pixels and the turn alone."},
    CauseRow{"mixed tracks", "The audio targets give one track when they encode: all are mixed."},
    CauseRow{"mixed channels", "The audio targets give stereo when they encode."},
    CauseRow{"sample rate", "The audio targets give 44.1 kHz when they encode."},
    CauseRow{"folded channels", "An encoding has at most 5.1 channels."},
    CauseRow{"high sample rate", "An encoding has at most 48 kHz."},
};

} // namespace

std::span<const CauseRow> causes() {
    return rows;
}

const CauseRow* reasonFor(std::string_view cause) {
    const auto row = std::ranges::find(rows, cause, &CauseRow::cause);
    return row == rows.end() ? nullptr : &*row;
}

} // namespace boxlift::fidelity
