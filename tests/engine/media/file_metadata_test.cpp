#include "engine/media/file_metadata.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "engine/media/stream_maker.h"

namespace boxlift::media {

namespace {

constexpr auto mp4 = FileType::AVFileTypeMPEG4;
constexpr auto mov = FileType::AVFileTypeQuickTimeMovie;
constexpr auto m4a = FileType::AVFileTypeAppleM4A;

/// In milliseconds.
struct Mark {
    std::int64_t start;
    std::int64_t end;

    friend bool operator==(const Mark&, const Mark&) = default;
};

class FileMetadataTest : public testing::Test {
protected:
    void set(const char* key, const char* value) {
        av_dict_set(&m_source.context().metadata, key, value, 0);
    }
    std::string get(const char* key) {
        const AVDictionaryEntry* entry = av_dict_get(m_output.context().metadata, key, nullptr, 0);
        return entry ? entry->value : "none";
    }
    void setChapters(const std::vector<Mark>& marks) {
        AVFormatContext& context = m_source.context();
        context.chapters = static_cast<AVChapter**>(av_calloc(marks.size(), sizeof(AVChapter*)));
        for (const Mark& mark : marks) {
            auto* chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
            chapter->time_base = {1, 1000};
            chapter->start = mark.start;
            chapter->end = mark.end;
            av_dict_set(&chapter->metadata, "title", std::to_string(mark.start).c_str(), 0);
            context.chapters[context.nb_chapters++] = chapter;
        }
    }
    void copy(double start = 0) {
        copyMetadata(m_output.context(), m_source.context(), Time::fromSeconds(start));
    }
    std::vector<Mark> chapters() {
        std::vector<Mark> marks;
        AVFormatContext& context = m_output.context();
        for (const AVChapter* chapter : std::span(context.chapters, context.nb_chapters))
            marks.push_back({chapter->start, chapter->end});
        return marks;
    }
    AVStream& addPicture(AVCodecID codec) {
        AVStream& stream = m_source.add({.codec = codec});
        stream.codecpar->width = stream.codecpar->height = 32;
        stream.disposition = AV_DISPOSITION_ATTACHED_PIC;
        av_new_packet(&stream.attached_pic, 100);
        return stream;
    }

