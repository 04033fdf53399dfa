#include "worker/syscall_filter_linux.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace boxlift::worker {

namespace {

#if defined(__x86_64__)
constexpr unsigned architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr unsigned architecture = AUDIT_ARCH_AARCH64;
#else
constexpr unsigned architecture = 0;
#endif

/// What needs no look at the arguments: all of it works on what the process has already.
constexpr auto allowed = std::to_array<int>({
    // Open files and the socket.
    SYS_read, SYS_pread64, SYS_preadv, SYS_readv, SYS_write, SYS_pwrite64, SYS_pwritev, SYS_writev,
        SYS_lseek, SYS_fstat, SYS_fstatfs, SYS_ftruncate, SYS_fallocate, SYS_fadvise64,
        SYS_readahead, SYS_copy_file_range, SYS_sendfile, SYS_fsync, SYS_fdatasync,
        SYS_sync_file_range, SYS_dup, SYS_close, SYS_sendmsg, SYS_recvmsg, SYS_ppoll,
        // Memory.
        SYS_brk, SYS_munmap, SYS_mremap, SYS_madvise,
        // Threads and their signals.
        SYS_futex, SYS_set_robust_list, SYS_rseq, SYS_gettid, SYS_getpid, SYS_sched_yield,
        SYS_sched_getaffinity, SYS_getcpu, SYS_membarrier, SYS_rt_sigaction, SYS_rt_sigprocmask,
        SYS_rt_sigreturn, SYS_sigaltstack, SYS_restart_syscall, SYS_exit, SYS_exit_group,
        // Clocks and facts.
        SYS_clock_gettime, SYS_clock_getres, SYS_clock_nanosleep, SYS_nanosleep, SYS_gettimeofday,
        SYS_getrandom, SYS_getrusage, SYS_times, SYS_sysinfo, SYS_uname,
#if defined(__x86_64__)
        SYS_poll, SYS_time,
#endif
#if defined(__SANITIZE_ADDRESS__)
        // Whether an address can be read the sanitizer finds out by writing what is there to a
        // pipe.
        SYS_pipe2,
#if defined(__x86_64__)
        SYS_pipe,
#endif
#endif
});

/// What libraries try first and do without when there is no such call.
constexpr auto unknown = std::to_array<int>({
    // Its flags are in memory, where a filter cannot look; clone() passes them as an argument.
    SYS_clone3,
    SYS_statx,
});

constexpr auto threadFlags =
    static_cast<unsigned>(CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD);

constexpr std::uint8_t next = 0;

/// A filter in the making: rules for calls, the first that fits decides. Between them the number
/// of the call is what is loaded.
class Program {
public:
    Program() {
        load(offsetof(seccomp_data, arch));
        jumpIf(architecture, 1, next);
        answer(refusal);
        load(offsetof(seccomp_data, nr));
    }

    void decide(int call, unsigned action) {
        jumpIf(static_cast<unsigned>(call), next, 1);
        answer(action);
    }

    /// Allows a call when, of one of its arguments, the bits of `mask` are `bits`. What is looked
    /// at is its lower half, which holds flags and commands.
    void allowIf(int call, unsigned argument, unsigned mask, unsigned bits) {
        jumpIf(static_cast<unsigned>(call), next, 5);
        load(offsetof(seccomp_data, args) + argument * sizeof(__u64));
        m_code.push_back(BPF_STMT(BPF_ALU | BPF_AND | BPF_K, mask));
        jumpIf(bits, next, 1);
        answer(SECCOMP_RET_ALLOW);
        load(offsetof(seccomp_data, nr));
    }

    std::vector<sock_filter> finish() {
        answer(refusal);
        return std::move(m_code);
    }

private:
    static constexpr unsigned refusal = SECCOMP_RET_ERRNO | EPERM;

    void load(std::size_t offset) {
        m_code.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offset)));
    }

    void jumpIf(unsigned value, std::uint8_t then, std::uint8_t otherwise) {
        m_code.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, then, otherwise));
    }

    void answer(unsigned action) { m_code.push_back(BPF_STMT(BPF_RET | BPF_K, action)); }

    std::vector<sock_filter> m_code;
};

void allowWithArguments(Program& program) {
    constexpr unsigned all = ~0U;
    for (const int call : {SYS_mmap, SYS_mprotect})
        program.allowIf(call, 2, PROT_EXEC, 0);
    program.allowIf(SYS_clone, 0, threadFlags, threadFlags);
    // With other flags it looks at a file by its name.
    program.allowIf(SYS_newfstatat, 3, AT_EMPTY_PATH, AT_EMPTY_PATH);
    for (const int command : {F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL})
        program.allowIf(SYS_fcntl, 1, all, static_cast<unsigned>(command));
    program.allowIf(SYS_prctl, 0, all, PR_SET_NAME);
    // What abort() sends to itself.
    program.allowIf(SYS_tgkill, 0, all, static_cast<unsigned>(::getpid()));
}

std::vector<sock_filter> makeFilter() {
    Program program;
    for (const int call : allowed)
        program.decide(call, SECCOMP_RET_ALLOW);
    for (const int call : unknown)
        program.decide(call, SECCOMP_RET_ERRNO | ENOSYS);
    allowWithArguments(program);
    return program.finish();
}

} // namespace

bool filterSyscalls() {
    if (architecture == 0)
        return false;
    std::vector<sock_filter> code = makeFilter();
    const sock_fprog program{.len = static_cast<unsigned short>(code.size()),
                             .filter = code.data()};
    return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0;
}

} // namespace boxlift::worker
