#include "fuzz/seeds.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>

#include "support/media_generator.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace {

constexpr double brief = 0.4;
constexpr std::int64_t largestReal = 64 << 10;
constexpr std::size_t mostReal = 4;

using Contents = std::vector<std::string>;

Contents make(std::initializer_list<MediaSpec> specs) {
    const TempFolder folder;
    Contents files;
    for (const MediaSpec& spec : specs)
        try {
            makeMedia(folder.path() / "file", spec);
            files.push_back(readFile(folder.path() / "file"));
        } catch (const MissingEncoder&) {
            continue;
        }
    return files;
}

MediaSpec film(const char* format, const char* audioCodec) {
    return {
        .format = format,
        .seconds = brief,
        .video = {{.width = 64, .height = 48, .bFrames = 2, .keyFrameInterval = 5}},
        .audio = {{.codec = audioCodec, .layout = "mono"}},
    };
}

MediaSpec filmWith(const char* flags, const char* format = "mp4") {
    MediaSpec spec = film(format, "aac");
    spec.muxerOptions = {{"movflags", flags}};
    return spec;
}

MediaSpec picture(const char* format, const char* codec) {
    return {
        .format = format, .seconds = brief, .video = {{.codec = codec, .width = 64, .height = 48}}};
}

MediaSpec sound(const char* format, const char* codec, int sampleRate = 8000) {
    return {.format = format,
            .seconds = brief,
            .audio = {{.codec = codec, .sampleRate = sampleRate, .layout = "mono"}}};
}

MediaSpec broadcast(const char* format) {
    MediaSpec spec = picture(format, "mpeg2video");
    spec.audio = {{.codec = "mp2", .layout = "mono"}};
    return spec;
}

/// All that a movie may hold besides one picture and one sound.
MediaSpec richMovie() {
    MediaSpec spec = film("mov", "aac");
    spec.video.front().rotation = 90;
    spec.video.front().sampleAspect = {4, 3};
    spec.audio.front().startSeconds = 0.1;
    spec.audio.push_back({.codec = "pcm_s16le", .sampleRate = 8000});
    spec.subtitles = {{.events = {{.start = 0, .end = 0.2, .text = "One"}}}};
    spec.chapters = {{.title = "First", .start = 0, .end = 0.2},
                     {.title = "Second", .start = 0.2, .end = brief}};
    spec.metadata = {{"title", "A title"}, {"date", "2020-01-01"}};
    spec.timecode = "01:00:00:00";
    return spec;
}

MediaSpec song() {
    MediaSpec spec = sound("ipod", "aac");
    spec.cover = CoverSpec{.size = 8};
    spec.metadata = {{"title", "A title"}, {"artist", "Somebody"}};
    return spec;
}

MediaSpec tape() {
    return {.format = "dv",
            .seconds = 0.08,
            .video = {{.codec = "dvvideo", .width = 720, .height = 576}},
            .audio = {{.codec = "pcm_s16le", .sampleRate = 48000}}};
}

/// A second of frames that say nothing, of 12.2 kbit/s: few computers have an encoder for AMR.
std::string speech() {
    std::string file = "#!AMR\n";
    for (int frame = 0; frame < 50; ++frame)
        file.append("\x3c").append(31, '\x55');
    return file;
}

bool isFragmented(const CorpusFile& file) {
    return file.tags.contains("fragmented");
}
bool isFilm(const CorpusFile& file) {
    return !isFragmented(file) && file.videoTracks > 0 && file.path.extension() != ".mov";
}
bool isQuickTime(const CorpusFile& file) {
    return !isFragmented(file) && file.path.extension() == ".mov";
}
bool isSong(const CorpusFile& file) {
    return !isFragmented(file) && file.videoTracks == 0 && file.audioTracks > 0;
}

constexpr std::string_view movie = "mov,mp4,m4a,3gp,3g2,mj2";

