#pragma once

#include <string_view>

namespace boxlift::drive {

/// Before anything else: makes a write that fails (reader gone, file-size limit) an error, not the
/// end of the process, and keeps the files that are opened later off the numbers of standard
/// streams that the caller has closed.
void prepareStandardStreams();

/// Writes all of `text` to a descriptor, with one call as a rule; false when that failed.
bool writeAll(int descriptor, std::string_view text);

bool writeToStandardOutput(std::string_view text);

} // namespace boxlift::drive
