#include "fuzz/trials.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <iostream>
#include <new>
#include <span>
#include <system_error>
#include <thread>

#include <execinfo.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fuzz/memory_file.h"

namespace boxlift::test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int threw = 101;
constexpr int grew = 102;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

void requireSuccess(bool isSuccess, const char* what) {
    if (!isSuccess)
        throw std::system_error(errno, std::generic_category(), what);
}

/// What the process of the trials tells the one that watches it, in memory that both see.
struct Report {
    std::atomic<int> number;
    std::atomic<Clock::rep> begin;
    std::atomic<Clock::rep> workedBefore;
    std::atomic<Clock::rep> slowest;
    std::atomic<std::int64_t> growth;
};

/// A report, and behind it an outcome for each trial.
class SharedMemory {
public:
    explicit SharedMemory(int count)
        : m_count(static_cast<std::size_t>(count)),
          m_memory(
              ::mmap(nullptr, size(), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
        requireSuccess(m_memory != MAP_FAILED, "mmap");
        m_report = new (m_memory) Report();
        std::memset(outcomes().data(), -1, m_count);
    }
    ~SharedMemory() { ::munmap(m_memory, size()); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    Report& report() const { return *m_report; }
    std::span<signed char> outcomes() const {
        return {reinterpret_cast<signed char*>(m_report + 1), m_count};
    }

private:
    std::size_t size() const { return sizeof(Report) + m_count; }

    const std::size_t m_count;
    void* const m_memory;
    Report* m_report = nullptr;
};

/// In a process that is about to end.
void sayWhere(int signal) {
    std::array<void*, 64> frames{};
    const int count = ::backtrace(frames.data(), frames.size());
    ::backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
    // Its usual effect is restored, and comes when this returns.
    ::raise(signal);
}

void sayWhereItCrashes() {
    // Loads what it needs while all is well.
    std::array<void*, 1> frame{};
    ::backtrace(frame.data(), frame.size());
    struct sigaction action {};
    action.sa_handler = sayWhere;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        ::sigaction(signal, &action, nullptr);
}

/// How long the threads of a process have worked.
Clock::duration workOf(pid_t process) {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(process, &clock) == 0)
        ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::int64_t largestSize() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return std::int64_t(usage.ru_maxrss) * 1024;
}

/// The process of the trials.
class Trier {
public:
    Trier(const SharedMemory& shared, const std::function<int(int)>& trial,
          const TrialLimits& limits)
        : m_shared(shared), m_trial(trial), m_limits(limits) {}

    [[noreturn]] void run(int first, int log) {
        ::dup2(log, STDERR_FILENO);
        if (!isSanitized) {
            const rlimit limit{m_limits.memory, m_limits.memory};
            ::setrlimit(RLIMIT_DATA, &limit);
            sayWhereItCrashes();
        }
        m_sizeBefore = largestSize();
        const auto outcomes = m_shared.outcomes();
        for (auto i = static_cast<std::size_t>(first); i < outcomes.size(); ++i)
            outcomes[i] = static_cast<signed char>(tryOne(static_cast<int>(i)));
        ::_exit(0);
    }

private:
    int tryOne(int number) {
        Report& report = m_shared.report();
        const auto begin = Clock::now();
        report.workedBefore = workOf(::getpid()).count();
        report.begin = begin.time_since_epoch().count();
        report.number = number;
        int outcome = 0;
        try {
            outcome = m_trial(number);
        } catch (const std::exception& error) {
            std::cerr << "it threw " << error.what() << '\n';
            ::_exit(threw);
        }
        report.slowest = std::max(report.slowest.load(), (Clock::now() - begin).count());
        report.growth = std::max(report.growth.load(), largestSize() - m_sizeBefore);
        if (report.growth > m_limits.growth)
            ::_exit(grew);
        return outcome;
    }

    const SharedMemory& m_shared;
    const std::function<int(int)>& m_trial;
    const TrialLimits& m_limits;
    std::int64_t m_sizeBefore = 0;
};

bool takesTooLong(pid_t process, const Report& report, Clock::duration limit) {
    const auto time = Clock::now() - Clock::time_point(Clock::duration(report.begin.load()));
    if (time <= limit)
        return false;
    const auto work = workOf(process) - Clock::duration(report.workedBefore.load());
    return work > limit / 2 || time > 6 * limit;
}

/// Waits for the end of the process, and ends it when a trial takes too long: what was wrong, if
/// anything.
std::string watch(pid_t process, const Report& report, const TrialLimits& limits) {
    int status = 0;
    bool isTooSlow = false;
    while (::waitpid(process, &status, WNOHANG) == 0) {
        if (takesTooLong(process, report, limits.time)) {
            isTooSlow = true;
            ::kill(process, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (isTooSlow)
        return "took longer than " + std::to_string(limits.time.count()) + " ms";
    if (WIFSIGNALED(status))
        return std::string("crashed: ") + ::strsignal(WTERMSIG(status));
    if (WEXITSTATUS(status) == threw)
        return "threw";
    if (WEXITSTATUS(status) == grew)
        return "grew by " + std::to_string(report.growth.load()) + " bytes";
    return WEXITSTATUS(status) == 0 ? ""
                                    : "ended with status " + std::to_string(WEXITSTATUS(status));
}

std::string endOf(int log) {
    constexpr off_t longest = 6000;
    const off_t size = ::lseek(log, 0, SEEK_END);
    std::string text(static_cast<std::size_t>(std::min(size, longest)), ' ');
    const ssize_t count =
        ::pread(log, text.data(), text.size(), std::max(size - longest, off_t(0)));
    text.resize(static_cast<std::size_t>(std::max(count, ssize_t(0))));
    return text;
}

} // namespace

Trials runTrials(int count, const std::function<int(int)>& trial, const TrialLimits& limits) {
    const SharedMemory shared(count);
    Report& report = shared.report();
    Trials trials;
    for (int first = 0; first < count;) {
        report.number = first;
        report.begin = Clock::now().time_since_epoch().count();
        report.workedBefore = 0;
        report.growth = 0;
        const worker::Descriptor log = memoryFile({});
        const pid_t process = ::fork();
        requireSuccess(process >= 0, "fork");
        if (process == 0)
            Trier(shared, trial, limits).run(first, log.get());
        const std::string what = watch(process, report, limits);
        trials.growth = std::max(trials.growth, report.growth.load());
        if (what.empty())
            break;
        trials.findings.push_back({report.number, what, endOf(log.get())});
        first = report.number + 1;
    }
    trials.slowest = std::chrono::duration_cast<std::chrono::milliseconds>(
        Clock::duration(report.slowest.load()));
    trials.outcomes.assign(shared.outcomes().begin(), shared.outcomes().end());
    return trials;
}

} // namespace boxlift::test
