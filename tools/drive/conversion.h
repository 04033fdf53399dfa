#pragma once

#include <filesystem>
#include <span>
#include <stop_token>

#include "drive/engine.h"
#include "drive/event_writer.h"
#include "drive/job.h"

namespace boxlift::drive {

/// Converts, one after another, the jobs that can be converted, and writes what becomes of each.
/// A stop ends the running one, whose conversion is cancelled, and begins no further one.
void convertJobs(std::span<Job> jobs, const std::filesystem::path& outputDir, const Engine& engine,
                 EventWriter& events, const std::stop_token& stop);

} // namespace boxlift::drive
