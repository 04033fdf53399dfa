#include "engine/media/child_process.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace boxlift::media::test {

namespace {

void run(const std::function<void()>& body) noexcept {
    try {
        body();
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
}

} // namespace

bool passesInChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("no child process");
    if (child == 0) {
        run(body);
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void limitFileSize(std::size_t bytes) {
    // Without this the signal would end the process before the write could fail.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        throw std::runtime_error("no limit");
}

void becomeNobody() {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
        throw std::runtime_error("the rights cannot be given up");
}

} // namespace boxlift::media::test
