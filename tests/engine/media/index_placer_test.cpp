#include "engine/media/index_rewriter.h"

#include <gtest/gtest.h>

#include "engine/media/box_writer.h"
#include "engine/media/error.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

using test::box;
using test::longBox;

/// "ftyp", and what else belongs in front of the index.
const std::string start = box("ftyp", "kind");
const std::string index = box("moov", box("free", "something"));
const std::string added = box("meta", "added");
const std::string grownIndex = box("moov", box("free", "something") + added);

class IndexRewriterTest : public testing::Test {
protected:
    std::string rewritten(const std::string& contents, std::size_t reserved) const {
        IndexChanges changes;
        changes.movie.assign(added.begin(), added.end());
        const auto path = m_folder.path() / "out";
        std::filesystem::remove(path);
        const auto file = OutputFile::create(path);
        EXPECT_EQ(file->writeAt(0, std::as_bytes(std::span(contents))), 0);
        rewriteIndex(*file, static_cast<std::int64_t>(contents.size()),
                     static_cast<std::int64_t>(reserved), changes);
        file->publish();
        return boxlift::test::readFile(path);
    }

private:
    boxlift::test::TempFolder m_folder;
};

} // namespace

TEST_F(IndexRewriterTest, GrowsAnIndexPastTheEnd) {
    EXPECT_EQ(rewritten(start + box("mdat", "media") + index, 0),
              start + box("mdat", "media") + grownIndex);
    EXPECT_EQ(rewritten(start + longBox("mdat", "media") + index, 0),
              start + longBox("mdat", "media") + grownIndex);
}

TEST_F(IndexRewriterTest, GrowsAnIndexInFrontIntoTheReservedBytes) {
    const std::string room(added.size(), 'x');
    EXPECT_EQ(rewritten(room + start + index + box("mdat", "media"), room.size()),
              start + grownIndex + box("mdat", "media"));
}

TEST_F(IndexRewriterTest, FillsWhatIsLeftOfTheReservedBytes) {
    const std::string room(added.size() + 20, 'x');
    EXPECT_EQ(rewritten(room + start + index + box("mdat", "media"), room.size()),
              start + grownIndex + box("free", std::string(12, '\0')) + box("mdat", "media"));
}

TEST_F(IndexRewriterTest, NeverWritesOverTheMedia) {
    const std::string room(added.size() - 1, 'x');
    EXPECT_THROW(rewritten(room + start + index + box("mdat", "media"), room.size()), Error);
    EXPECT_THROW(rewritten(start + index + box("mdat", "media"), 0), Error);
}

TEST_F(IndexRewriterTest, NeedsAnIndex) {
    EXPECT_THROW(rewritten(start + box("mdat", "media"), 0), Error);
    EXPECT_THROW(rewritten("", 0), Error);
    EXPECT_THROW(rewritten(start + "garbage that is no box", 0), Error);
}

} // namespace boxlift::media
