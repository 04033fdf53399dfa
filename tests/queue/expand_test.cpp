#include "queue/expand.h"

#include <algorithm>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_folder.h"
#include "support/without_privileges.h"

namespace boxlift {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;
using test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Lets the process open few files at a time while it lives.
class FewOpenFiles {
public:
    explicit FewOpenFiles(rlim_t count) {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit few{.rlim_cur = count, .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewOpenFiles() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

private:
    rlimit m_before{};
};

/// Makes folders within folders, `depth` of them, all of one name, from an open descriptor on, so
/// that the whole may be longer than a path can be.
void nestFolders(const fs::path& top, const std::string& name, int depth) {
    int folder = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(::mkdirat(folder, name.c_str(), 0777), 0);
        const int inner = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ASSERT_GE(inner, 0);
        ::close(folder);
        folder = inner;
    }
    ::close(folder);
}

/// The entries of a folder in the order in which the system names them.
std::vector<fs::path> listing(const fs::path& folder) {
    std::vector<fs::path> result;
    for (const auto& entry : fs::directory_iterator(folder))
        result.push_back(entry.path());
    return result;
}

TEST(Expand, KeepsFilesAsTheyAreAndInTheirOrder) {
    const TempFolder folder;
    const auto b = writeFile(folder.path() / "b.mov");
    const auto a = writeFile(folder.path() / "a.txt");

    EXPECT_THAT(expand({b, a, b}), ElementsAre(b, a, b));
}

TEST(Expand, KeepsAPathThatDoesNotExist) {
    const TempFolder folder;
    const fs::path missing = folder.path() / "missing" / "clip.mov";

    EXPECT_THAT(expand({missing}), ElementsAre(missing));
}

TEST(Expand, KeepsAHiddenFileThatIsNamedItself) {
    const TempFolder folder;
    const auto hidden = writeFile(folder.path() / ".hidden.mp4");

    EXPECT_THAT(expand({hidden}), ElementsAre(hidden));
}

TEST(Expand, FindsFilesOfAnyKindAtAllDepths) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mp4");
    const auto b = writeFile(folder.path() / "sub" / "b.mov");
    const auto c = writeFile(folder.path() / "sub" / "sub" / "notes");

    EXPECT_THAT(expand({folder.path()}), UnorderedElementsAre(a, b, c));
}

TEST(Expand, GivesNothingForAnEmptyFolder) {
    const TempFolder folder;
    fs::create_directory(folder.path() / "empty");

    EXPECT_THAT(expand({folder.path()}), IsEmpty());
}

TEST(Expand, SkipsHiddenFilesAndFolders) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mp4");
    writeFile(folder.path() / ".hidden.mp4");
    writeFile(folder.path() / ".cache" / "b.mov");

    EXPECT_THAT(expand({folder.path()}), ElementsAre(a));
}

TEST(Expand, WalksAHiddenFolderThatIsNamedItself) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / ".films" / "a.mp4");

    EXPECT_THAT(expand({folder.path() / ".films"}), ElementsAre(a));
}

TEST(Expand, SkipsTheContentsOfPackages) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mp4");
    for (const char* package :
         {"Player.app", "Part.bundle", "Kit.framework", "Trip.photoslibrary", "Film.fcpbundle",
          "Letter.rtfd", "SHOUTED.APP", "Mixed.PhotosLibrary"})
        writeFile(folder.path() / package / "Contents" / "inside.mov");

    EXPECT_THAT(expand({folder.path()}), ElementsAre(a));
}

TEST(Expand, WalksFoldersWhoseNamesOnlyResemblePackages) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "app" / "a.mov");
    const auto b = writeFile(folder.path() / "My.apps" / "b.mov");
    const auto c = writeFile(folder.path() / "Holiday.app.old" / "c.mov");

    EXPECT_THAT(expand({folder.path()}), UnorderedElementsAre(a, b, c));
}

TEST(Expand, TakesAFileWithTheExtensionOfAPackage) {
    const TempFolder folder;
    const auto file = writeFile(folder.path() / "slides.key");

    EXPECT_THAT(expand({folder.path()}), ElementsAre(file));
}

TEST(Expand, WalksAPackageThatIsNamedItself) {
    const TempFolder folder;
    const auto file = writeFile(folder.path() / "Trip.photoslibrary" / "originals" / "a.mov");

    EXPECT_THAT(expand({folder.path() / "Trip.photoslibrary"}), ElementsAre(file));
}

