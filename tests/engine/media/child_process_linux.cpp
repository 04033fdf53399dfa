#include "engine/media/child_process.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace boxlift::media::test {

bool forbidUnnamedFiles() {
    // The bit of O_TMPFILE that O_DIRECTORY does not have.
    constexpr unsigned unnamed = O_TMPFILE & ~O_DIRECTORY;
    constexpr unsigned number = offsetof(seccomp_data, nr);
    // The low half of the third argument, on computers that store it first.
    constexpr unsigned flags = offsetof(seccomp_data, args) + 2 * sizeof(std::uint64_t);
    sock_filter steps[] = {
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, number},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, __NR_openat},
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, flags},
        {BPF_JMP | BPF_JSET | BPF_K, 0, 1, unnamed},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EOPNOTSUPP},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    };
    const sock_fprog program{std::size(steps), steps};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace boxlift::media::test
