#pragma once

#include <filesystem>

#include <sys/types.h>

namespace boxlift::test {

/// Makes the process an ordinary user while it lives, for tests of what may not be read or written,
/// which would mean nothing to the superuser. Main thread.
class WithoutPrivileges {
public:
    /// The ordinary user may enter and write `folder`.
    explicit WithoutPrivileges(const std::filesystem::path& folder);
    ~WithoutPrivileges();
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    uid_t m_before;
};

} // namespace boxlift::test
