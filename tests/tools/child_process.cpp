#include "tools/child_process.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temp_folder.h"

// Not declared by every system's headers.
extern char** environ; // NOLINT

namespace boxlift::drive::test {

namespace {

void check(int error, const char* what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

class FileActions {
public:
    FileActions() { check(::posix_spawn_file_actions_init(&m_actions), "file actions"); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void open(int descriptor, const char* path) {
        constexpr int flags = O_WRONLY | O_CREAT;
        check(::posix_spawn_file_actions_addopen(&m_actions, descriptor, path, flags, 0600), path);
    }
    void close(int descriptor) {
        check(::posix_spawn_file_actions_addclose(&m_actions, descriptor), "closing");
    }
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions;
};

int waitForExit(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

Finished runProgram(const std::vector<std::string>& command, const char* outputPath) {
    const boxlift::test::TempFolder folder;
    const auto output = boxlift::test::writeFile(folder.path() / "output");
    const auto errors = boxlift::test::writeFile(folder.path() / "errors");
    FileActions actions;
    if (outputPath != nullptr && *outputPath == '\0')
        actions.close(STDOUT_FILENO);
    else
        actions.open(STDOUT_FILENO, outputPath != nullptr ? outputPath : output.c_str());
    actions.open(STDERR_FILENO, errors.c_str());
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    pid_t child = 0;
    check(::posix_spawn(&child, arguments[0], actions.get(), nullptr, arguments.data(), environ),
          "starting the program");
    const int exitStatus = waitForExit(child);
    return {exitStatus, boxlift::test::readFile(output), boxlift::test::readFile(errors)};
}

} // namespace boxlift::drive::test
