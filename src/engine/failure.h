#pragma once

#include <exception>

namespace boxlift::Converter {

/// Throws the media layer's own error, or a ConvertError with `sentence` when there is none.
[[noreturn]] void throwFailure(const std::exception_ptr& error, const char* sentence);

} // namespace boxlift::Converter
