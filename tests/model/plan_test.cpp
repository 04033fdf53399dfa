#include "model/plan.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>

namespace boxlift {
namespace {

constexpr auto boxlift = Mode::boxlift;
constexpr auto reencode = Mode::reencode;

/// What is asked, as words of the table below.
struct Question {
    std::string_view target;
    std::string_view size;
    std::string_view hasVideo;
    std::string_view videoCodec;
    std::string_view hasAudio;
    std::string_view removeAudio;
    std::string_view audioCodec;
};

/// A question whose "*" stand for anything, and its answer.
struct Row {
    Question question;
    Mode mode;
    std::string_view detail;
};

constexpr std::string_view compatible = "H.264 and AAC already compatible, no quality loss";
constexpr std::string_view copied = "Tracks copied into a MOV, no quality loss";

// The first row that fits gives the answer. "-" is an absent code.
constexpr std::array table{
    // target, size, video and its code, audio, removed, and its code
    Row{{"aac", "*", "*", "*", "*", "*", "*"}, reencode, "Audio encoded to AAC at 128 kbps"},

    Row{{"m4a", "*", "*", "*", "*", "*", "aac "},
        boxlift,
        "AAC audio copied as-is, no quality loss"},
    Row{{"m4a", "*", "*", "*", "*", "*", "alac"},
        boxlift,
        "ALAC audio copied as-is, no quality loss"},
    Row{{"m4a", "*", "*", "*", "*", "*", "-"}, reencode, "Audio audio converted to AAC"},
    Row{{"m4a", "*", "*", "*", "*", "*", "lpcm"}, reencode, "PCM audio converted to AAC"},
    Row{{"m4a", "*", "*", "*", "*", "*", ".mp3"}, reencode, "MP3 audio converted to AAC"},
    Row{{"m4a", "*", "*", "*", "*", "*", "flac"}, reencode, "FLAC audio converted to AAC"},
    Row{{"m4a", "*", "*", "*", "*", "*", "opus"}, reencode, "opus audio converted to AAC"},
    Row{{"m4a", "*", "*", "*", "*", "*", "ac-3"}, reencode, "ac-3 audio converted to AAC"},

    Row{{"mp4", "p1080", "yes", "*", "*", "*", "*"}, reencode, "Video scaled to 1080p"},
    Row{{"mp4", "p720", "yes", "*", "*", "*", "*"}, reencode, "Video scaled to 720p"},
    Row{{"mp4", "*", "*", "-", "*", "*", "*"}, reencode, "Video video converted to H.264"},
    Row{{"mp4", "*", "*", "hvc1", "*", "*", "*"}, reencode, "HEVC video converted to H.264"},
    Row{{"mp4", "*", "*", "hev1", "*", "*", "*"}, reencode, "hev1 video converted to H.264"},
    Row{{"mp4", "*", "*", "apcn", "*", "*", "*"}, reencode, "ProRes video converted to H.264"},
    Row{{"mp4", "*", "*", "jpeg", "*", "*", "*"}, reencode, "MJPEG video converted to H.264"},
    Row{{"mp4", "*", "*", "ap4x", "*", "*", "*"}, reencode, "ap4x video converted to H.264"},
    Row{{"mp4", "*", "*", "rle ", "*", "*", "*"}, reencode, "rle video converted to H.264"},
    Row{{"mp4", "*", "*", "avc1", "no", "*", "*"}, boxlift, compatible},
    Row{{"mp4", "*", "*", "avc1", "yes", "yes", "*"}, boxlift, compatible},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "aac "}, boxlift, compatible},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "-"}, reencode, "Audio audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "alac"}, reencode, "ALAC audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "lpcm"}, reencode, "PCM audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", ".mp3"}, reencode, "MP3 audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "flac"}, reencode, "FLAC audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "opus"}, reencode, "opus audio converted to AAC"},
    Row{{"mp4", "*", "*", "avc1", "yes", "no", "ac-3"}, reencode, "ac-3 audio converted to AAC"},

    Row{{"mov", "p1080", "yes", "*", "*", "*", "*"}, reencode, "Video scaled to 1080p"},
    Row{{"mov", "p720", "yes", "*", "*", "*", "*"}, reencode, "Video scaled to 720p"},
    Row{{"mov", "*", "*", "*", "no", "*", "*"}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "yes", "*"}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "no", "-"}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "no", "aac "}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "no", "lpcm"}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "no", "alac"}, boxlift, copied},
    Row{{"mov", "*", "*", "*", "yes", "no", ".mp3"},
        reencode,
        "MP3 audio isn't MOV-compatible, re-encoding"},
    Row{{"mov", "*", "*", "*", "yes", "no", "flac"},
        reencode,
        "FLAC audio isn't MOV-compatible, re-encoding"},
    Row{{"mov", "*", "*", "*", "yes", "no", "opus"},
        reencode,
        "opus audio isn't MOV-compatible, re-encoding"},
    Row{{"mov", "*", "*", "*", "yes", "no", "ac-3"},
        reencode,
        "ac-3 audio isn't MOV-compatible, re-encoding"},
};

