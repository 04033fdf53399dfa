#include "worker/protocol/channel.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "worker/protocol/message.h"
#include "worker/protocol/sockets.h"

namespace boxlift::worker {
namespace {

using std::chrono_literals::operator""ms;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

std::string textOf(const Channel::Message& message) {
    return {reinterpret_cast<const char*>(message.bytes.data()), message.bytes.size()};
}

class ChannelTest : public testing::Test {
protected:
    ChannelTest() : ChannelTest(connectedSockets()) {}

    /// Past the sending side's rules.
    void sendRaw(std::string_view bytes) const {
        ASSERT_EQ(::send(m_near.descriptor(), bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
    }

    Channel m_near;
    Channel m_far;

private:
    explicit ChannelTest(std::pair<Descriptor, Descriptor> ends)
        : m_near(std::move(ends.first), Channel::Takes::messages),
          m_far(std::move(ends.second), Channel::Takes::descriptorsToo) {}
};

bool isSameFile(int a, int b) {
    struct stat first {};
    struct stat second {};
    return ::fstat(a, &first) == 0 && ::fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

} // namespace

TEST_F(ChannelTest, DeliversMessagesOneByOne) {
    EXPECT_FALSE(m_far.receive());
    m_near.send(bytesOf("one"), {}, 0ms);
    m_near.send(bytesOf(""), {}, 0ms);
    m_near.send(bytesOf("three"), {}, 0ms);
    EXPECT_EQ(textOf(m_far.receive().value()), "one");
    EXPECT_EQ(textOf(m_far.receive().value()), "");
    EXPECT_EQ(textOf(m_far.receive().value()), "three");
    EXPECT_FALSE(m_far.receive());
}

TEST_F(ChannelTest, DeliversTheLongestMessage) {
    const std::string text(longestMessage, 'x');
    m_near.send(bytesOf(text), {}, 0ms);
    EXPECT_EQ(textOf(m_far.receive().value()), text);
}

TEST_F(ChannelTest, SendsNothingLonger) {
    EXPECT_THROW(m_near.send(bytesOf(std::string(longestMessage + 1, 'x')), {}, 0ms),
                 Channel::Broken);
}

TEST_F(ChannelTest, WaitsForTheRestOfAMessage) {
    const std::uint32_t size = 4;
    std::string frame(sizeof size, '\0');
    std::memcpy(frame.data(), &size, sizeof size);
    sendRaw(frame.substr(0, 2));
    EXPECT_FALSE(m_far.receive());
    sendRaw(frame.substr(2) + "bo");
    EXPECT_FALSE(m_far.receive());
    sendRaw("xl");
    EXPECT_EQ(textOf(m_far.receive().value()), "boxl");
}

TEST_F(ChannelTest, BreaksAtAMessageThatIsTooLong) {
    const auto size = static_cast<std::uint32_t>(longestMessage + 1);
    std::string frame(sizeof size, '\0');
    std::memcpy(frame.data(), &size, sizeof size);
    sendRaw(frame);
    EXPECT_THROW(m_far.receive(), Channel::Broken);
}

TEST_F(ChannelTest, PassesOpenFilesOn) {
    const Descriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const Descriptor folder(::open("/", O_RDONLY | O_CLOEXEC));
    m_near.send(bytesOf("files"), std::array{file.get(), folder.get()}, 0ms);
    const auto message = m_far.receive().value();
    ASSERT_EQ(message.descriptors.size(), 2U);
    EXPECT_TRUE(isSameFile(message.descriptors[0].get(), file.get()));
    EXPECT_TRUE(isSameFile(message.descriptors[1].get(), folder.get()));
    EXPECT_TRUE(::fcntl(message.descriptors[0].get(), F_GETFD) & FD_CLOEXEC);
}

TEST_F(ChannelTest, TakesNoOpenFilesWhereItIsNotToldTo) {
    const Descriptor file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    m_far.send(bytesOf("a file"), std::array{file.get()}, 0ms);
    const auto message = m_near.receive().value();
    EXPECT_EQ(textOf(message), "a file");
    EXPECT_TRUE(message.descriptors.empty());
}

TEST_F(ChannelTest, BreaksWhenTheOtherSideHasGone) {
    m_near.send(bytesOf("last"), {}, 0ms);
    m_near = Channel({}, Channel::Takes::messages);
    EXPECT_EQ(textOf(m_far.receive().value()), "last");
    EXPECT_THROW(m_far.receive(), Channel::Broken);
    // And raises no signal.
    EXPECT_THROW(m_far.send(bytesOf("more"), {}, 0ms), Channel::Broken);
}

TEST_F(ChannelTest, BreaksWhenNobodyReads) {
    const std::string text(longestMessage, 'x');
    EXPECT_THROW(
        {
            for (int i = 0; i < 1000; ++i)
                m_near.send(bytesOf(text), {}, 10ms);
        },
        Channel::Broken);
}

} // namespace boxlift::worker