    test::StreamMaker m_source;
    test::StreamMaker m_output;
};

using Marks = std::vector<Mark>;

} // namespace

TEST_F(FileMetadataTest, KeepsTitlesDatesPlacesAndCamera) {
    for (const char* key : {"title", "artist", "album", "creation_time", "date", "location", "make",
                            "model", "comment", "genre", "copyright"})
        set(key, key);
    copy();
    for (const char* key : {"title", "artist", "album", "creation_time", "date", "location", "make",
                            "model", "comment", "genre", "copyright"})
        EXPECT_EQ(get(key), key);
}

TEST_F(FileMetadataTest, DropsWhatDescribesTheOldContainer) {
    for (const char* key :
         {"major_brand", "minor_version", "compatible_brands", "encoder", "timecode", "iTunSMPB"})
        set(key, "old");
    copy();
    EXPECT_EQ(av_dict_count(m_output.context().metadata), 0);
}

TEST_F(FileMetadataTest, GivesKeysOfQuickTimePlainNames) {
    set("com.apple.quicktime.make", "Maker");
    set("com.apple.quicktime.model", "Model");
    set("com.apple.quicktime.location.ISO6709", "+47.3769+008.5417/");
    set("com.apple.quicktime.creationdate", "2023-05-06T07:08:09+0200");
    set("com.apple.quicktime.title", "Title");
    copy();
    EXPECT_EQ(get("make"), "Maker");
    EXPECT_EQ(get("model"), "Model");
    EXPECT_EQ(get("location"), "+47.3769+008.5417/");
    EXPECT_EQ(get("date"), "2023-05-06T07:08:09+0200");
    EXPECT_EQ(get("title"), "Title");
}

TEST_F(FileMetadataTest, PrefersPlainKeysToThoseOfQuickTime) {
    set("com.apple.quicktime.title", "Other");
    set("title", "Title");
    copy();
    EXPECT_EQ(get("title"), "Title");
}

TEST_F(FileMetadataTest, KeepsChaptersWithTheirTitles) {
    setChapters({{0, 400}, {400, 1000}});
    m_source.context().duration = AV_TIME_BASE;
    copy();
    EXPECT_EQ(chapters(), (Marks{{0, 400}, {400, 1000}}));
    const AVChapter& second = *m_output.context().chapters[1];
    EXPECT_STREQ(av_dict_get(second.metadata, "title", nullptr, 0)->value, "400");
}

TEST_F(FileMetadataTest, CutsChaptersToTheFile) {
    setChapters({{0, 400}, {400, 5000}, {1000, 2000}, {3000, 4000}});
    m_source.context().duration = AV_TIME_BASE;
    copy();
    EXPECT_EQ(chapters(), (Marks{{0, 400}, {400, 1000}}));
}

TEST_F(FileMetadataTest, MovesChaptersWithTheStartOfTheFile) {
    setChapters({{1400, 1900}, {1900, 2400}, {2500, 3000}});
    m_source.context().start_time = 1'400'000;
    m_source.context().duration = AV_TIME_BASE;
    copy(1.4);
    EXPECT_EQ(chapters(), (Marks{{0, 500}, {500, 1000}}));
}

TEST_F(FileMetadataTest, LetsNoChapterBeginBeforeTheFile) {
    setChapters({{0, 2000}, {500, 1000}});
    m_source.context().start_time = 1'400'000;
    m_source.context().duration = AV_TIME_BASE;
    copy(1.4);
    EXPECT_EQ(chapters(), (Marks{{0, 600}, {0, 0}}));
}

TEST_F(FileMetadataTest, KeepsAllChaptersOfAFileOfUnknownLength) {
    setChapters({{0, 400}, {9000, 9500}});
    m_source.context().duration = AV_NOPTS_VALUE;
    copy();
    EXPECT_EQ(chapters(), (Marks{{0, 400}, {9000, 9500}}));
}

TEST_F(FileMetadataTest, HasNoChaptersWhenAllLieBehindTheEnd) {
    setChapters({{2000, 3000}});
    m_source.context().duration = AV_TIME_BASE;
    copy();
    EXPECT_EQ(chapters(), Marks());
}

TEST_F(FileMetadataTest, TakesPicturesOfTwoKindsForCoverArt) {
    for (const AVCodecID codec : {AV_CODEC_ID_MJPEG, AV_CODEC_ID_PNG}) {
        EXPECT_TRUE(canHoldPicture(mp4, addPicture(codec)));
        EXPECT_TRUE(canHoldPicture(m4a, addPicture(codec)));
        EXPECT_FALSE(canHoldPicture(mov, addPicture(codec)));
    }
    for (const AVCodecID codec : {AV_CODEC_ID_BMP, AV_CODEC_ID_GIF, AV_CODEC_ID_WEBP})
        EXPECT_FALSE(canHoldPicture(mp4, addPicture(codec)));
}

TEST_F(FileMetadataTest, TakesNoOtherPictureForCoverArt) {
    AVStream& empty = addPicture(AV_CODEC_ID_PNG);
    av_packet_unref(&empty.attached_pic);
    EXPECT_FALSE(canHoldPicture(mp4, empty));
    AVStream& sizeless = addPicture(AV_CODEC_ID_PNG);
    sizeless.codecpar->width = 0;
    EXPECT_FALSE(canHoldPicture(mp4, sizeless));
    AVStream& thumbnail = addPicture(AV_CODEC_ID_PNG);
    thumbnail.disposition |= AV_DISPOSITION_TIMED_THUMBNAILS;
    EXPECT_FALSE(canHoldPicture(mp4, thumbnail));
    AVStream& video = addPicture(AV_CODEC_ID_MJPEG);
    video.disposition = 0;
    EXPECT_FALSE(canHoldPicture(mp4, video));
}

} // namespace boxlift::media
