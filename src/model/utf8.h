#pragma once

#include <cstddef>
#include <string_view>

namespace boxlift {

/// The length in bytes of the character that `text`, which is not empty, begins with in UTF-8 (RFC
/// 3629); 0 when it begins with none.
std::size_t utf8Length(std::string_view text);

} // namespace boxlift
