#pragma once

#include <filesystem>

namespace boxlift {

/// The program that conversions run in: beside the running one, as it is built, or else where it is
/// installed. It need not exist.
std::filesystem::path workerProgram();

/// The path of the running program; empty where the system does not tell.
std::filesystem::path runningProgram();

} // namespace boxlift
