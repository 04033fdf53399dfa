#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "input/child.h"
#include "input/conversion_runner.h"
#include "input/sources.h"
#include "model/job_rules.h"
#include "support/corpus.h"
#include "support/media_boxes.h"
#include "support/media_generator.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view cannotOpen =
    "macOS can't open this file. It may be damaged or in a format AVFoundation doesn't support.";
constexpr std::string_view cannotRead =
    "The file can't be read. It may have been moved or deleted.";
constexpr std::string_view endsEarly = "The file is damaged: it ends before its stated length.";
constexpr double atOnce = 3;

constexpr MediaInfo believedInfo{.hasVideo = true,
                                 .hasAudio = true,
                                 .videoCodec = fourCharCode("avc1"),
                                 .audioCodec = fourCharCode("aac "),
                                 .width = 160,
                                 .height = 120,
                                 .duration = 1};

/// The file is refused at once, in words, and its folder stays as it was.
void expectRefused(const fs::path& path, std::string_view sentence = cannotOpen) {
    SCOPED_TRACE(path.filename().native());
    const auto before = namesIn(path.parent_path());
    const Analysis analysis = analyze(path);
    EXPECT_FALSE(analysis.info);
    EXPECT_EQ(analysis.sentence, sentence);
    EXPECT_LT(analysis.seconds, atOnce);
    EXPECT_EQ(namesIn(path.parent_path()), before);
}

/// A source that has become something else since it was analysed: no target leaves anything.
void expectNoConversion(const fs::path& source, const MediaInfo& info, std::string_view sentence) {
    SCOPED_TRACE(source.filename().native());
    const TempFolder folder;
    for (const Target target : allTargets) {
        SCOPED_TRACE(rawValue(target));
        const Conversion conversion = convert(
            {.source = source, .info = info, .target = target, .output = folder.path() / "out"});
        EXPECT_FALSE(conversion.mode);
        EXPECT_EQ(conversion.sentence, sentence);
        EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>());
    }
}

/// Gives contents each of the names and expects them refused unharmed.
void expectContentsRefused(const TempFolder& folder, const std::string& contents) {
    for (const char* name : {"file.mp4", "file.mov", "file.m4a"}) {
        const fs::path path = writeFile(folder.path() / name, contents);
        expectRefused(path);
        EXPECT_EQ(readFile(path), contents);
    }
}

/// What a generated file of another format holds.
std::string contentsOf(const MediaSpec& spec) {
    const TempFolder folder;
    makeMedia(folder.path() / "file", spec);
    return readFile(folder.path() / "file");
}

fs::path makeHalf(const TempFolder& folder, const char* name, const Options& muxerOptions) {
    MediaSpec spec = h264AndAac(4);
    spec.muxerOptions = muxerOptions;
    const fs::path whole = makeSource(folder.path(), name, spec);
    const std::string contents = readFile(whole);
    return writeFile(folder.path() / "half" / name, contents.substr(0, contents.size() / 2));
}

} // namespace

TEST(BadInput, AMissingFileIsRefused) {
    const TempFolder folder;
    expectRefused(folder.path() / "missing.mp4");
    expectNoConversion(folder.path() / "missing.mp4", believedInfo, cannotRead);
}

TEST(BadInput, AnEmptyFileIsRefused) {
    const TempFolder folder;
    expectContentsRefused(folder, "");
}

TEST(BadInput, AFolderIsRefused) {
    const TempFolder folder;
    fs::create_directory(folder.path() / "folder.mp4");
    expectRefused(folder.path() / "folder.mp4");
    expectNoConversion(folder.path() / "folder.mp4", believedInfo, cannotRead);
}

TEST(BadInput, APipeWithoutAWriterDoesNotBlock) {
    const TempFolder folder;
    const fs::path pipe = folder.path() / "pipe.mp4";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    expectRefused(pipe);
    expectNoConversion(pipe, believedInfo, cannotRead);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(BadInput, APipeWithAWriterIsNotReadFrom) {
    const TempFolder folder;
    const fs::path pipe = folder.path() / "pipe.mp4";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int writer = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(writer, 0);
    ASSERT_EQ(::write(writer, "12345678", 8), 8);
    expectRefused(pipe);
    expectNoConversion(pipe, believedInfo, cannotRead);
    std::array<char, 16> left{};
    EXPECT_EQ(::read(writer, left.data(), left.size()), 8);
    ::close(writer);
}

TEST(BadInput, ASocketIsRefused) {
    const TempFolder folder;
    const fs::path path = folder.path() / "socket.mp4";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.native().size(), sizeof(address.sun_path));
    std::strcpy(address.sun_path, path.c_str());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(::listen(listener, 1), 0);
    expectRefused(path);
    expectNoConversion(path, believedInfo, cannotRead);
    ::close(listener);
}

