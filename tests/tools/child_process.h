#pragma once

#include <string>
#include <vector>

namespace boxlift::drive::test {

/// What a program left behind.
struct Finished {
    int exitStatus = -1; ///< -1 when a signal ended it.
    std::string output;
    std::string errors;
};

/// Runs a program to its end, its standard streams in files. With `outputPath` its standard output
/// goes there instead; an empty one closes it.
Finished runProgram(const std::vector<std::string>& command, const char* outputPath = nullptr);

} // namespace boxlift::drive::test
