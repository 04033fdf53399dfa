#include "queue/worker_process.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "queue/spawn_actions.h"
#include "worker/protocol/sockets.h"

// Not declared by every system's headers.
extern char** environ; // NOLINT(readability-redundant-declaration)

namespace boxlift {

namespace {

namespace fs = std::filesystem;
using std::chrono_literals::operator""ms;

void check(int error, const char* what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

class FileActions {
public:
    FileActions() { check(::posix_spawn_file_actions_init(&m_actions), "spawn"); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t& get() { return m_actions; }

    void place(int descriptor, int at) {
        check(::posix_spawn_file_actions_adddup2(&m_actions, descriptor, at), "spawn");
    }
    void openNothing(int at, int flags) {
        check(::posix_spawn_file_actions_addopen(&m_actions, at, "/dev/null", flags, 0), "spawn");
    }

private:
    posix_spawn_file_actions_t m_actions{};
};

class Attributes {
public:
    Attributes() { check(::posix_spawnattr_init(&m_attributes), "spawn"); }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    posix_spawnattr_t& get() { return m_attributes; }

    /// Nothing is blocked, whatever the calling thread blocks.
    void unblockSignals() {
        sigset_t none{};
        ::sigemptyset(&none);
        check(::posix_spawnattr_setsigmask(&m_attributes, &none), "spawn");
    }

private:
    posix_spawnattr_t m_attributes{};
};

pid_t spawn(const fs::path& program, worker::Role role, const worker::Descriptor& socket) {
    FileActions actions;
    // First: the socket may have a number that the next ones take.
    actions.place(socket.get(), worker::socketDescriptor);
    actions.openNothing(STDIN_FILENO, O_RDONLY);
    actions.openNothing(STDOUT_FILENO, O_WRONLY);
    Attributes attributes;
    attributes.unblockSignals();
    short flags = POSIX_SPAWN_SETSIGMASK;
    check(inheritNothingElse(actions.get(), flags, worker::socketDescriptor + 1), "spawn");
    check(::posix_spawnattr_setflags(&attributes.get(), flags), "spawn");
    std::string path = program.native();
    std::string argument = worker::name(role);
    std::array<char*, 3> arguments{path.data(), argument.data(), nullptr};
    pid_t id = -1;
    check(::posix_spawn(&id, path.c_str(), &actions.get(), &attributes.get(), arguments.data(),
                        environ),
          path.c_str());
    return id;
}

std::string describe(int status) {
    if (WIFSIGNALED(status))
        return "ended by signal " + std::to_string(WTERMSIG(status));
    return "ended with status " + std::to_string(WEXITSTATUS(status));
}

/// What wait tells of a killed process. Nothing when it does not go within a tenth of a second: one
/// that is stuck in the kernel, say with a failing disk, ends when it can.
std::optional<int> statusOf(pid_t id) {
    int status = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const pid_t ended = ::waitpid(id, &status, WNOHANG);
        if (ended == id)
            return status;
        if (ended < 0 && errno != EINTR)
            return std::nullopt;
        std::this_thread::sleep_for(1ms);
    }
    return std::nullopt;
}

} // namespace

std::unique_ptr<WorkerProcess> WorkerProcess::start(const fs::path& program, worker::Role role) {
    auto [ours, theirs] = worker::connectedSockets();
    const pid_t id = spawn(program, role, theirs);
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(id, std::move(ours), role));
}

WorkerProcess::WorkerProcess(pid_t id, worker::Descriptor socket, worker::Role role)
    : m_id(id), m_role(role), m_channel(std::move(socket), worker::Channel::Takes::messages) {}

WorkerProcess::~WorkerProcess() {
    end();
}

bool WorkerProcess::hasEnded() {
    int status = 0;
    if (m_id >= 0 && ::waitpid(m_id, &status, WNOHANG) == m_id)
        m_id = -1;
    return m_id < 0;
}

std::string WorkerProcess::end() {
    const pid_t id = std::exchange(m_id, -1);
    if (id < 0)
        return "ended before";
    ::kill(id, SIGKILL);
    const auto status = statusOf(id);
    return status ? describe(*status) : "does not end";
}

} // namespace boxlift