TEST(BadInput, TextIsRefusedUnderAnyName) {
    const TempFolder folder;
    expectContentsRefused(folder, "1 2 3 4 5\n6 7 8 9 10\n");
    expectContentsRefused(folder, std::string(100'000, 'a'));
}

TEST(BadInput, APageIsRefusedUnderAnyName) {
    const TempFolder folder;
    expectContentsRefused(folder, "<!DOCTYPE html>\n<html><body>404 Not Found</body></html>\n");
}

TEST(BadInput, APictureIsRefusedUnderAnyName) {
    const TempFolder folder;
    const std::string picture =
        contentsOf({.format = "mjpeg", .seconds = 0.04, .video = {{.codec = "mjpeg"}}});
    ASSERT_TRUE(picture.starts_with("\xff\xd8\xff"));
    expectContentsRefused(folder, picture);
}

// A prober that follows a playlist would let a file name others, and the network.
TEST(BadInput, APlaylistIsRefusedAndNotFollowed) {
    const TempFolder folder;
    makeMedia(folder.path() / "piece.ts", {.format = "mpegts", .video = {{}}});
    expectContentsRefused(folder, "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n"
                                  "#EXTINF:1.0,\npiece.ts\n#EXT-X-ENDLIST\n");
    expectContentsRefused(folder, "ffconcat version 1.0\nfile piece.ts\n");
}

TEST(BadInput, FormatsThatAreNotOpenedAreKnownByTheirContents) {
    const TempFolder folder;
    const VideoSpec video;
    for (const MediaSpec& spec : {MediaSpec{.format = "matroska", .video = {video}},
                                  MediaSpec{.format = "avi", .video = {{.codec = "mpeg4"}}},
                                  MediaSpec{.format = "ogg", .audio = {{.codec = "flac"}}},
                                  MediaSpec{.format = "flv", .video = {video}},
                                  MediaSpec{.format = "h264", .video = {video}}}) {
        SCOPED_TRACE(spec.format);
        expectContentsRefused(folder, contentsOf(spec));
    }
}

TEST(BadInput, TenExtensionsAreRefusedWhateverTheFileHolds) {
    const TempFolder folder;
    const std::string movie = readFile(makeSource(folder.path(), "movie.mov", h264AndAac(0.2)));
    using Pair = std::pair<const char*, const char*>;
    constexpr std::array pairs{Pair{"mkv", "MKV"},       Pair{"avi", "AVI"},   Pair{"webm", "WebM"},
                               Pair{"wmv", "WMV"},       Pair{"flv", "FLV"},   Pair{"ogg", "Ogg"},
                               Pair{"ogv", "Ogg"},       Pair{"OPUS", "Opus"}, Pair{"Wma", "WMA"},
                               Pair{"rmvb", "RealMedia"}};
    for (const auto& [extension, name] : pairs) {
        const fs::path path = writeFile(folder.path() / ("file." + std::string(extension)), movie);
        expectRefused(path, std::string(name) +
                                " files can't be opened by macOS. Convert them with a tool like "
                                "ffmpeg or HandBrake first.");
        EXPECT_EQ(readFile(path), movie);
    }
}

TEST(BadInput, HalfAFileWithItsIndexInFrontIsFoundOutWhenItIsConverted) {
    const TempFolder folder;
    const fs::path half = makeHalf(folder, "half.mov", {{"movflags", "faststart"}});
    const std::string contents = readFile(half);
    const Analysis analysis = analyze(half);
    ASSERT_TRUE(analysis.info);
    EXPECT_NEAR(analysis.info->duration, 4, 0.1);
    expectNoConversion(half, *analysis.info, endsEarly);
    EXPECT_EQ(readFile(half), contents);
}

TEST(BadInput, HalfAFileWithItsIndexAtTheEndIsRefused) {
    const TempFolder folder;
    expectRefused(makeHalf(folder, "half.mov", {}));
}

TEST(BadInput, AFileThatShrinksAfterItsAnalysisGivesAnError) {
    const TempFolder folder;
    MediaSpec spec = h264AndAac(4);
    spec.muxerOptions = {{"movflags", "faststart"}};
    const fs::path source = makeSource(folder.path(), "shrinking.mov", spec);
    const MediaInfo info = Converter::analyze(source);
    fs::resize_file(source, fs::file_size(source) / 2);
    expectNoConversion(source, info, endsEarly);
}

TEST(BadInput, AProtectedFileIsRefused) {
    const TempFolder folder;
    const fs::path source =
        makeSource(folder.path(), "plain.mp4", {.format = "mp4", .video = {{}}});
    std::string contents = readFile(source);
    // The second: the first stands in the list of compatible brands or is the entry itself.
    const auto entry = contents.rfind("avc1");
    ASSERT_NE(entry, std::string::npos);
    ASSERT_EQ(contents.compare(contents.rfind("stsd", entry), 4, "stsd"), 0);
    ASSERT_EQ(entry - contents.rfind("stsd", entry), 16U);
    for (const char* code : {"encv", "drmi"}) {
        contents.replace(entry, 4, code);
        const fs::path path = writeFile(folder.path() / "protected.mp4", contents);
        expectRefused(path);
        EXPECT_EQ(readFile(path), contents);
    }
}

TEST(BadInput, ProtectedFilesOfTheCorpusAreRefused) {
    if (!hasRealCorpus())
        GTEST_SKIP() << "BOXLIFT_CORPUS is not set";
    const TempFolder folder;
    int seen = 0;
    for (const CorpusFile& file : corpusFiles(folder.path())) {
        if (!file.tags.contains("encrypted"))
            continue;
        ++seen;
        EXPECT_FALSE(analyze(file.path).info) << file.name;
    }
    EXPECT_GT(seen, 0);
}

TEST(BadInput, AFileThatMayNotBeReadIsRefused) {
    const TempFolder folder;
    setMode(folder.path(), 0755);
    const fs::path source = makeSource(folder.path(), "locked.mov", h264AndAac(0.2));
    setMode(source, 0);
    EXPECT_EQ(inChild(Rights::ordinary, [&] { return analyze(source).sentence; }), cannotOpen);
    const fs::path out = makeOutputFolder(folder.path());
    setMode(out, 0777);
    const std::string sentence = inChild(Rights::ordinary, [&] {
        return convert({.source = source, .info = believedInfo, .output = out / "a.mp4"}).sentence;
    });
    EXPECT_EQ(sentence, cannotRead);
    EXPECT_EQ(namesIn(out), std::vector<std::string>());
}

struct Odd {
    const char* label;
    std::string name;
};

/// What the list of tests shows.
void PrintTo(const Odd& odd, std::ostream* out) {
    *out << odd.label;
}

class OddName : public testing::TestWithParam<Odd> {};

TEST_P(OddName, IsConvertedToTheSameName) {
    const TempFolder folder;
    const fs::path source = makeSource(folder.path(), GetParam().name.c_str(), h264AndAac(0.4));
    const std::string contents = readFile(source);
    const fs::path out = makeOutputFolder(folder.path());
    std::vector<std::string> expected;
    for (const Target target : allTargets) {
        SCOPED_TRACE(rawValue(target));
        const auto names = namesIn(out);
        const std::string name =
            outputName(source.filename().native(), target, [&](const std::string& candidate) {
                return std::ranges::find(names, candidate) != names.end();
            });
        const Conversion done = convert(requestFor(source, target, out / name));
        ASSERT_TRUE(done.mode) << done.sentence;
        EXPECT_FALSE(probe(out / name).all(StreamKind::audio).empty());
        expected.push_back(name);
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(namesIn(out), expected);
    EXPECT_EQ(readFile(source), contents);
}

INSTANTIATE_TEST_SUITE_P(BadInput, OddName,
                         testing::Values(Odd{"Colon", "title: part 1.mov"},
                                         Odd{"Dash", "-dash.mov"}, Odd{"Percent", "100%03d%s.mov"},
                                         Odd{"Emoji", "\xf0\x9f\x8e\xac caf\xc3\xa9.mov"},
                                         Odd{"Spaces", "  two  spaces .mov"},
                                         Odd{"NotUtf8", "not utf-8 \xff\xfe\x80.mov"},
                                         Odd{"LineBreak", "line\nbreak.mov"},
                                         Odd{"Wildcards", "back\\slash*?[a].mov"},
                                         Odd{"Hidden", ".hidden"}, Odd{"NoExtension", "plain"},
                                         Odd{"TwoDots", "a.b..mov"},
                                         Odd{"Concat", "concat:a|b.mov"},
                                         Odd{"Address", "http:x.mov"}),
                         [](const auto& info) { return std::string(info.param.label); });

TEST(BadInput, ARelativeNameWithALeadingDashIsAFileToo) {
    const TempFolder folder;
    makeSource(folder.path(), "-i.mov", h264AndAac(0.2));
    const fs::path out = makeOutputFolder(folder.path());
    const std::string sentence = inChild(Rights::asTheyAre, [&] {
        fs::current_path(folder.path() / "in");
        return convert(requestFor("-i.mov", Target::mp4, "-y.mp4")).sentence;
    });
    EXPECT_EQ(sentence, "");
    EXPECT_EQ(namesIn(folder.path() / "in"), (std::vector<std::string>{"-i.mov", "-y.mp4"}));
    EXPECT_TRUE(fs::is_empty(out));
}

} // namespace boxlift::test
