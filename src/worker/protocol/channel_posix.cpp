#include "worker/protocol/channel.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>

#include "worker/protocol/message.h"
#include "worker/protocol/sockets.h"

namespace boxlift::worker {

namespace {

using FrameSize = std::uint32_t;

/// Room for the descriptors of one message.
struct alignas(cmsghdr) Control {
    std::array<std::byte, CMSG_SPACE(Channel::mostDescriptors * sizeof(int))> bytes{};
};

[[noreturn]] void throwBroken(int error) {
    throw Channel::Broken(std::generic_category().message(error));
}

bool isPassing(int error) {
    return error == EINTR || error == EAGAIN || error == EWOULDBLOCK;
}

void attach(msghdr& header, Control& control, std::span<const int> descriptors) {
    if (descriptors.empty())
        return;
    header.msg_control = control.bytes.data();
    header.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
    cmsghdr* entry = CMSG_FIRSTHDR(&header);
    entry->cmsg_level = SOL_SOCKET;
    entry->cmsg_type = SCM_RIGHTS;
    entry->cmsg_len = CMSG_LEN(descriptors.size_bytes());
    std::memcpy(CMSG_DATA(entry), descriptors.data(), descriptors.size_bytes());
}

void detach(msghdr& header, std::vector<Descriptor>& into) {
    for (cmsghdr* entry = CMSG_FIRSTHDR(&header); entry; entry = CMSG_NXTHDR(&header, entry)) {
        if (entry->cmsg_level != SOL_SOCKET || entry->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (entry->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(entry) + i * sizeof(int), sizeof(int));
            into.emplace_back(descriptor);
        }
    }
}

std::vector<std::byte> framed(std::span<const std::byte> bytes) {
    const auto size = static_cast<FrameSize>(bytes.size());
    const auto head = std::as_bytes(std::span(&size, 1));
    std::vector<std::byte> frame(head.begin(), head.end());
    frame.insert(frame.end(), bytes.begin(), bytes.end());
    return frame;
}

} // namespace

void Channel::send(std::span<const std::byte> bytes, std::span<const int> descriptors,
                   std::chrono::milliseconds patience) {
    if (bytes.size() > longestMessage || descriptors.size() > mostDescriptors)
        throw Broken("the message is too long");
    const std::vector<std::byte> frame = framed(bytes);
    std::span<const std::byte> left(frame);
    sendSome(left, descriptors);
    while (!left.empty()) {
        pollfd ready{.fd = m_socket.get(), .events = POLLOUT, .revents = 0};
        const int count = ::poll(&ready, 1, static_cast<int>(patience.count()));
        if (count == 0)
            throw Broken("nobody reads");
        // Descriptors travel with the first bytes.
        const bool isBegun = left.size() < frame.size();
        sendSome(left, isBegun ? std::span<const int>() : descriptors);
    }
}

void Channel::sendSome(std::span<const std::byte>& left, std::span<const int> descriptors) {
    iovec part{const_cast<std::byte*>(left.data()), left.size()};
    Control control;
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    attach(header, control, descriptors);
    const ssize_t count = ::sendmsg(m_socket.get(), &header, sendFlags());
    if (count < 0 && !isPassing(errno))
        throwBroken(errno);
    if (count > 0)
        left = left.subspan(static_cast<std::size_t>(count));
}

std::optional<Channel::Message> Channel::receive() {
    while (true) {
        if (auto message = takeMessage())
            return message;
        if (!receiveSome())
            return std::nullopt;
    }
}

/// Never holds more than one frame.
bool Channel::receiveSome() {
    std::array<std::byte, sizeof(FrameSize) + longestMessage> buffer;
    iovec part{buffer.data(), buffer.size() - m_arrived.size()};
    Control control;
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    if (m_takes == Takes::descriptorsToo) {
        header.msg_control = control.bytes.data();
        header.msg_controllen = control.bytes.size();
    }
    const ssize_t count = ::recvmsg(m_socket.get(), &header, receiveFlags());
    if (count < 0 && isPassing(errno))
        return false;
    if (count < 0)
        throwBroken(errno);
    if (count == 0)
        throw Broken("the other side has closed its end");
    detach(header, m_descriptors);
    if (m_descriptors.size() > mostDescriptors)
        throw Broken("there are too many descriptors");
    m_arrived.insert(m_arrived.end(), buffer.begin(), buffer.begin() + count);
    return true;
}

std::optional<Channel::Message> Channel::takeMessage() {
    FrameSize size = 0;
    if (m_arrived.size() < sizeof size)
        return std::nullopt;
    std::memcpy(&size, m_arrived.data(), sizeof size);
    if (size > longestMessage)
        throw Broken("a message is too long");
    const std::size_t end = sizeof size + size;
    if (m_arrived.size() < end)
        return std::nullopt;
    const auto frame = std::span(m_arrived).first(end).subspan(sizeof size);
    Message message{{frame.begin(), frame.end()}, std::exchange(m_descriptors, {})};
    m_arrived.erase(m_arrived.begin(), m_arrived.begin() + static_cast<std::ptrdiff_t>(end));
    return message;
}

} // namespace boxlift::worker
