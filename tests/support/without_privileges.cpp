#include "support/without_privileges.h"

#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace boxlift::test {

namespace {

/// Nobody, on most systems; no account needs to stand behind it.
constexpr uid_t ordinaryUser = 65534;

} // namespace

WithoutPrivileges::WithoutPrivileges(const std::filesystem::path& folder) : m_before(::geteuid()) {
    if (m_before != 0)
        return;
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    if (::seteuid(ordinaryUser) != 0)
        throw std::system_error(errno, std::generic_category(), "giving up privileges");
}

WithoutPrivileges::~WithoutPrivileges() {
    // Only the superuser can have left, who may always come back.
    [[maybe_unused]] const int result = ::seteuid(m_before);
}

} // namespace boxlift::test
