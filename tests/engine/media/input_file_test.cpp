#include "engine/media/input_file.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/media/error.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

namespace fs = std::filesystem;

class InputFileTest : public testing::Test {
protected:
    fs::path path(const char* name) const { return m_folder.path() / name; }
    fs::path make(std::string_view content) const {
        return boxlift::test::writeFile(path("in"), content);
    }

private:
    boxlift::test::TempFolder m_folder;
};

std::string read(const InputFile& file, std::int64_t offset, std::size_t size) {
    std::string text(size, '?');
    const auto count = file.readAt(offset, std::as_writable_bytes(std::span(text)));
    return count < 0 ? "error " + std::to_string(count)
                     : text.substr(0, static_cast<std::size_t>(count));
}

void expectUnreadable(const fs::path& path) {
    try {
        InputFile::open(path);
        ADD_FAILURE() << path << " opens";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::sourceUnreadable);
        EXPECT_NE(error.technical().find(path.native()), std::string::npos);
    }
}

} // namespace

TEST_F(InputFileTest, ReadsAnywhere) {
    const auto file = InputFile::open(make("0123456789"));
    EXPECT_EQ(file->size(), 10);
    EXPECT_EQ(file->path(), path("in"));
    EXPECT_EQ(read(*file, 0, 4), "0123");
    EXPECT_EQ(read(*file, 6, 4), "6789");
    EXPECT_EQ(read(*file, 2, 1), "2");
}

TEST_F(InputFileTest, ReadsLessOnlyAtTheEnd) {
    const auto file = InputFile::open(make("0123456789"));
    EXPECT_EQ(read(*file, 8, 4), "89");
    EXPECT_EQ(read(*file, 10, 4), "");
    EXPECT_EQ(read(*file, 1'000'000'000'000, 4), "");
}

TEST_F(InputFileTest, OpensAnEmptyFile) {
    const auto file = InputFile::open(make(""));
    EXPECT_EQ(file->size(), 0);
    EXPECT_EQ(read(*file, 0, 4), "");
}

TEST_F(InputFileTest, FailsToReadWhatWasCutOffMeanwhile) {
    const auto file = InputFile::open(make("0123456789"));
    fs::resize_file(path("in"), 5);
    EXPECT_EQ(read(*file, 0, 5), "01234");
    EXPECT_EQ(read(*file, 3, 4), "error " + std::to_string(-EIO));
    EXPECT_EQ(read(*file, 8, 1), "error " + std::to_string(-EIO));
}

TEST_F(InputFileTest, DoesNotSeeWhatIsAddedMeanwhile) {
    const auto file = InputFile::open(make("01234"));
    make("0123456789");
    EXPECT_EQ(file->size(), 5);
    EXPECT_EQ(read(*file, 0, 10), "01234");
}

TEST_F(InputFileTest, KeepsReadingAFileThatHasLostItsName) {
    const auto file = InputFile::open(make("0123456789"));
    fs::remove(path("in"));
    EXPECT_EQ(read(*file, 0, 10), "0123456789");
}

TEST_F(InputFileTest, FollowsALinkToAFile) {
    make("0123456789");
    fs::create_symlink("in", path("link"));
    EXPECT_EQ(read(*InputFile::open(path("link")), 0, 10), "0123456789");
}

TEST_F(InputFileTest, RefusesWhatIsNotARegularFile) {
    expectUnreadable(path("missing"));
    fs::create_directory(path("folder"));
    expectUnreadable(path("folder"));
    expectUnreadable("/dev/null");
    fs::create_symlink("missing", path("dangling"));
    expectUnreadable(path("dangling"));
}

TEST_F(InputFileTest, DoesNotWaitForAPipesWriter) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    expectUnreadable(path("pipe"));
}

TEST_F(InputFileTest, AdoptsADescriptor) {
    make("0123456789");
    const int descriptor = ::open(path("in").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    {
        const auto file = InputFile::adopt(descriptor, "another name");
        EXPECT_EQ(file->path(), "another name");
        EXPECT_EQ(read(*file, 5, 5), "56789");
    }
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST_F(InputFileTest, ClosesADescriptorThatItRefuses) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    EXPECT_THROW(InputFile::adopt(ends[0], "pipe"), Error);
    EXPECT_EQ(::fcntl(ends[0], F_GETFD), -1);
    ::close(ends[1]);
}

} // namespace boxlift::media