constexpr std::array kinds{
    SeedKind{"Mp4", 800,
             [] {
                 return make({film("mp4", "aac"), filmWith("faststart"), picture("mp4", "mpeg4")});
             },
             movie, isFilm},
    SeedKind{"Mov", 800,
             [] {
                 return make({richMovie(), film("mov", "pcm_s16le"), picture("mov", "libx265")});
             },
             movie, isQuickTime},
    SeedKind{"M4a", 500,
             [] {
                 return make({song(), sound("ipod", "alac")});
             },
             movie, isSong},
    SeedKind{"Fragments", 800,
             [] {
                 return make({filmWith("frag_keyframe+empty_moov+default_base_moof"),
                              filmWith("frag_keyframe", "mov")});
             },
             movie, isFragmented},
    SeedKind{"Wave", 250,
             [] {
                 return make({sound("wav", "pcm_s16le"), sound("wav", "adpcm_ms")});
             },
             "wav", nullptr},
    SeedKind{"Wave64", 250, [] { return make({sound("w64", "pcm_s24le")}); }, "w64", nullptr},
    SeedKind{"Aiff", 250, [] { return make({sound("aiff", "pcm_s16be")}); }, "aiff", nullptr},
    SeedKind{"Caf", 250,
             [] {
                 return make({sound("caf", "pcm_s16be"), sound("caf", "alac")});
             },
             "caf", nullptr},
    SeedKind{"Au", 250, [] { return make({sound("au", "pcm_s16be")}); }, "au", nullptr},
    SeedKind{"Flac", 250, [] { return make({sound("flac", "flac")}); }, "flac", nullptr},
    SeedKind{"Mp3", 250,
             [] {
                 return make({sound("mp3", "libmp3lame"), sound("mp2", "mp2", 32000)});
             },
             "mp3", nullptr},
    SeedKind{"Adts", 200, [] { return make({sound("adts", "aac")}); }, "aac", nullptr},
    SeedKind{"Ac3", 250,
             [] {
                 return make({sound("ac3", "ac3", 32000), sound("eac3", "eac3", 32000)});
             },
             "ac3", nullptr},
    SeedKind{"Amr", 200, [] { return Contents{speech()}; }, "amr", nullptr},
    SeedKind{"TransportStream", 150,
             [] {
                 return make({film("mpegts", "aac"), broadcast("mpegts")});
             },
             "mpegts", nullptr},
    SeedKind{"ProgramStream", 250,
             [] {
                 return make({broadcast("mpeg"), broadcast("vob")});
             },
             "mpeg", nullptr},
    SeedKind{"MpegVideo", 250, [] { return make({picture("mpeg2video", "mpeg2video")}); },
             "mpegvideo", nullptr},
    SeedKind{"DigitalVideo", 150, [] { return make({tape()}); }, "dv", nullptr},
    SeedKind{"Foreign", 300,
             [] {
                 return make({film("matroska", "flac"), sound("ogg", "flac"),
                              picture("avi", "mpeg4"), film("flv", "aac")});
             },
             "matroska,webm", nullptr},
};

std::vector<Seed> realOnes(const SeedKind& kind) {
    if (!hasRealCorpus())
        return {};
    std::vector<CorpusFile> files = corpusFiles({});
    std::erase_if(files, [&](const CorpusFile& file) {
        return file.format != kind.demuxer || file.bytes > largestReal ||
               (kind.includes && !kind.includes(file));
    });
    std::ranges::stable_sort(files, {}, &CorpusFile::bytes);
    files.resize(std::min(files.size(), mostReal));
    std::vector<Seed> seeds;
    for (const CorpusFile& file : files)
        seeds.push_back({file.path.filename(), readFile(file.path)});
    return seeds;
}

} // namespace

std::span<const SeedKind> seedKinds() {
    return kinds;
}

std::vector<Seed> seedsOf(const SeedKind& kind) {
    std::vector<Seed> seeds;
    for (std::string& file : kind.make())
        seeds.push_back({"made " + std::to_string(seeds.size() + 1), std::move(file)});
    for (Seed& seed : realOnes(kind))
        seeds.push_back(std::move(seed));
    return seeds;
}

} // namespace boxlift::test