constexpr std::string_view targets[] = {"mp4", "mov", "m4a", "aac"};
constexpr std::string_view sizes[] = {"original", "p1080", "p720"};
constexpr std::string_view answers[] = {"no", "yes"};
constexpr std::string_view videoCodecs[] = {"-",    "avc1", "hvc1", "hev1",
                                            "apcn", "jpeg", "ap4x", "rle "};
constexpr std::string_view audioCodecs[] = {"-",    "aac ", "alac", "lpcm",
                                            ".mp3", "flac", "opus", "ac-3"};

void forEachQuestion(const auto& visit) {
    for (const auto target : targets)
        for (const auto size : sizes)
            for (const auto hasVideo : answers)
                for (const auto videoCodec : videoCodecs)
                    for (const auto hasAudio : answers)
                        for (const auto removeAudio : answers)
                            for (const auto audioCodec : audioCodecs)
                                visit(Question{target, size, hasVideo, videoCodec, hasAudio,
                                               removeAudio, audioCodec});
}

std::array<std::string_view, 7> words(const Question& question) {
    return {question.target,   question.size,        question.hasVideo,  question.videoCodec,
            question.hasAudio, question.removeAudio, question.audioCodec};
}

bool fits(const Question& pattern, const Question& question) {
    const auto wanted = words(pattern);
    const auto actual = words(question);
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (wanted[i] != "*" && wanted[i] != actual[i])
            return false;
    return true;
}

/// The table's size when no row fits.
std::size_t rowFor(const Question& question) {
    std::size_t row = 0;
    while (row < table.size() && !fits(table[row].question, question))
        ++row;
    return row;
}

std::optional<FourCharCode> codeFrom(std::string_view word) {
    if (word == "-")
        return std::nullopt;
    FourCharCode code = 0;
    for (const char c : word)
        code = (code << 8) | static_cast<unsigned char>(c);
    return code;
}

MediaInfo infoFrom(const Question& question) {
    return {.hasVideo = question.hasVideo == "yes",
            .hasAudio = question.hasAudio == "yes",
            .videoCodec = codeFrom(question.videoCodec),
            .audioCodec = codeFrom(question.audioCodec)};
}

Plan planFor(const Question& question, const MediaInfo& info) {
    return Converter::plan(info, targetFromRawValue(question.target).value(),
                           sizeOptionFromRawValue(question.size).value(),
                           question.removeAudio == "yes");
}

std::string describe(const Question& question) {
    std::string text;
    for (const auto word : words(question))
        text += "[" + std::string(word) + "]";
    return text;
}

TEST(PlanTable, AnswersEveryQuestionAndUsesEveryRow) {
    std::array<int, table.size()> uses{};
    int questions = 0;
    forEachQuestion([&](const Question& question) {
        const std::size_t row = rowFor(question);
        ASSERT_LT(row, table.size()) << describe(question);
        ++uses[row];
        ++questions;
    });
    EXPECT_EQ(questions, 4 * 3 * 2 * 8 * 2 * 2 * 8);
    for (std::size_t row = 0; row < table.size(); ++row)
        EXPECT_GT(uses[row], 0) << describe(table[row].question);
}

