#include "drive/absolute_path.h"

#include <gtest/gtest.h>

namespace boxlift::drive {
namespace {

TEST(AbsolutePath, PutsARelativePathBelowTheCurrentFolder) {
    EXPECT_EQ(absolutePath("a.mov", "/home/me"), "/home/me/a.mov");
    EXPECT_EQ(absolutePath("films/a.mov", "/"), "/films/a.mov");
}

TEST(AbsolutePath, KeepsAnAbsolutePath) {
    EXPECT_EQ(absolutePath("/films/a.mov", "/home/me"), "/films/a.mov");
    EXPECT_EQ(absolutePath("/", "/home/me"), "/");
}

TEST(AbsolutePath, DropsDotsAndSurplusSlashes) {
    EXPECT_EQ(absolutePath("./films//./a.mov", "/home/me"), "/home/me/films/a.mov");
    EXPECT_EQ(absolutePath("films/", "/home/me"), "/home/me/films");
    EXPECT_EQ(absolutePath(".", "/home/me"), "/home/me");
    EXPECT_EQ(absolutePath("//films///a.mov", "/home/me"), "/films/a.mov");
}

TEST(AbsolutePath, KeepsStepsUpwards) {
    EXPECT_EQ(absolutePath("../a.mov", "/home/me").native(), "/home/me/../a.mov");
    EXPECT_EQ(absolutePath("/films/../a.mov", "/home/me").native(), "/films/../a.mov");
}

TEST(AbsolutePath, KeepsNamesThatOnlyLookLikeDots) {
    EXPECT_EQ(absolutePath(".a/...", "/home/me"), "/home/me/.a/...");
}

TEST(AbsolutePath, KeepsEveryByte) {
    EXPECT_EQ(absolutePath("caf\xE9\n", "/home/\xFF").native(), "/home/\xFF/caf\xE9\n");
}

} // namespace
} // namespace boxlift::drive
