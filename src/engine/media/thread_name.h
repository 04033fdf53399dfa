#pragma once

#include <string>

namespace boxlift::media {

/// Gives the calling thread a name for debuggers and process viewers. On Linux 15 bytes of it are
/// kept.
void setThreadName(const std::string& name);

} // namespace boxlift::media
