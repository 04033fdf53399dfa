#include "engine/media/file_metadata.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <string_view>

#include "engine/media/av/conversion.h"

namespace boxlift::media {

namespace {

/// Keys that describe the container that they stand in, or its way of telling the priming.
constexpr std::array containerKeys{
    "major_brand", "minor_version", "compatible_brands", "encoder", "timecode", "iTunSMPB",
};

/// Keys of QuickTime's metadata atom and the plain keys that the muxers write beside the title.
struct KeyRow {
    const char* from;
    const char* to;
};

constexpr std::array plainKeys{
    KeyRow{"com.apple.quicktime.make", "make"},
    KeyRow{"com.apple.quicktime.model", "model"},
    KeyRow{"com.apple.quicktime.location.ISO6709", "location"},
    KeyRow{"com.apple.quicktime.creationdate", "date"},
    KeyRow{"com.apple.quicktime.title", "title"},
    KeyRow{"com.apple.quicktime.artist", "artist"},
    KeyRow{"com.apple.quicktime.album", "album"},
    KeyRow{"com.apple.quicktime.comment", "comment"},
    KeyRow{"com.apple.quicktime.copyright", "copyright"},
    KeyRow{"com.apple.quicktime.description", "description"},
};

void copyDictionary(AVDictionary*& to, const AVDictionary* from) {
    if (av_dict_copy(&to, from, 0) < 0)
        throw std::bad_alloc();
}

void copyTags(AVFormatContext& to, const AVFormatContext& from) {
    copyDictionary(to.metadata, from.metadata);
    for (const char* key : containerKeys)
        av_dict_set(&to.metadata, key, nullptr, 0);
    for (const KeyRow& row : plainKeys) {
        const AVDictionaryEntry* entry = av_dict_get(from.metadata, row.from, nullptr, 0);
        if (entry)
            av_dict_set(&to.metadata, row.to, entry->value, AV_DICT_DONT_OVERWRITE);
    }
}

/// The library has no public call that makes a chapter; freeing the context frees them.
AVChapter* newChapter(const AVChapter& from, Time start) {
    auto* chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
    if (!chapter)
        throw std::bad_alloc();
    const std::int64_t shift = av::toTimestamp(start, from.time_base);
    chapter->id = from.id;
    chapter->time_base = from.time_base;
    chapter->start = std::max<std::int64_t>(0, from.start - shift);
    chapter->end = std::max(chapter->start, from.end - shift);
    av_dict_copy(&chapter->metadata, from.metadata, 0);
    return chapter;
}

/// Marks that lie behind the end of the media would make the file longer.
bool liesInside(const AVChapter& chapter, const AVFormatContext& file) {
    const std::int64_t end = std::max<std::int64_t>(0, file.start_time) + file.duration;
    return file.duration <= 0 ||
           av_compare_ts(chapter.start, chapter.time_base, end, AV_TIME_BASE_Q) < 0;
}

void cutToFile(AVChapter& chapter, const AVFormatContext& file, Time start) {
    if (file.duration <= 0)
        return;
    const Time fileEnd =
        av::toTime(std::max<std::int64_t>(0, file.start_time) + file.duration, AV_TIME_BASE_Q);
    const std::int64_t end = av::toTimestamp(fileEnd - start, chapter.time_base);
    chapter.end = std::max(chapter.start, std::min(chapter.end, end));
}

void copyChapters(AVFormatContext& to, const AVFormatContext& from, Time start) {
    if (from.nb_chapters == 0)
        return;
    to.chapters = static_cast<AVChapter**>(av_calloc(from.nb_chapters, sizeof(AVChapter*)));
    if (!to.chapters)
        throw std::bad_alloc();
    for (const AVChapter* chapter : std::span(from.chapters, from.nb_chapters))
        if (liesInside(*chapter, from)) {
            to.chapters[to.nb_chapters] = newChapter(*chapter, start);
            cutToFile(*to.chapters[to.nb_chapters++], from, start);
        }
}

} // namespace

void copyMetadata(AVFormatContext& to, const AVFormatContext& from, Time start) {
    copyTags(to, from);
    copyChapters(to, from, start);
}

bool isCoverPicture(const AVStream& picture) {
    const AVCodecID codec = picture.codecpar->codec_id;
    const bool isSized = picture.codecpar->width > 0 && picture.codecpar->height > 0;
    const bool isKind = codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_PNG;
    const bool isCover = (picture.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 &&
                         (picture.disposition & AV_DISPOSITION_TIMED_THUMBNAILS) == 0;
    return isCover && isKind && isSized && picture.attached_pic.size > 0;
}

bool canHoldPicture(FileType type, const AVStream& picture) {
    // Into QuickTime files the muxer would not write it, without a word.
    return isCoverPicture(picture) && type != FileType::AVFileTypeQuickTimeMovie;
}

} // namespace boxlift::media