TEST(Plan, FollowsTheTableForEveryQuestion) {
    forEachQuestion([](const Question& question) {
        const std::size_t row = rowFor(question);
        ASSERT_LT(row, table.size()) << describe(question);
        const Plan plan = planFor(question, infoFrom(question));
        EXPECT_EQ(plan.mode, table[row].mode) << describe(question);
        EXPECT_EQ(plan.detail, table[row].detail) << describe(question);
    });
}

TEST(Plan, NeverLooksAtSizeOrDuration) {
    forEachQuestion([](const Question& question) {
        MediaInfo info = infoFrom(question);
        const Plan plan = planFor(question, info);
        info.width = 3840;
        info.height = 2160;
        info.duration = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(planFor(question, info), plan) << describe(question);
    });
}

MediaInfo film(const char (&video)[5], const char (&audio)[5]) {
    return {true, true, fourCharCode(video), fourCharCode(audio), 1920, 1080, 60};
}

MediaInfo song(const char (&audio)[5]) {
    return {false, true, std::nullopt, fourCharCode(audio), 0, 0, 60};
}

Plan planOf(const MediaInfo& info, Target target, SizeOption size = SizeOption::original) {
    return Converter::plan(info, target, size, false);
}

TEST(Plan, CopiesH264AndAacIntoMp4WithOrWithoutTheAudio) {
    const MediaInfo info = film("avc1", "aac ");
    const Plan expected{Mode::boxlift, "H.264 and AAC already compatible, no quality loss"};
    EXPECT_EQ(Converter::plan(info, Target::mp4, SizeOption::original, false), expected);
    EXPECT_EQ(Converter::plan(info, Target::mp4, SizeOption::original, true), expected);
}

TEST(Plan, EncodesACompatibleFilmThatIsToBeScaled) {
    EXPECT_EQ(planOf(film("avc1", "aac "), Target::mp4, SizeOption::p720),
              (Plan{Mode::reencode, "Video scaled to 720p"}));
}

TEST(Plan, EncodesMp3SoundOfAFilm) {
    const MediaInfo info = film("avc1", ".mp3");
    EXPECT_EQ(planOf(info, Target::mp4), (Plan{Mode::reencode, "MP3 audio converted to AAC"}));
    EXPECT_EQ(planOf(info, Target::mov),
              (Plan{Mode::reencode, "MP3 audio isn't MOV-compatible, re-encoding"}));
}

TEST(Plan, CopiesHevcIntoMovButNotIntoMp4) {
    const MediaInfo info = film("hvc1", "aac ");
    EXPECT_EQ(planOf(info, Target::mov),
              (Plan{Mode::boxlift, "Tracks copied into a MOV, no quality loss"}));
    EXPECT_EQ(planOf(info, Target::mp4), (Plan{Mode::reencode, "HEVC video converted to H.264"}));
}

TEST(Plan, DoesNotScaleAFileWithoutVideo) {
    EXPECT_EQ(planOf(song("lpcm"), Target::mov, SizeOption::p1080),
              (Plan{Mode::boxlift, "Tracks copied into a MOV, no quality loss"}));
}

TEST(Plan, CopiesAacIntoM4aButAlwaysEncodesForTheAacTarget) {
    EXPECT_EQ(planOf(song("aac "), Target::m4a),
              (Plan{Mode::boxlift, "AAC audio copied as-is, no quality loss"}));
    EXPECT_EQ(planOf(song("aac "), Target::aac),
              (Plan{Mode::reencode, "Audio encoded to AAC at 128 kbps"}));
}

TEST(Plan, EncodesAudioWithoutACodeForMp4) {
    MediaInfo info = film("avc1", "aac ");
    info.audioCodec.reset();
    EXPECT_EQ(planOf(info, Target::mp4), (Plan{Mode::reencode, "Audio audio converted to AAC"}));
}

} // namespace
} // namespace boxlift
