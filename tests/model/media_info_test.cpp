#include "model/media_info.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

namespace boxlift {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

MediaInfo videoOnly() {
    return {true, false, fourCharCode("avc1"), std::nullopt, 640, 360, 0};
}

MediaInfo audioOnly(FourCharCode codec, double duration) {
    return {false, true, std::nullopt, codec, 0, 0, duration};
}

MediaInfo filmOf95Seconds() {
    return {true, true, fourCharCode("avc1"), fourCharCode("aac "), 1280, 720, 95.4};
}

TEST(MediaInfo, StartsWithNothingInIt) {
    const MediaInfo info;
    EXPECT_FALSE(info.hasVideo);
    EXPECT_FALSE(info.hasAudio);
    EXPECT_EQ(info.videoCodec, std::nullopt);
    EXPECT_EQ(info.audioCodec, std::nullopt);
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.height, 0);
    EXPECT_EQ(info.duration, 0.0);
}

TEST(MediaInfo, EqualsAnotherWhenEveryFieldDoes) {
    EXPECT_EQ(filmOf95Seconds(), filmOf95Seconds());
    MediaInfo other = filmOf95Seconds();
    other.audioCodec = fourCharCode("alac");
    EXPECT_NE(other, filmOf95Seconds());
}

TEST(MediaInfoFourCC, ShowsTheFourCharacters) {
    EXPECT_EQ(MediaInfo::fourCC(0x61766331U), "avc1");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode(".mp3")), ".mp3");
}

TEST(MediaInfoFourCC, IsUnknownForAnAbsentCode) {
    EXPECT_EQ(MediaInfo::fourCC(std::nullopt), "unknown");
}

TEST(MediaInfoFourCC, TrimsSpacesAndTabsFromBothEnds) {
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("aac ")), "aac");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode(" \tab")), "ab");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("\ta \t")), "a");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("a \tb")), "a \tb");
}

TEST(MediaInfoFourCC, IsEmptyForACodeOfBlanks) {
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("    ")), "");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("\t \t ")), "");
}

TEST(MediaInfoFourCC, KeepsLineBreaksAndNoBreakSpacesAtTheEnds) {
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("\nab\r")), "\nab\r");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("\vab\f")), "\vab\f");
    EXPECT_EQ(MediaInfo::fourCC(fourCharCode("\xCA"
                                             "ab\xCA")),
              "\u00A0ab\u00A0");
}

TEST(MediaInfoFourCC, ShowsMacRomanCharactersAboveAscii) {
    EXPECT_EQ(MediaInfo::fourCC(0x80A9DBF0U), "Ä©€\uF8FF");
    EXPECT_EQ(MediaInfo::fourCC(0xFFFFFFFFU), "ˇˇˇˇ");
}

TEST(MediaInfoFourCC, KeepsZeroBytes) {
    EXPECT_EQ(MediaInfo::fourCC(0U), std::string(4, '\0'));
    EXPECT_EQ(MediaInfo::fourCC(0x00000002U), std::string("\0\0\0\2", 4));
}

struct NamedCode {
    FourCharCode code;
    std::string_view name;
};

TEST(MediaInfoVideoName, NamesTheKnownCodes) {
    constexpr NamedCode rows[] = {
        {0x61766331U, "H.264"},  {0x68766331U, "HEVC"},   {0x6A706567U, "MJPEG"},
        {0x61706368U, "ProRes"}, {0x6170636EU, "ProRes"}, {0x6170636FU, "ProRes"},
        {0x61706373U, "ProRes"}, {0x61703468U, "ProRes"},
    };
    for (const NamedCode& row : rows)
        EXPECT_EQ(MediaInfo::videoName(row.code), row.name) << MediaInfo::fourCC(row.code);
}

TEST(MediaInfoVideoName, ShowsAnyOtherCodeAsItIs) {
    constexpr NamedCode rows[] = {
        {fourCharCode("hev1"), "hev1"}, {fourCharCode("ap4x"), "ap4x"},
        {fourCharCode("aprh"), "aprh"}, {fourCharCode("avc3"), "avc3"},
        {fourCharCode("AVC1"), "AVC1"}, {fourCharCode("rle "), "rle"},
        {fourCharCode("aac "), "aac"},
    };
    for (const NamedCode& row : rows)
        EXPECT_EQ(MediaInfo::videoName(row.code), row.name);
}

TEST(MediaInfoVideoName, IsVideoForAnAbsentCode) {
    EXPECT_EQ(MediaInfo::videoName(std::nullopt), "Video");
}

TEST(MediaInfoAudioName, NamesTheKnownCodes) {
    constexpr NamedCode rows[] = {
        {0x61616320U, "AAC"}, {0x616C6163U, "ALAC"}, {0x666C6163U, "FLAC"},
        {0x6C70636DU, "PCM"}, {0x2E6D7033U, "MP3"},
    };
    for (const NamedCode& row : rows)
        EXPECT_EQ(MediaInfo::audioName(row.code), row.name) << MediaInfo::fourCC(row.code);
}

TEST(MediaInfoAudioName, ShowsAnyOtherCodeAsItIs) {
    constexpr NamedCode rows[] = {
        {fourCharCode("ac-3"), "ac-3"}, {fourCharCode("opus"), "opus"},
        {fourCharCode("aach"), "aach"}, {fourCharCode("AAC "), "AAC"},
        {fourCharCode("mp3 "), "mp3"},  {fourCharCode("avc1"), "avc1"},
    };
    for (const NamedCode& row : rows)
        EXPECT_EQ(MediaInfo::audioName(row.code), row.name);
}

