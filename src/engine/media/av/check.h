#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "engine/media/error.h"

namespace boxlift::media::av {

/// What a failing call was for: decides, with the code, which sentence people see.
enum class Operation { open, read, decode, filter, encode, mux };

/// The one gate from FFmpeg codes to errors: returns `result` when it is not negative, else throws
/// media::Error with the operation, the path and the last line that the libraries logged on this
/// thread; Cancelled when the code is that of an interrupted call. EAGAIN and the end of a file are
/// return values and must not reach it.
int check(int result, Operation operation, std::string_view what,
          const std::filesystem::path& path);

/// The text of an FFmpeg code.
std::string describe(int code);

} // namespace boxlift::media::av
