#include "engine/media/output_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "engine/media/child_process.h"
#include "engine/media/error.h"
#include "engine/media/passthrough_copier.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

namespace fs = std::filesystem;
using boxlift::test::readFile;
using boxlift::test::writeFile;
using test::namesIn;
using Names = std::vector<std::string>;

class OutputFileTest : public testing::Test {
protected:
    const fs::path& folder() const { return m_folder.path(); }
    fs::path path(const char* name = "out.mp4") const { return folder() / name; }

private:
    boxlift::test::TempFolder m_folder;
};

/// Where files have no name until they are published: where there are no unnamed files.
class HiddenOutputFileTest : public OutputFileTest {
protected:
    static void inChild(const std::function<void()>& body) {
        EXPECT_TRUE(test::passesInChild([&] {
            ASSERT_TRUE(test::forbidUnnamedFiles());
            body();
        }));
    }
};

int write(OutputFile& file, std::int64_t offset, std::string_view text) {
    return file.writeAt(offset, std::as_bytes(std::span(text)));
}

std::optional<ErrorKind> kindOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

std::optional<ErrorKind> kindOfCreating(const fs::path& path) {
    return kindOf([&] { OutputFile::create(path); });
}

/// Creates and publishes.
void publish(const fs::path& path, std::string_view content) {
    const auto file = OutputFile::create(path);
    EXPECT_EQ(write(*file, 0, content), 0);
    file->publish();
}

mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

constexpr const char* staleName = ".boxlift-0123456789abcdef.part";

} // namespace

TEST_F(OutputFileTest, HasNoNameUntilItIsPublished) {
    const auto file = OutputFile::create(path());
    EXPECT_EQ(file->path(), path());
    EXPECT_EQ(write(*file, 0, "whole"), 0);
    EXPECT_EQ(namesIn(folder()), Names());
    file->publish();
    EXPECT_EQ(namesIn(folder()), Names{"out.mp4"});
    EXPECT_EQ(readFile(path()), "whole");
}

TEST_F(OutputFileTest, LeavesNothingWhenItIsNotPublished) {
    EXPECT_EQ(write(*OutputFile::create(path()), 0, "half"), 0);
    EXPECT_EQ(namesIn(folder()), Names());
}

TEST_F(OutputFileTest, WritesAndReadsAnywhere) {
    const auto file = OutputFile::create(path());
    EXPECT_EQ(write(*file, 4, "5678"), 0);
    EXPECT_EQ(write(*file, 0, "1234"), 0);
    EXPECT_EQ(write(*file, 2, "--"), 0);
    std::string text(8, '?');
    EXPECT_EQ(file->readAt(2, std::as_writable_bytes(std::span(text))), 6);
    EXPECT_EQ(text, "--5678??");
    file->publish();
    EXPECT_EQ(readFile(path()), "12--5678");
}

TEST_F(OutputFileTest, ReplacesNothingThatAppearedMeanwhile) {
    const auto file = OutputFile::create(path());
    writeFile(path(), "theirs");
    EXPECT_EQ(kindOf([&] { file->publish(); }), ErrorKind::nameTaken);
    EXPECT_EQ(readFile(path()), "theirs");
    EXPECT_EQ(namesIn(folder()), Names{"out.mp4"});
}

TEST_F(OutputFileTest, DoesNotFollowADanglingLinkThatAppearedMeanwhile) {
    const auto file = OutputFile::create(path());
    fs::create_symlink("elsewhere", path());
    EXPECT_EQ(kindOf([&] { file->publish(); }), ErrorKind::nameTaken);
    EXPECT_TRUE(fs::is_symlink(path()));
    EXPECT_FALSE(fs::exists(path("elsewhere")));
}

TEST_F(OutputFileTest, RefusesATakenNameBeforeTheWork) {
    writeFile(path("file"));
    fs::create_directory(path("folder"));
    fs::create_symlink("nowhere", path("link"));
    for (const char* name : {"file", "folder", "link"})
        EXPECT_EQ(kindOfCreating(path(name)), ErrorKind::nameTaken) << name;
}

TEST_F(OutputFileTest, RefusesANameThatIsTooLongBeforeTheWork) {
    const std::string longest(255, 'x');
    EXPECT_EQ(kindOfCreating(path(longest.c_str())), std::nullopt);
    EXPECT_EQ(kindOfCreating(path((longest + "x").c_str())), ErrorKind::unknown);
}

TEST_F(OutputFileTest, NeedsAFolder) {
    writeFile(path("file"));
    EXPECT_EQ(kindOfCreating(path("missing/out.mp4")), ErrorKind::notPermitted);
    EXPECT_EQ(kindOfCreating(path("file/out.mp4")), ErrorKind::notPermitted);
}

TEST_F(OutputFileTest, KeepsEveryByteOfAName) {
    const fs::path odd = path("-o:%03d \xff\n.mp4");
    publish(odd, "odd");
    EXPECT_EQ(readFile(odd), "odd");
}

TEST_F(OutputFileTest, GetsTheUsersUsualPermissions) {
    const mode_t before = ::umask(027);
    publish(path("group"), "");
    ::umask(0);
    publish(path("everyone"), "");
    ::umask(before);
    EXPECT_EQ(modeOf(path("group")), 0640U);
    EXPECT_EQ(modeOf(path("everyone")), 0666U);
}

TEST_F(OutputFileTest, SaysThatAFolderCannotBeWrittenTo) {
    fs::permissions(folder(), fs::perms(0555));
    EXPECT_TRUE(test::passesInChild([this] {
        test::becomeNobody();
        EXPECT_EQ(kindOfCreating(path()), ErrorKind::notPermitted);
    }));
    fs::permissions(folder(), fs::perms(0755));
    EXPECT_EQ(namesIn(folder()), Names());
}

