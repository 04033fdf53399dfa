// A worker that does what the name of its source says: the client must cope with all of it.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "worker/limits.h"
#include "worker/protocol/channel.h"
#include "worker/protocol/message.h"
#include "worker/protocol/role.h"

namespace {

using namespace boxlift;
using namespace boxlift::worker;
using std::chrono_literals::operator""s;
using std::string_view_literals::operator""sv;

[[noreturn]] void hang() {
    while (true)
        std::this_thread::sleep_for(1s);
}

void sendRaw(std::string_view bytes) {
    [[maybe_unused]] const auto count =
        ::send(socketDescriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

/// A frame of any bytes.
void sendFrame(std::string_view bytes) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    std::string frame(sizeof size, '\0');
    std::memcpy(frame.data(), &size, sizeof size);
    sendRaw(frame.append(bytes));
}

void send(Channel& channel, const Report& report, std::vector<int> descriptors = {}) {
    channel.send(encode(report), descriptors, 10s);
}

void takeAllMemory() {
    limitResources(Role::analysis);
    std::vector<std::vector<char>> blocks;
    while (true)
        blocks.emplace_back(16 << 20, 'x');
}

const MediaInfo info{.hasAudio = true, .audioCodec = fourCharCode("aac "), .duration = 3};

void answer(Channel& channel, const Channel::Message& message) {
    if (std::holds_alternative<AnalyzeRequest>(decodeRequest(message.bytes)))
        return send(channel, info);
    send(channel, Progress{0.5});
    constexpr std::string_view contents = "made by the worker";
    if (::write(message.descriptors.at(1).get(), contents.data(), contents.size()) > 0)
        send(channel, Mode::boxlift);
}

using Trick = std::function<void(Channel&)>;

const std::map<std::string, Trick>& tricks() {
    static const std::map<std::string, Trick> all{
        {"hang", [](Channel&) { hang(); }},
        {"crash", [](Channel&) { std::raise(SIGSEGV); }},
        {"abort", [](Channel&) { std::abort(); }},
        {"exit", [](Channel&) { std::_Exit(EXIT_SUCCESS); }},
        {"all-memory", [](Channel&) { takeAllMemory(); }},
        {"noise", [](Channel&) { sendRaw("\x10\0\0\0 what is this noise"sv); }},
        {"too-long", [](Channel&) { sendRaw("\xff\xff\xff\xff the end of your memory"); }},
        {"half-a-frame",
         [](Channel&) {
             sendRaw("\x40\0\0\0 half"sv);
             std::_Exit(EXIT_SUCCESS);
         }},
        {"half-a-frame-forever",
         [](Channel&) {
             sendRaw("\x40\0\0\0 half"sv);
             hang();
         }},
        {"no-such-report", [](Channel&) { sendFrame("\x77"); }},
        {"no-such-mode", [](Channel&) { sendFrame("\x03\x07"); }},
        {"empty", [](Channel&) { sendFrame(""); }},
        {"no-utf-8", [](Channel& channel) { send(channel, Refusal{"caf\xe9"}); }},
        {"control-characters", [](Channel& channel) { send(channel, Refusal{"\x1b[2J"}); }},
        {"no-tracks", [](Channel& channel) { send(channel, MediaInfo{}); }},
        {"too-far", [](Channel& channel) { send(channel, Progress{2}); }},
        {"ready-again", [](Channel& channel) { send(channel, Ready{}); }},
        {"endless-progress",
         [](Channel& channel) {
             while (true)
                 send(channel, Progress{0.25});
         }},
        {"other-answer",
         [](Channel& channel) {
             send(channel, Progress{0.25});
             hang();
         }},
        {"log-line",
         [](Channel& channel) {
             send(channel, Failure{media::ErrorKind::noSpace, "two\nlines"});
         }},
        {"descriptors",
         [](Channel& channel) {
             send(channel, info, {0, 1});
         }},
    };
    return all;
}

std::string nameOf(const Channel::Message& message) {
    return std::visit([](const auto& request) { return request.source.stem().native(); },
                      decodeRequest(message.bytes));
}

[[noreturn]] void work(Channel& channel) {
    while (true) {
        pollfd socket{.fd = channel.descriptor(), .events = POLLIN, .revents = 0};
        ::poll(&socket, 1, -1);
        const auto message = channel.receive();
        if (!message)
            continue;
        const auto trick = tricks().find(nameOf(*message));
        if (trick == tricks().end())
            answer(channel, *message);
        else
            trick->second(channel);
    }
}

} // namespace

int main(int, char** argv) {
    const std::string_view program(argv[0]);
    // Nothing that a test forgets lives long.
    ::alarm(60);
    if (program.ends_with("mute"))
        hang();
    if (program.ends_with("dead"))
        return EXIT_FAILURE;
    Channel channel(Descriptor(socketDescriptor), Channel::Takes::descriptorsToo);
    send(channel, Ready{.version = program.ends_with("old") ? 0 : protocolVersion,
                        .missingRestraints = "everything"});
    try {
        work(channel);
    } catch (const Channel::Broken&) {
        return EXIT_SUCCESS;
    }
}
