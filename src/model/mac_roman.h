#pragma once

#include <string>
#include <string_view>

namespace boxlift {

/// Decodes text in the Mac OS Roman character set (Unicode's mapping table ROMAN.TXT) to UTF-8.
/// Every byte value has a character.
std::string macRomanToUtf8(std::string_view bytes);

} // namespace boxlift
