#include "queue/file_url.h"

#include <string>

#include <gtest/gtest.h>

namespace boxlift {
namespace {

const std::string oddPaths[] = {
    "/",
    "/a.mov",
    "/films/my clip.mov",
    "/films/",
    "//a//b.mov",
    "/a/../b/./c.mov",
    "/100%.mov",
    "/%41%2F%00.mov",
    "/a?b#c&d=e;f+g.mov",
    "/[1]{2}|3\\4^5`6~.mov",
    "/\"quoted\" 'name'.mov",
    "/C:/a.mov",
    "/user@host:80.mov",
    "/Ünï \xE6\x97\xA5\xE6\x9C\xAC.mov",
    "/e\xCC\x81 and \xC3\xA9.mov",
    "/caf\xE9.mov",
    "/\xFF\xFE\x80.mov",
    "/\xED\xA0\x80.mov",
    "/line\nbreak\ttab\rreturn\x01\x7F.mov",
    "/ leading and trailing ",
    "/.hidden",
};

TEST(FileUrl, KeepsEveryByteOfAPath) {
    for (const std::string& path : oddPaths) {
        EXPECT_TRUE(fileUrl(path).isValid()) << path;
        EXPECT_EQ(filePath(fileUrl(path)).native(), path);
    }
}

TEST(FileUrl, KeepsEveryByteAlsoWrittenOutAsText) {
    for (const std::string& path : oddPaths)
        EXPECT_EQ(filePath(QUrl(fileUrl(path).toString(QUrl::FullyEncoded))).native(), path);
}

TEST(FileUrl, KeepsEveryByteValueInAName) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string path = std::string("/a") + static_cast<char>(byte) + "b";
        EXPECT_EQ(filePath(fileUrl(path)).native(), path) << byte;
    }
}

TEST(FileUrl, IsTheOneThatOthersWouldWrite) {
    for (const char* path : {"/a.mov", "/my clip.mov", "/Ünï.mov", "/100%.mov", "/a?b#c.mov"})
        EXPECT_EQ(fileUrl(path), QUrl::fromLocalFile(path)) << path;
}

TEST(FileUrl, IsOfTheSchemeFileWithoutAHost) {
    EXPECT_EQ(fileUrl("/my clip.mov").toEncoded(), "file:///my%20clip.mov");
}

TEST(FilePath, ReadsUrlsAsFileManagersWriteThem) {
    EXPECT_EQ(filePath(QUrl("file:///films/my%20clip.mov")), "/films/my clip.mov");
    EXPECT_EQ(filePath(QUrl("file://localhost/a.mov")), "/a.mov");
    EXPECT_EQ(filePath(QUrl("file:/a.mov")), "/a.mov");
    EXPECT_EQ(filePath(QUrl("FILE:///a.mov")), "/a.mov");
    EXPECT_EQ(filePath(QUrl::fromEncoded("file:///caf%E9.mov")).native(), "/caf\xE9.mov");
    EXPECT_EQ(filePath(QUrl("file:///a.mov?query#fragment")), "/a.mov");
}

TEST(FilePath, IsEmptyForWhatIsNotAFileOfThisMachine) {
    for (const char* url : {"", "http://example.com/a.mov", "file://server/share/a.mov", "a.mov",
                            "/a.mov", "data:text/plain,a", "file:", "file://"})
        EXPECT_TRUE(filePath(QUrl(url)).empty()) << url;
}

TEST(FilePath, IsEmptyWhereNoFileCanHaveTheName) {
    EXPECT_TRUE(filePath(QUrl("file:///a%00b.mov")).empty());
}

} // namespace
} // namespace boxlift
