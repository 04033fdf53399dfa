#pragma once

#include <string>
#include <string_view>

/// Texts that come from a process that may have been taken over by the file that it reads.
namespace boxlift::worker {

/// Whether `text` is UTF-8 (RFC 3629) without control characters.
bool isLine(std::string_view text);

/// Replaces control characters, for the log; other bytes stay as they are.
void makePrintable(std::string& text);

} // namespace boxlift::worker
