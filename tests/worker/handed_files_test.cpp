#include "worker/handed_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "support/temp_folder.h"

namespace boxlift::worker {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

Descriptor open(const fs::path& path, int flags) {
    return Descriptor(::open(path.c_str(), flags | O_CLOEXEC));
}

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

class HandedFilesTest : public testing::Test {
protected:
    const test::TempFolder m_folder;
    const fs::path m_source = writeFile(m_folder.path() / "in", "0123456789");
    const fs::path m_output = writeFile(m_folder.path() / "out");
    const HandedFiles m_files{open(m_source, O_RDONLY), open(m_output, O_RDWR)};
};

} // namespace

TEST_F(HandedFilesTest, ReadsTheSourceWhateverItsNameIs) {
    const auto first = m_files.openInput("/nowhere/film.mov");
    const auto second = m_files.openInput("/nowhere/film.mov");
    EXPECT_EQ(first->size(), 10);
    EXPECT_EQ(first->path(), "/nowhere/film.mov");
    std::array<std::byte, 4> bytes{};
    EXPECT_EQ(second->readAt(2, bytes), 4);
    EXPECT_EQ(bytes.front(), std::byte{'2'});
}

TEST_F(HandedFilesTest, RefusesASourceThatIsNoFile) {
    const HandedFiles files(open(m_folder.path(), O_RDONLY));
    EXPECT_THROW(files.openInput("/nowhere"), media::Error);
    EXPECT_THROW(HandedFiles(Descriptor()).openInput("/nowhere"), media::Error);
}

TEST_F(HandedFilesTest, BeginsEachAttemptAnew) {
    m_files.createOutput("/nowhere/out.mp4")->writeAt(0, bytesOf("a failed attempt"));
    EXPECT_EQ(m_files.createOutput("/nowhere/out.mp4")->writeAt(0, bytesOf("done")), 0);
    EXPECT_EQ(readFile(m_output), "done");
}

TEST_F(HandedFilesTest, LeavesTheNameToWhoHandedOverTheFile) {
    const auto output = m_files.createOutput(m_folder.path() / "name");
    output->writeAt(0, bytesOf("done"));
    output->sync();
    output->publish();
    EXPECT_FALSE(fs::exists(m_folder.path() / "name"));
    m_files.clearOutput(m_output, m_source);
    EXPECT_EQ(readFile(m_output), "done");
}

TEST_F(HandedFilesTest, HasNoOutputWhereItWasHandedNone) {
    EXPECT_THROW(HandedFiles(open(m_source, O_RDONLY)).createOutput("/nowhere"), media::Error);
}

} // namespace boxlift::worker
