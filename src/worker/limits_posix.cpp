#include "worker/limits.h"

#include <sys/resource.h>
#include <unistd.h>

namespace boxlift::worker {

namespace {

constexpr std::uint64_t mebibyte = 1 << 20;

// The sanitizers reserve terabytes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isMemoryLimited = false;
#else
constexpr bool isMemoryLimited = true;
#endif

template <typename Resource>
void limit(Resource resource, std::uint64_t value) {
    rlimit limits{};
    ::getrlimit(resource, &limits);
    const auto wanted = static_cast<rlim_t>(value);
    if (limits.rlim_max == RLIM_INFINITY || wanted < limits.rlim_max)
        limits.rlim_max = wanted;
    limits.rlim_cur = limits.rlim_max;
    ::setrlimit(resource, &limits);
}

} // namespace

std::uint64_t memoryLimit(Role role) {
    if (role == Role::analysis)
        return 512 * mebibyte;
    const auto pages = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES));
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) / 2;
}

void limitResources(Role role) {
    if (isMemoryLimited)
        limit(RLIMIT_DATA, memoryLimit(role));
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_NOFILE, 64);
}

} // namespace boxlift::worker
