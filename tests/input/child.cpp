#include "input/child.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

namespace boxlift::test {

namespace {

constexpr unsigned secondsToLive = 60;
constexpr uid_t nobody = 65534;

void dropRights(Rights rights) {
    const bool isToDrop = rights == Rights::ordinary && ::geteuid() == 0;
    if (isToDrop && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
        throw std::system_error(errno, std::generic_category(), "dropping rights");
}

void writeAll(int descriptor, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(descriptor, text.data() + done, text.size() - done);
        if (count <= 0)
            return;
        done += static_cast<std::size_t>(count);
    }
}

[[noreturn]] void live(int result, Rights rights, const std::function<std::string()>& work) {
    ::alarm(secondsToLive);
    int status = 0;
    try {
        dropRights(rights);
        writeAll(result, work());
    } catch (const std::exception& error) {
        writeAll(result, error.what());
        status = 1;
    }
    ::_exit(status);
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 1; count > 0;) {
        count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0)
            text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

} // namespace

std::string inChild(Rights rights, const std::function<std::string()>& work) {
    std::array<int, 2> result{};
    if (::pipe(result.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const pid_t child = ::fork();
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0)
        live(result[1], rights, work);
    ::close(result[1]);
    const std::string text = readAll(result[0]);
    ::close(result[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error("the child failed: " + text);
    return text;
}

void setMode(const std::filesystem::path& path, unsigned mode) {
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(mode));
}

} // namespace boxlift::test