TEST_F(OutputFileTest, SaysThatTheDiskIsFull) {
    EXPECT_TRUE(test::passesInChild([this] {
        test::limitFileSize(1000);
        const auto file = OutputFile::create(path());
        EXPECT_EQ(write(*file, 0, std::string(1000, 'x')), 0);
        const int error = write(*file, 1000, "more");
        EXPECT_EQ(error, EFBIG);
        EXPECT_EQ(kindOf([&] { throwWriteError(error, "write", path()); }), ErrorKind::noSpace);
    }));
    EXPECT_EQ(namesIn(folder()), Names());
}

TEST_F(HiddenOutputFileTest, HasAHiddenNameUntilItIsPublished) {
    inChild([this] {
        const mode_t before = ::umask(027);
        const auto file = OutputFile::create(path());
        ::umask(before);
        EXPECT_EQ(write(*file, 0, "whole"), 0);
        const Names names = namesIn(folder());
        ASSERT_EQ(names.size(), 1U);
        EXPECT_TRUE(names[0].starts_with(".boxlift-"));
        EXPECT_TRUE(names[0].ends_with(".part"));
        file->publish();
        EXPECT_EQ(namesIn(folder()), Names{"out.mp4"});
        EXPECT_EQ(readFile(path()), "whole");
        EXPECT_EQ(modeOf(path()), 0640U);
    });
}

TEST_F(HiddenOutputFileTest, LeavesNothingWhenItIsNotPublished) {
    inChild([this] {
        EXPECT_EQ(write(*OutputFile::create(path()), 0, "half"), 0);
        EXPECT_EQ(namesIn(folder()), Names());
    });
}

TEST_F(HiddenOutputFileTest, ReplacesNothingThatAppearedMeanwhile) {
    inChild([this] {
        {
            const auto file = OutputFile::create(path());
            writeFile(path(), "theirs");
            EXPECT_EQ(kindOf([&] { file->publish(); }), ErrorKind::nameTaken);
        }
        EXPECT_EQ(readFile(path()), "theirs");
        EXPECT_EQ(namesIn(folder()), Names{"out.mp4"});
    });
}

TEST_F(HiddenOutputFileTest, SweepsWhatACrashLeft) {
    inChild([this] {
        writeFile(path(staleName), "half");
        publish(path(), "whole");
        EXPECT_EQ(namesIn(folder()), Names{"out.mp4"});
    });
}

TEST_F(HiddenOutputFileTest, LeavesAnotherInstancesFileAlone) {
    inChild([this] {
        const auto first = OutputFile::create(path("first"));
        const auto second = OutputFile::create(path("second"));
        EXPECT_EQ(namesIn(folder()).size(), 2U);
        first->publish();
        second->publish();
        EXPECT_EQ(namesIn(folder()), (Names{"first", "second"}));
    });
}

TEST_F(HiddenOutputFileTest, LeavesEverybodyElsesFilesAlone) {
    const Names others{".boxlift-.part", ".boxlift-0123456789abcdef.part.txt",
                       ".boxlift-0123456789abcdeff.part", "boxlift-0123456789abcdef.part"};
    for (const std::string& name : others)
        writeFile(folder() / name);
    fs::create_directory(path(staleName));
    fs::create_symlink(".boxlift-.part", path(".boxlift-aaaaaaaaaaaaaaaa.part"));
    inChild([this] { EXPECT_EQ(write(*OutputFile::create(path()), 0, "x"), 0); });
    EXPECT_EQ(namesIn(folder()).size(), others.size() + 2);
}

TEST_F(OutputFileTest, IsClearedAway) {
    writeFile(path("source"), "source");
    writeFile(path(), "old");
    clearOutput(path(), path("source"));
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

TEST_F(OutputFileTest, IsClearedAwayAsALinkNotAsWhatTheLinkLeadsTo) {
    writeFile(path("source"), "source");
    writeFile(path("other"), "other");
    fs::create_symlink("other", path());
    clearOutput(path(), path("source"));
    EXPECT_EQ(namesIn(folder()), (Names{"other", "source"}));
    fs::create_symlink("nowhere", path());
    clearOutput(path(), path("source"));
    EXPECT_EQ(namesIn(folder()), (Names{"other", "source"}));
}

TEST_F(OutputFileTest, IsNotClearedAwayWhenItIsAFolder) {
    writeFile(path("source"), "source");
    fs::create_directory(path());
    clearOutput(path(), path("source"));
    EXPECT_TRUE(fs::is_directory(path()));
}

TEST_F(OutputFileTest, IsNotClearedAwayWhenItIsTheSource) {
    writeFile(path("source"), "source");
    clearOutput(path("source"), path("source"));
    fs::create_hard_link(path("source"), path("twin"));
    clearOutput(path("twin"), path("source"));
    fs::create_symlink("source", path("link"));
    clearOutput(path("source"), path("link"));
    EXPECT_EQ(namesIn(folder()), (Names{"link", "source", "twin"}));
    EXPECT_EQ(readFile(path("source")), "source");
}

TEST_F(OutputFileTest, IsClearedAwayEvenWhenTheSourceIsGone) {
    writeFile(path(), "old");
    clearOutput(path(), path("missing"));
    clearOutput(path("missing"), path("missing"));
    EXPECT_EQ(namesIn(folder()), Names());
}

} // namespace boxlift::media
