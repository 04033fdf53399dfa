#include "engine/media/write_behind.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "engine/media/child_process.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

/// More than all that may wait.
constexpr std::size_t manyBlocks = 12 << 20;

class WriteBehindTest : public testing::Test {
protected:
    static int write(WriteBehind& writer, std::size_t offset, std::string_view text) {
        return writer.write(static_cast<std::int64_t>(offset), std::as_bytes(std::span(text)));
    }

    /// In pieces that fit no block.
    static int writePieces(WriteBehind& writer, std::string_view text) {
        constexpr std::size_t pieceSize = 77'777;
        int error = 0;
        for (std::size_t at = 0; at < text.size() && error == 0; at += pieceSize)
            error = write(writer, at, text.substr(at, pieceSize));
        return error;
    }

    /// No two blocks of it are alike.
    static std::string longText() {
        std::string text(manyBlocks, '\0');
        for (std::size_t i = 0; i < text.size(); ++i)
            text[i] = static_cast<char>((i * 2'654'435'761U) >> 13);
        return text;
    }

    std::string contents() const {
        std::string text(2 * manyBlocks, '\0');
        const auto count = file().readAt(0, std::as_writable_bytes(std::span(text)));
        text.resize(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
        return text;
    }

    OutputFile& file() const { return *m_file; }

private:
    boxlift::test::TempFolder m_folder;
    std::unique_ptr<OutputFile> m_file = OutputFile::create(m_folder.path() / "out.mp4");
};

TEST_F(WriteBehindTest, WritesAllThatItIsGivenInItsPlace) {
    const std::string text = longText();
    WriteBehind writer(file());
    EXPECT_EQ(writePieces(writer, text), 0);
    EXPECT_EQ(writer.finish(), 0);
    EXPECT_EQ(contents(), text);
    EXPECT_EQ(file().bytesWritten(), static_cast<std::int64_t>(text.size()));
}

TEST_F(WriteBehindTest, KeepsTheOrderOfWritesToTheSamePlace) {
    std::string text = longText();
    WriteBehind writer(file());
    EXPECT_EQ(writePieces(writer, text), 0);
    EXPECT_EQ(write(writer, 5, "first"), 0);
    EXPECT_EQ(write(writer, 7, "then"), 0);
    EXPECT_EQ(write(writer, text.size(), "end"), 0);
    EXPECT_EQ(writer.finish(), 0);
    text.replace(5, 6, "fithen");
    EXPECT_EQ(contents(), text + "end");
}

TEST_F(WriteBehindTest, PutsSmallWritesTogether) {
    WriteBehind writer(file());
    EXPECT_EQ(write(writer, 0, "one"), 0);
    EXPECT_EQ(write(writer, 3, "two"), 0);
    EXPECT_EQ(file().bytesWritten(), 0);
    EXPECT_EQ(writer.finish(), 0);
    EXPECT_EQ(contents(), "onetwo");
}

TEST_F(WriteBehindTest, WritesAtOnceWhenItHasFinished) {
    WriteBehind writer(file());
    EXPECT_EQ(writer.finish(), 0);
    EXPECT_EQ(write(writer, 2, "later"), 0);
    EXPECT_EQ(contents(), std::string("\0\0later", 7));
}

TEST_F(WriteBehindTest, TellsAtTheLatestInTheEndThatTheDiskIsFull) {
    EXPECT_TRUE(test::passesInChild([this] {
        test::limitFileSize(100);
        WriteBehind writer(file());
        EXPECT_EQ(write(writer, 0, std::string(101, 'x')), 0);
        EXPECT_EQ(writer.finish(), EFBIG);
        EXPECT_EQ(writer.finish(), EFBIG);
    }));
}

TEST_F(WriteBehindTest, WritesNothingMoreAfterAnError) {
    EXPECT_TRUE(test::passesInChild([this] {
        test::limitFileSize(3 << 20);
        WriteBehind writer(file());
        EXPECT_EQ(writePieces(writer, longText()), EFBIG);
        EXPECT_EQ(write(writer, 0, "again"), EFBIG);
        EXPECT_EQ(writer.finish(), EFBIG);
        EXPECT_EQ(file().bytesWritten(), 3 << 20);
    }));
}

TEST_F(WriteBehindTest, DropsWhatWaitsWhenItGoes) {
    {
        WriteBehind writer(file());
        EXPECT_EQ(write(writer, 0, "never"), 0);
    }
    EXPECT_EQ(contents(), "");
    {
        WriteBehind writer(file());
        EXPECT_EQ(writePieces(writer, longText()), 0);
    }
    EXPECT_LE(file().bytesWritten(), static_cast<std::int64_t>(manyBlocks));
}

} // namespace

} // namespace boxlift::media
