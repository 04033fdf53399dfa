#include "support/media_generator.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "support/media_libav.h"
#include "support/media_track.h"

namespace boxlift::test {

namespace {

constexpr int usualDelay = AV_TIME_BASE * 7 / 10;

using Tracks = std::vector<std::unique_ptr<Track>>;

libav::OutputPtr openOutput(const std::filesystem::path& path, const std::string& format) {
    // The prefix keeps FFmpeg from seeing a protocol in the name.
    const std::string url = "file:" + path.string();
    AVFormatContext* context = nullptr;
    const int result =
        avformat_alloc_output_context2(&context, nullptr, format.c_str(), url.c_str());
    if (result == AVERROR(EINVAL)) {
        throw std::invalid_argument("there is no container " + format);
    }
    libav::check(result, "make container " + format);
    libav::OutputPtr output(context);
    output->flags |= AVFMT_FLAG_BITEXACT;
    // What makes transport streams begin at 1.4 s, as they usually do.
    output->max_delay = usualDelay;
    libav::check(avio_open(&output->pb, url.c_str(), AVIO_FLAG_WRITE), "create " + path.string());
    return output;
}

Tracks makeTracks(AVFormatContext& container, const MediaSpec& spec) {
    Tracks tracks;
    for (const VideoSpec& video : spec.video) {
        tracks.push_back(makeVideoTrack(container, video, video.seconds.value_or(spec.seconds)));
    }
    for (const AudioSpec& audio : spec.audio) {
        tracks.push_back(makeAudioTrack(container, audio, audio.seconds.value_or(spec.seconds)));
    }
    for (const SubtitleSpec& subtitle : spec.subtitles) {
        tracks.push_back(makeSubtitleTrack(container, subtitle));
    }
    if (spec.cover) {
        tracks.push_back(makeCoverTrack(container, *spec.cover));
    }
    return tracks;
}

/// FFmpeg has no public function for this; the context frees what is put here.
void addChapters(AVFormatContext& container, const std::vector<ChapterSpec>& chapters) {
    constexpr AVRational milliseconds = {1, 1000};
    void* room = libav::require(av_calloc(chapters.size(), sizeof(AVChapter*)), "make chapters");
    container.chapters = static_cast<AVChapter**>(room);
    for (const ChapterSpec& spec : chapters) {
        void* made = libav::require(av_mallocz(sizeof(AVChapter)), "make a chapter");
        auto* chapter = static_cast<AVChapter*>(made);
        container.chapters[container.nb_chapters++] = chapter;
        chapter->id = container.nb_chapters;
        chapter->time_base = milliseconds;
        chapter->start = std::llround(spec.start * milliseconds.den);
        chapter->end = std::llround(spec.end * milliseconds.den);
        av_dict_set(&chapter->metadata, "title", spec.title.c_str(), 0);
    }
}

void describe(AVFormatContext& container, const MediaSpec& spec) {
    for (const auto& [key, value] : spec.metadata) {
        av_dict_set(&container.metadata, key.c_str(), value.c_str(), 0);
    }
    if (!spec.timecode.empty()) {
        av_dict_set(&container.streams[0]->metadata, "timecode", spec.timecode.c_str(), 0);
    }
    if (!spec.chapters.empty()) {
        addChapters(container, spec.chapters);
    }
}

void writeHeader(AVFormatContext& container, const MediaSpec& spec) {
    libav::Dictionary options(spec.muxerOptions);
    libav::check(avformat_write_header(&container, options.address()),
                 "write the header of " + spec.format);
    options.requireAllUsed(spec.format);
}

void writeTracks(const Tracks& tracks) {
    const auto byPosition = [](const auto& track) { return track->position(); };
    while (true) {
        const auto earliest = std::ranges::min_element(tracks, {}, byPosition);
        if (earliest == tracks.end() || (*earliest)->position() == INFINITY) {
            return;
        }
        (*earliest)->advance();
    }
}

} // namespace

void makeMedia(const std::filesystem::path& output, const MediaSpec& spec) {
    const libav::OutputPtr container = openOutput(output, spec.format);
    const Tracks tracks = makeTracks(*container, spec);
    describe(*container, spec);
    writeHeader(*container, spec);
    writeTracks(tracks);
    libav::check(av_write_trailer(container.get()), "write the trailer of " + output.string());
    libav::check(avio_closep(&container->pb), "close " + output.string());
}

} // namespace boxlift::test
