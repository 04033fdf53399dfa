#include "worker/protocol/message.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace boxlift::worker {
namespace {

constexpr MediaInfo film{.hasVideo = true,
                         .hasAudio = true,
                         .videoCodec = fourCharCode("avc1"),
                         .audioCodec = fourCharCode("aac "),
                         .width = 1920,
                         .height = 1080,
                         .duration = 12.5};

using Bytes = std::vector<std::byte>;

template <typename Message>
Message again(const Message& message) {
    const Bytes bytes = encode(message);
    if constexpr (std::is_same_v<Message, Report>)
        return decodeReport(bytes);
    else
        return decodeRequest(bytes);
}

} // namespace

TEST(WorkerRequest, ComesBackAsItWas) {
    const Request analyze = AnalyzeRequest{"/in/caf\xe9 film.mov"};
    EXPECT_EQ(again(analyze), analyze);
    for (const Target target : allTargets)
        for (const SizeOption size : allSizeOptions) {
            const Request convert = ConvertRequest{"/in/a.mov", film, target, size, true, "/out/a"};
            EXPECT_EQ(again(convert), convert);
        }
}

TEST(WorkerReport, ComesBackAsItWas) {
    const std::vector<Report> reports{
        Ready{.missingRestraints = "Landlock"},
        Progress{0.25},
        film,
        MediaInfo{.hasAudio = true},
        Mode::boxlift,
        Mode::reencode,
        Refusal{"It can\u2019t be done."},
        Failure{media::ErrorKind::noSpace, "write (/out/caf\xe9): no space"},
    };
    for (const Report& report : reports)
        EXPECT_EQ(again(report), report) << report.index();
}

TEST(WorkerReport, KeepsADurationThatIsNoNumber) {
    const Report report = MediaInfo{.hasAudio = true, .duration = std::nan("")};
    EXPECT_TRUE(std::isnan(std::get<MediaInfo>(again(report)).duration));
}

TEST(WorkerReport, CutsTextsThatAreTooLong) {
    const Report report = again(Report(Failure{{}, std::string(100'000, 'x')}));
    EXPECT_EQ(std::get<Failure>(report).technical.size(), longestText);
    EXPECT_LE(encode(report).size(), longestMessage);
}

TEST(WorkerReport, HasNoControlCharactersInWhatIsLogged) {
    const Report report = again(Report(Failure{{}, "one\ntwo\x1b[2J"}));
    EXPECT_EQ(std::get<Failure>(report).technical, "one?two?[2J");
}

TEST(WorkerReport, IsRefusedWhenItMakesNoSense) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const std::vector<Report> reports{
        Progress{-0.1},
        Progress{1},
        Progress{infinite},
        Progress{std::nan("")},
        MediaInfo{},
        MediaInfo{.hasVideo = true, .width = -1},
        MediaInfo{.hasAudio = true, .width = 5},
        MediaInfo{.hasAudio = true, .videoCodec = 1},
        MediaInfo{.hasVideo = true, .audioCodec = 1},
        Refusal{"caf\xe9"},
        Refusal{"two\nlines"},
    };
    for (const Report& report : reports)
        EXPECT_THROW(decodeReport(encode(report)), MalformedMessage) << report.index();
}

TEST(WorkerMessage, IsRefusedWhereverItIsCut) {
    const Bytes request = encode(
        Request(ConvertRequest{"/in/a", film, Target::mp4, SizeOption::original, true, "/out/a"}));
    for (std::size_t size = 0; size < request.size(); ++size)
        EXPECT_THROW(decodeRequest(std::span(request).first(size)), MalformedMessage) << size;
    const Bytes report = encode(Report(film));
    for (std::size_t size = 0; size < report.size(); ++size)
        EXPECT_THROW(decodeReport(std::span(report).first(size)), MalformedMessage) << size;
}

TEST(WorkerMessage, IsRefusedWithMoreBehindIt) {
    Bytes report = encode(Report(film));
    report.push_back({});
    EXPECT_THROW(decodeReport(report), MalformedMessage);
}

TEST(WorkerMessage, IsReadOrRefusedWhateverItsBytesAre) {
    std::mt19937 random(1);
    int readCount = 0;
    for (int i = 0; i < 100'000; ++i) {
        Bytes bytes(random() % 48);
        for (std::byte& byte : bytes)
            byte = static_cast<std::byte>(random() % 4 == 0 ? random() : random() % 8);
        try {
            decodeReport(bytes);
            ++readCount;
        } catch (const MalformedMessage&) {
        }
    }
    EXPECT_GT(readCount, 0);
}

} // namespace boxlift::worker
