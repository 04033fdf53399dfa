#include "drive/standard_streams.h"

#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace boxlift::drive {
namespace {

/// A pipe of one's own; both ends are closed at the end.
class Pipe {
public:
    Pipe() { EXPECT_EQ(::pipe(m_ends), 0); }
    ~Pipe() {
        closeReader();
        ::close(m_ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }
    void closeReader() {
        if (m_ends[0] >= 0)
            ::close(m_ends[0]);
        m_ends[0] = -1;
    }

private:
    int m_ends[2] = {-1, -1};
};

std::string readExactly(int descriptor, std::size_t size) {
    std::string result(size, '\0');
    std::size_t have = 0;
    while (have < size) {
        const ssize_t count = ::read(descriptor, result.data() + have, size - have);
        if (count <= 0)
            break;
        have += static_cast<std::size_t>(count);
    }
    return result;
}

TEST(WriteAll, WritesTheText) {
    Pipe pipe;

    EXPECT_TRUE(writeAll(pipe.writer(), "a line\n"));
    EXPECT_EQ(readExactly(pipe.reader(), 7), "a line\n");
}

TEST(WriteAll, WaitsWhereTheDescriptorDoesNot) {
    Pipe pipe;
    ASSERT_EQ(::fcntl(pipe.writer(), F_SETFL, O_NONBLOCK), 0);
    // More than a pipe holds.
    const std::string text(1 << 20, 'x');
    bool written = false;
    std::thread writer([&] { written = writeAll(pipe.writer(), text); });
    const std::string received = readExactly(pipe.reader(), text.size());
    writer.join();

    EXPECT_TRUE(written);
    EXPECT_EQ(received, text);
}

TEST(WriteAll, FailsWhenTheReaderHasGone) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    Pipe pipe;
    pipe.closeReader();

    EXPECT_FALSE(writeAll(pipe.writer(), "a line\n"));
    std::signal(SIGPIPE, before);
}

TEST(WriteAll, FailsOnADescriptorThatIsNotOpen) {
    EXPECT_FALSE(writeAll(-1, "a line\n"));
}

} // namespace
} // namespace boxlift::drive
