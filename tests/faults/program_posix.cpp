#include "faults/program.h"

#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace boxlift::test {

namespace {

[[noreturn]] void become(std::vector<char*>& arguments, const std::function<void()>& prepare) {
    // Nothing that a test forgets lives long.
    ::alarm(120);
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nowhere, stream);
    if (prepare)
        prepare();
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
}

} // namespace

Program::Program(const std::vector<std::string>& command, const std::function<void()>& prepare) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    m_id = ::fork();
    if (m_id < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (m_id == 0)
        become(arguments, prepare);
}

Program::~Program() {
    kill();
}

bool Program::hasEnded() {
    if (!m_hasEnded)
        m_hasEnded = ::waitpid(m_id, &m_status, WNOHANG) == m_id;
    return m_hasEnded;
}

int Program::wait() {
    while (!m_hasEnded)
        m_hasEnded = ::waitpid(m_id, &m_status, 0) == m_id;
    return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1;
}

void Program::kill() {
    if (hasEnded())
        return;
    ::kill(m_id, SIGKILL);
    wait();
}

} // namespace boxlift::test
