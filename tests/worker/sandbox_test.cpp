#include "worker/sandbox.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temp_folder.h"

namespace boxlift::worker {
namespace {

namespace fs = std::filesystem;

constexpr int allowed = 0;
constexpr int refused = 1;

/// How `call`, which returns a negative number when it fails, fares in the sandbox.
template <typename Call>
void tryInside(Call call) {
    if (!enterSandbox().empty())
        std::_Exit(2);
    std::_Exit(call() < 0 ? refused : allowed);
}

template <typename Call>
bool isRefused(Call call) {
    const pid_t child = ::fork();
    if (child == 0)
        tryInside(call);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) > refused)
        ADD_FAILURE() << "the sandbox is not whole, or the call ended the process";
    return WEXITSTATUS(status) == refused;
}

class Sandbox : public testing::Test {
protected:
    static void SetUpTestSuite() {
        const pid_t child = ::fork();
        if (child == 0)
            std::_Exit(enterSandbox().empty() ? 0 : 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        s_isWhole = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    void SetUp() override {
        if (!s_isWhole)
            GTEST_SKIP() << "this system lacks a part of the sandbox";
    }

    static inline bool s_isWhole = false;

    const test::TempFolder m_folder;
    const fs::path m_file = test::writeFile(m_folder.path() / "file", "contents");
};

} // namespace

TEST_F(Sandbox, RefusesFiles) {
    EXPECT_TRUE(isRefused([&] { return ::open(m_file.c_str(), O_RDONLY); }));
    EXPECT_TRUE(isRefused([&] { return ::open("/etc/passwd", O_RDONLY); }));
    EXPECT_TRUE(
        isRefused([&] { return ::open((m_folder.path() / "new").c_str(), O_CREAT, 0600); }));
    EXPECT_TRUE(isRefused([&] { return ::unlink(m_file.c_str()); }));
    EXPECT_TRUE(isRefused([&] { return ::rename(m_file.c_str(), "/tmp/other"); }));
    EXPECT_TRUE(isRefused([&] { return ::chmod(m_file.c_str(), 0777); }));
    EXPECT_TRUE(isRefused([&] { return ::truncate(m_file.c_str(), 0); }));
    EXPECT_EQ(test::readFile(m_file), "contents");
}

TEST_F(Sandbox, RefusesOpenFilesUnderOtherRights) {
    const int descriptor = ::open(m_file.c_str(), O_RDONLY | O_CLOEXEC);
    const std::string again = "/proc/self/fd/" + std::to_string(descriptor);
    EXPECT_TRUE(isRefused([&] { return ::open(again.c_str(), O_RDWR); }));
    EXPECT_TRUE(isRefused([&] { return ::fchmod(descriptor, 0777); }));
    ::close(descriptor);
}

TEST_F(Sandbox, RefusesTheNetwork) {
    EXPECT_TRUE(isRefused([] { return ::socket(AF_INET, SOCK_STREAM, 0); }));
    EXPECT_TRUE(isRefused([] { return ::socket(AF_UNIX, SOCK_STREAM, 0); }));
}

TEST_F(Sandbox, RefusesPrograms) {
    EXPECT_TRUE(isRefused([] { return ::execl("/bin/true", "true", nullptr); }));
    EXPECT_TRUE(isRefused([] { return ::fork(); }));
}

TEST_F(Sandbox, RefusesOtherProcesses) {
    const pid_t parent = ::getpid();
    EXPECT_TRUE(isRefused([&] { return ::kill(parent, 0); }));
    EXPECT_TRUE(isRefused(
        [&] { return static_cast<int>(::ptrace(PTRACE_ATTACH, parent, nullptr, nullptr)); }));
}

TEST_F(Sandbox, RefusesCodeMadeAtRunTime) {
    constexpr int privately = MAP_PRIVATE | MAP_ANONYMOUS;
    const auto map = [](int protection) {
        return ::mmap(nullptr, 4096, protection, privately, -1, 0);
    };
    EXPECT_TRUE(
        isRefused([&] { return map(PROT_READ | PROT_WRITE | PROT_EXEC) == MAP_FAILED ? -1 : 0; }));
    EXPECT_TRUE(isRefused(
        [&] { return ::mprotect(map(PROT_READ | PROT_WRITE), 4096, PROT_READ | PROT_EXEC); }));
}

TEST_F(Sandbox, RefusesToRaiseItsLimits) {
    EXPECT_TRUE(isRefused([] {
        const rlimit limits{RLIM_INFINITY, RLIM_INFINITY};
        return ::setrlimit(RLIMIT_CORE, &limits);
    }));
}

TEST_F(Sandbox, LeavesOpenFilesThreadsAndMemory) {
    const int descriptor = ::open(m_file.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_FALSE(isRefused([&] {
        char buffer[8];
        return static_cast<int>(::pread(descriptor, buffer, sizeof buffer, 0));
    }));
    EXPECT_FALSE(isRefused([&] { return ::ftruncate(descriptor, 4); }));
    EXPECT_FALSE(isRefused([&] { return ::fdatasync(descriptor); }));
    EXPECT_FALSE(isRefused([] {
        int result = -1;
        std::thread([&] { result = static_cast<int>(std::string(1 << 20, 'x').size()); }).join();
        return result;
    }));
    ::close(descriptor);
    EXPECT_EQ(test::readFile(m_file), "cont");
}

// Failed assertions of libraries end a process this way.
TEST_F(Sandbox, LeavesAbort) {
    EXPECT_EXIT(
        {
            enterSandbox();
            std::abort();
        },
        testing::KilledBySignal(SIGABRT), "");
}

} // namespace boxlift::worker
