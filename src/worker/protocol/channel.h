#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

#include "worker/protocol/descriptor.h"

namespace boxlift::worker {

/// Messages over a stream socket: each a frame of its length (four bytes) and its bytes, at most
/// longestMessage, and with it a few descriptors. Neither side can make the other wait or take up
/// more memory than one frame. One thread at a time.
class Channel {
public:
    /// The other side has closed its end, or does not keep to the rules.
    class Broken : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    struct Message {
        std::vector<std::byte> bytes;
        std::vector<Descriptor> descriptors;
    };

    /// The most descriptors that come with one message.
    static constexpr std::size_t mostDescriptors = 2;

    enum class Takes { messages, descriptorsToo };

    /// Where descriptors are not taken, what is sent is closed at once.
    Channel(Descriptor socket, Takes takes) : m_socket(std::move(socket)), m_takes(takes) {}

    /// To wait at; only for reading.
    int descriptor() const { return m_socket.get(); }

    /// Sends all of it. What the socket does not take at once has `patience` to be taken. Throws
    /// Broken.
    void send(std::span<const std::byte> bytes, std::span<const int> descriptors,
              std::chrono::milliseconds patience);
    /// The next message, if all of it has arrived; never waits. Throws Broken.
    std::optional<Message> receive();

private:
    void sendSome(std::span<const std::byte>& left, std::span<const int> descriptors);
    bool receiveSome();
    std::optional<Message> takeMessage();

    Descriptor m_socket;
    Takes m_takes;
    std::vector<std::byte> m_arrived;
    std::vector<Descriptor> m_descriptors;
};

} // namespace boxlift::worker
