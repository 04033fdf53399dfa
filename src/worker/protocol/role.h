#pragma once

#include <array>
#include <string_view>

namespace boxlift::worker {

/// What a worker is started for: its only argument, and what decides how much memory it may take.
enum class Role { analysis, conversion };

inline constexpr std::array allRoles{Role::analysis, Role::conversion};

constexpr const char* name(Role role) {
    return role == Role::analysis ? "analysis" : "conversion";
}

/// The descriptor at which a worker finds its end of the socket.
inline constexpr int socketDescriptor = 3;

} // namespace boxlift::worker
