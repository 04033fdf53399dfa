#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace boxlift::test {

/// A running program whose standard streams lead nowhere. Killed, if need be, when this object
/// goes.
class Program {
public:
    /// `prepare` runs in the new process before the program does. Throws std::system_error.
    explicit Program(const std::vector<std::string>& command,
                     const std::function<void()>& prepare = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t id() const { return m_id; }
    bool hasEnded();
    /// Waits for its end: the exit status, -1 after a signal.
    int wait();
    void kill();

private:
    pid_t m_id = -1;
    int m_status = 0;
    bool m_hasEnded = false;
};

} // namespace boxlift::test
