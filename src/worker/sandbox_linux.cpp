#include "worker/sandbox.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>

#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "worker/protocol/descriptor.h"
#include "worker/syscall_filter_linux.h"

namespace boxlift::worker {

namespace {

/// All rights to files that a version of Landlock's interface knows (landlock(7)): each version
/// adds to the one before. A right that the running kernel does not know would be refused.
std::uint64_t fileRights(long version) {
    constexpr std::array<int, 5> counts{13, 14, 15, 15, 16};
    const auto known = std::min(static_cast<std::size_t>(version), counts.size());
    return (std::uint64_t{1} << counts[known - 1]) - 1;
}

/// Nothing is allowed, so no file can be opened by its path. Open ones stay as they are.
bool forbidFiles() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return false;
    landlock_ruleset_attr rules{};
    rules.handled_access_fs = fileRights(version);
    const Descriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0)));
    return ruleset && ::syscall(SYS_landlock_restrict_self, ruleset.get(), 0) == 0;
}

/// Programs that are started could not get back what is given up here; the other two rest on it.
bool forbidNewPrivileges() {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

struct Restraint {
    const char* name;
    bool (*enter)();
};

constexpr std::array restraints{
    Restraint{"no_new_privs", &forbidNewPrivileges},
    Restraint{"Landlock", &forbidFiles},
    Restraint{"seccomp", &filterSyscalls},
};

} // namespace

std::string enterSandbox() {
    // Read from a file at the first use.
    ::tzset();
    std::string missing;
    for (const Restraint& restraint : restraints)
        if (!restraint.enter())
            missing.append(missing.empty() ? "" : ", ").append(restraint.name);
    return missing;
}

} // namespace boxlift::worker
