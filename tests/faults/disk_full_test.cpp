#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "input/child.h"
#include "input/long_conversion.h"

namespace boxlift::test {

namespace {

/// From here on no file of this process and its workers can grow beyond so many bytes; like a full
/// disk, but without one.
void limitFileSize(std::uintmax_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

} // namespace

class DiskFull : public LongConversion {
protected:
    /// A copy for which there is no room falls back to encoding, for which there may be.
    bool isSmallerWhenEncoded() const { return m_request.target == Target::mov; }
};

TEST_P(DiskFull, AtEveryTenthOfTheOutputIsAnErrorThatLeavesNothing) {
    ASSERT_TRUE(convert(m_request).mode);
    const auto size = std::filesystem::file_size(m_request.output);
    std::filesystem::remove(m_request.output);
    for (unsigned tenth = 0; tenth < 10; ++tenth) {
        const auto room = size * tenth / 10;
        const std::string sentence = inChild(Rights::asTheyAre, [&] {
            limitFileSize(room);
            return convert(m_request).sentence;
        });
        if (isSmallerWhenEncoded() && sentence.empty()) {
            EXPECT_LE(std::filesystem::file_size(m_request.output), room);
            std::filesystem::remove(m_request.output);
            continue;
        }
        EXPECT_EQ(sentence, "The disk is full. Make room and try again.") << tenth;
        EXPECT_EQ(namesIn(m_out), std::vector<std::string>()) << tenth;
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, DiskFull, testing::ValuesIn(shorterWays), LongWay::nameOf);

} // namespace boxlift::test