TEST(MediaInfoAudioName, IsAudioForAnAbsentCode) {
    EXPECT_EQ(MediaInfo::audioName(std::nullopt), "Audio");
}

struct FormattedDuration {
    double seconds;
    std::string_view text;
};

TEST(MediaInfoFormat, ShowsMinutesAndSecondsBelowAnHour) {
    constexpr FormattedDuration rows[] = {
        {0, "0:00"},    {1, "0:01"},     {9, "0:09"},     {10, "0:10"},  {59, "0:59"},
        {60, "1:00"},   {61, "1:01"},    {95.4, "1:35"},  {599, "9:59"}, {600, "10:00"},
        {754, "12:34"}, {3540, "59:00"}, {3599, "59:59"}, {0.4, "0:00"},
    };
    for (const FormattedDuration& row : rows)
        EXPECT_EQ(MediaInfo::format(row.seconds), row.text) << row.seconds;
}

TEST(MediaInfoFormat, ShowsHoursUnpaddedAndUnlimited) {
    constexpr FormattedDuration rows[] = {
        {3600, "1:00:00"},   {3661, "1:01:01"},     {7199, "1:59:59"},
        {36000, "10:00:00"}, {360000, "100:00:00"}, {3600000000.0, "1000000:00:00"},
    };
    for (const FormattedDuration& row : rows)
        EXPECT_EQ(MediaInfo::format(row.seconds), row.text) << row.seconds;
}

TEST(MediaInfoFormat, RoundsHalvesAwayFromZero) {
    constexpr FormattedDuration rows[] = {
        {0.5, "0:01"},
        {1.5, "0:02"},
        {2.5, "0:03"},
        {2.4999, "0:02"},
        {59.4, "0:59"},
        {59.5, "1:00"},
        {0.49999999999999994, "0:00"},
    };
    for (const FormattedDuration& row : rows)
        EXPECT_EQ(MediaInfo::format(row.seconds), row.text) << row.seconds;
}

TEST(MediaInfoFormat, RoundsBeforeItAsksForTheHour) {
    EXPECT_EQ(MediaInfo::format(3599.4), "59:59");
    EXPECT_EQ(MediaInfo::format(3599.5), "1:00:00");
}

TEST(MediaInfoSummary, JoinsPiecesWithAMiddleDot) {
    EXPECT_EQ(filmOf95Seconds().summary(), "H.264 1280×720 · AAC · 1:35");
    EXPECT_EQ(filmOf95Seconds().summary(), "H.264 1280\xC3\x97"
                                           "720 \xC2\xB7 AAC \xC2\xB7 1:35");
}

TEST(MediaInfoSummary, IsTheVideoPieceAloneWithoutAudioAndDuration) {
    EXPECT_EQ(videoOnly().summary(), "H.264 640×360");
}

TEST(MediaInfoSummary, ShowsAnUnrecognisedAudioCode) {
    EXPECT_EQ(audioOnly(fourCharCode("ac-3"), 30).summary(), "ac-3 · 0:30");
}

TEST(MediaInfoSummary, NamesTracksWithoutACode) {
    const MediaInfo info{true, true, std::nullopt, std::nullopt, 4, 2, 0};
    EXPECT_EQ(info.summary(), "Video 4×2 · Audio");
}

TEST(MediaInfoSummary, LeavesOutWhatTheFileHasNot) {
    MediaInfo info = filmOf95Seconds();
    info.hasVideo = false;
    EXPECT_EQ(info.summary(), "AAC · 1:35");
    info.hasAudio = false;
    EXPECT_EQ(info.summary(), "1:35");
    info.duration = 0;
    EXPECT_EQ(info.summary(), "");
}

TEST(MediaInfoSummary, LeavesOutADurationThatTellsNothing) {
    for (const double duration : {0.0, -0.0, -1.0, -infinity, infinity, notANumber, -notANumber})
        EXPECT_EQ(audioOnly(fourCharCode("aac "), duration).summary(), "AAC") << duration;
}

TEST(MediaInfoSummary, KeepsAShortDurationThatRoundsToNothing) {
    EXPECT_EQ(audioOnly(fourCharCode("aac "), 0.001).summary(), "AAC · 0:00");
}

TEST(MediaInfoSummary, KeepsTheSeparatorOfAnEmptyName) {
    EXPECT_EQ(audioOnly(fourCharCode("    "), 30).summary(), " · 0:30");
}

/// Groups digits in threes and writes a decimal comma, process-wide, while it lives.
class GroupingLocale {
public:
    GroupingLocale() : m_previous(std::locale::global(std::locale({}, new Punctuation))) {}
    ~GroupingLocale() { std::locale::global(m_previous); }
    GroupingLocale(const GroupingLocale&) = delete;
    GroupingLocale& operator=(const GroupingLocale&) = delete;

private:
    struct Punctuation : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale m_previous;
};

TEST(MediaInfoSummary, DoesNotFollowTheLocale) {
    const GroupingLocale locale;
    std::ostringstream control;
    control << 1920;
    ASSERT_EQ(control.str(), "1.920") << "the locale under test is not in force";

    MediaInfo info = filmOf95Seconds();
    info.width = 1920;
    info.height = 1080;
    info.duration = 36000000;
    EXPECT_EQ(info.summary(), "H.264 1920×1080 · AAC · 10000:00:00");
}

} // namespace
} // namespace boxlift
