#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "engine/media/passthrough_copier.h"
#include "engine/media/passthrough_session.h"
#include "engine/media/source_fixture.h"
#include "support/media_boxes.h"

namespace boxlift::media {

namespace {

using namespace std::chrono_literals;
using test::audioOf;
using test::mediaOf;
using test::namesIn;
using Names = std::vector<std::string>;
using Status = ExportSession::Status;

/// More than is read of an output to find out what is in it.
constexpr std::size_t blockOfMedia = 4096;

/// Tells of every block of media that is read back, which is done only to move it.
class WatchedFile : public OutputFile {
public:
    WatchedFile(OutputFile&& file, const std::function<void()>& onBlock)
        : OutputFile(std::move(file)), m_onBlock(onBlock) {}

    std::int64_t readAt(std::int64_t offset, std::span<std::byte> into) const noexcept override {
        if (into.size() > blockOfMedia)
            m_onBlock();
        return OutputFile::readAt(offset, into);
    }

private:
    const std::function<void()>& m_onBlock;
};

class WatchedFiles : public FileSystem {
public:
    explicit WatchedFiles(std::function<void()> onBlock) : m_onBlock(std::move(onBlock)) {}

    std::shared_ptr<const InputFile> openInput(const std::filesystem::path& path) const override {
        return InputFile::open(path);
    }
    std::unique_ptr<OutputFile> createOutput(const std::filesystem::path& path) const override {
        return std::make_unique<WatchedFile>(std::move(*OutputFile::create(path)), m_onBlock);
    }
    void clearOutput(const std::filesystem::path& output,
                     const std::filesystem::path& source) const override {
        media::clearOutput(output, source);
    }

private:
    std::function<void()> m_onBlock;
};

/// Copies a file that is too small for room in front, so that its media moves, in several blocks.
class PassthroughMovingTest : public test::SourceTest {
protected:
    /// False when an encoder is missing.
    bool begin() {
        auto spec = mediaOf("mov", {}, {audioOf("pcm_s16le")});
        spec.seconds = 40;
        if (!make(spec))
            return false;
        m_session = std::make_unique<PassthroughSession>(test::selectAll(source()));
        m_session->setFileSystem(m_files);
        m_session->setOutputUrl(output());
        m_session->setOutputFileType(FileType::AVFileTypeQuickTimeMovie);
        m_session->setShouldOptimizeForNetworkUse(true);
        return true;
    }

    /// On the session's thread, before each block.
    std::function<void()> m_onBlock = [] {};
    const WatchedFiles m_files{[this] {
        m_moving.push_back(m_session->progress());
        m_onBlock();
    }};
    /// The session's progress as each block of the media is about to move.
    std::vector<float> m_moving;
    std::unique_ptr<PassthroughSession> m_session;
};

} // namespace

TEST_F(PassthroughMovingTest, ShowsInTheProgress) {
    if (!begin())
        GTEST_SKIP() << missing();
    ASSERT_LT(std::filesystem::file_size(source()), 8U << 20);
    std::vector<float> seen;
    m_session->exportAsynchronously();
    while (!m_session->waitUntilFinished(1ms))
        seen.push_back(m_session->progress());
    ASSERT_EQ(m_session->status(), Status::completed);
    EXPECT_EQ(boxlift::test::topLevelBoxTypes(output()), (Names{"ftyp", "moov", "mdat"}));
    EXPECT_TRUE(std::ranges::is_sorted(seen));

    ASSERT_GT(m_moving.size(), 4U);
    const float copied = m_moving.front();
    EXPECT_GT(copied, 0.7F);
    EXPECT_LE(copied, 0.75F);
    for (std::size_t i = 1; i < m_moving.size(); ++i)
        EXPECT_GT(m_moving[i], m_moving[i - 1]);
    EXPECT_GT(m_moving.back(), 0.9F);
    EXPECT_LT(m_moving.back(), 1);
    EXPECT_EQ(m_session->progress(), 1);
}

TEST_F(PassthroughMovingTest, EndsAtOnceWhenItIsCancelled) {
    if (!begin())
        GTEST_SKIP() << missing();
    constexpr std::size_t last = 3;
    m_onBlock = [this] {
        if (m_moving.size() == last)
            m_session->cancelExport();
    };
    EXPECT_EQ(test::finish(*m_session).status, Status::cancelled);
    EXPECT_EQ(m_moving.size(), last);
    EXPECT_EQ(m_session->progress(), m_moving.back());
    EXPECT_EQ(namesIn(folder()), Names{"source"});
}

} // namespace boxlift::media
