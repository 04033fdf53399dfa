#pragma once

#include <array>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "support/media_spec.h"
#include "support/temp_folder.h"

namespace boxlift::test {

/// A way to an output that takes long enough for something to happen meanwhile.
struct LongWay {
    const char* name;
    MediaSpec (*source)();
    Target target;
    SizeOption size;

    static std::string nameOf(const testing::TestParamInfo<LongWay>& info) {
        return info.param.name;
    }
    /// What the list of tests shows.
    friend void PrintTo(const LongWay& way, std::ostream* out) { *out << way.name; }
};

MediaSpec soundToCopy(double seconds);
MediaSpec filmToEncode(double seconds);
MediaSpec songToTranscode(double seconds);

inline constexpr std::array longWays{
    LongWay{"Copy", [] { return soundToCopy(40); }, Target::mov, SizeOption::original},
    LongWay{"Encode", [] { return filmToEncode(8); }, Target::mp4, SizeOption::p720},
    LongWay{"Transcode", [] { return songToTranscode(60); }, Target::aac, SizeOption::original},
};

/// So long that several stretches of the sound are encoded at the same time, given two cores.
inline constexpr double joinedSeconds = 145;
inline constexpr LongWay joinedWay{"TranscodeJoined", [] { return songToTranscode(joinedSeconds); },
                                   Target::aac, SizeOption::original};

/// For what needs no more than to come between the beginning and the end.
inline constexpr std::array shorterWays{
    LongWay{"Copy", [] { return soundToCopy(8); }, Target::mov, SizeOption::original},
    LongWay{"Encode", [] { return filmToEncode(1); }, Target::mp4, SizeOption::p720},
    LongWay{"Transcode", [] { return songToTranscode(8); }, Target::aac, SizeOption::original},
};

/// One long conversion into a folder of its own; in the end the source must be what it was, unless
/// the test says otherwise.
class LongConversion : public testing::TestWithParam<LongWay> {
protected:
    void SetUp() override;
    void TearDown() override;

    TempFolder m_folder;
    std::filesystem::path m_source;
    std::filesystem::path m_out;
    std::string m_contents;
    ConversionRequest m_request;
};

} // namespace boxlift::test
