#include "engine/media/containers.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media::containers {

namespace {

std::set<std::string> allowed() {
    std::set<std::string> names;
    std::istringstream list(allowedDemuxers());
    for (std::string name; std::getline(list, name, ',');)
        names.insert(name);
    return names;
}

} // namespace

TEST(Containers, AllowsJustTheseDemuxers) {
    const std::set<std::string> expected{
        "mov", "mp4", "m4a",  "3gp", "3g2", "mj2", "mp3",  "aac",       "ac3",    "eac3", "flac",
        "wav", "w64", "aiff", "caf", "au",  "amr", "mpeg", "mpegvideo", "mpegts", "dv",
    };
    EXPECT_EQ(allowed(), expected);
}

TEST(Containers, NamesDemuxersThatTheLibrariesHave) {
    for (const std::string& name : allowed())
        EXPECT_NE(av_find_input_format(name.c_str()), nullptr) << name;
}

TEST(Containers, KnowsSomeByTheirFirstBytes) {
    using namespace std::string_view_literals;
    EXPECT_STREQ(demuxerOf("\0\0\0\x1c"
                           "ftypmp42"sv),
                 "mov");
    EXPECT_STREQ(demuxerOf("fLaC\0\0"sv), "flac");
    EXPECT_STREQ(demuxerOf("caff\0\1"sv), "caf");
    for (const std::string_view start : {""sv, "\0\0\0\x1c"sv,
                                         "\0\0\0\x1c"
                                         "fty"sv,
                                         "ftyp"sv, "fLa"sv, "RIFF\0\0\0\0WAVE"sv, "#EXTM3U"sv})
        EXPECT_EQ(demuxerOf(start), nullptr);
}

TEST(Containers, NamesByFirstBytesWhatItAllows) {
    for (const char* start : {"xxxxftyp", "fLaC", "caff"})
        EXPECT_TRUE(allowed().contains(demuxerOf(start))) << start;
}

TEST(Containers, KnowsWhichHeadersTellAll) {
    for (const char* name : {"mov,mp4,m4a,3gp,3g2,mj2", "wav", "w64", "aiff", "caf", "flac"})
        EXPECT_TRUE(hasFullHeader(name)) << name;
    for (const char* name :
         {"mp3", "aac", "ac3", "eac3", "au", "amr", "mpeg", "mpegvideo", "mpegts", "dv", "ogg", ""})
        EXPECT_FALSE(hasFullHeader(name)) << name;
}

} // namespace boxlift::media::containers