TEST(Expand, NeitherFollowsNorTakesLinksInsideAFolder) {
    const TempFolder folder;
    const auto outside = writeFile(folder.path() / "outside" / "a.mov");
    const auto inside = writeFile(folder.path() / "dropped" / "b.mov");
    fs::create_symlink(outside, folder.path() / "dropped" / "file-link.mov");
    fs::create_directory_symlink(folder.path() / "outside", folder.path() / "dropped" / "link");
    fs::create_directory_symlink(folder.path() / "dropped", folder.path() / "dropped" / "loop");
    fs::create_symlink("nowhere", folder.path() / "dropped" / "dangling.mov");

    EXPECT_THAT(expand({folder.path() / "dropped"}), ElementsAre(inside));
}

TEST(Expand, WalksALinkToAFolderThatIsNamedItself) {
    const TempFolder folder;
    writeFile(folder.path() / "films" / "a.mov");
    fs::create_directory_symlink(folder.path() / "films", folder.path() / "link");

    EXPECT_THAT(expand({folder.path() / "link"}), ElementsAre(folder.path() / "link" / "a.mov"));
}

TEST(Expand, KeepsALinkToAFileThatIsNamedItself) {
    const TempFolder folder;
    const fs::path link = folder.path() / "link.mov";
    fs::create_symlink(writeFile(folder.path() / "a.mov"), link);

    EXPECT_THAT(expand({link}), ElementsAre(link));
}

TEST(Expand, LeavesOutEntriesThatAreNotRegularFiles) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mov");
    ASSERT_EQ(::mkfifo((folder.path() / "pipe.mov").c_str(), 0600), 0);

    EXPECT_THAT(expand({folder.path()}), ElementsAre(a));
}

TEST(Expand, KeepsTheOrderOfTheWalk) {
    const TempFolder folder;
    for (int i = 0; i < 20; ++i)
        writeFile(folder.path() / (std::to_string(i * 7919 % 20) + ".mov"));

    EXPECT_EQ(expand({folder.path()}), listing(folder.path()));
}

TEST(Expand, TakesTheFilesOfASubfolderWhereTheWalkMeetsIt) {
    const TempFolder folder;
    for (int i = 0; i < 9; ++i) {
        writeFile(folder.path() / ("f" + std::to_string(i)));
        writeFile(folder.path() / ("d" + std::to_string(i)) / "inside");
    }
    std::vector<fs::path> expected;
    for (const fs::path& entry : listing(folder.path()))
        expected.push_back(fs::is_directory(entry) ? entry / "inside" : entry);

    EXPECT_EQ(expand({folder.path()}), expected);
}

TEST(Expand, KeepsTheOrderOfFilesAndFoldersNamed) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mov");
    const auto b = writeFile(folder.path() / "films" / "b.mov");
    const auto c = writeFile(folder.path() / "c.mov");

    EXPECT_THAT(expand({c, folder.path() / "films", a}), ElementsAre(c, b, a));
}

TEST(Expand, KeepsEveryByteOfAName) {
    const TempFolder folder;
    const auto file = writeFile(folder.path() / "caf\xE9 \"1\"\n: %03d.mov");

    EXPECT_THAT(expand({folder.path()}), ElementsAre(file));
}

TEST(Expand, GoesOnPastASubfolderThatMayNotBeRead) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mov");
    writeFile(folder.path() / "closed" / "b.mov");
    const auto c = writeFile(folder.path() / "open" / "c.mov");
    fs::permissions(folder.path() / "closed", fs::perms::none);
    {
        const test::WithoutPrivileges ordinary(folder.path());

        EXPECT_THAT(expand({folder.path()}), UnorderedElementsAre(a, c));
    }
    fs::permissions(folder.path() / "closed", fs::perms::owner_all);
}

TEST(Expand, GivesNothingForAFolderThatMayNotBeRead) {
    const TempFolder folder;
    writeFile(folder.path() / "closed" / "b.mov");
    fs::permissions(folder.path() / "closed", fs::perms::none);
    {
        const test::WithoutPrivileges ordinary(folder.path());

        EXPECT_THAT(expand({folder.path() / "closed"}), IsEmpty());
    }
    fs::permissions(folder.path() / "closed", fs::perms::owner_all);
}

TEST(Expand, GoesOnPastASubfolderThatLiesTooDeepToBeNamed) {
    const TempFolder folder;
    const auto a = writeFile(folder.path() / "a.mov");
    const auto b = writeFile(folder.path() / "sub" / "b.mov");
    nestFolders(folder.path(), std::string(255, 'n'), 20);

    EXPECT_THAT(expand({folder.path()}), UnorderedElementsAre(a, b));
}

TEST(Expand, ReachesFilesDeeperThanFoldersCanBeOpenAtATime) {
    const TempFolder folder;
    nestFolders(folder.path(), "n", 100);
    fs::path deepest = folder.path();
    for (int i = 0; i < 100; ++i)
        deepest /= "n";
    const auto file = writeFile(deepest / "a.mov");

    const FewOpenFiles limit(64);
    EXPECT_THAT(expand({folder.path()}), ElementsAre(file));
}

} // namespace
} // namespace boxlift
