#pragma once

#include <span>
#include <stop_token>

#include "drive/engine.h"
#include "drive/event_writer.h"
#include "drive/job.h"

namespace boxlift::drive {

/// Analyses all jobs on `threadCount` threads and writes of each how it ended, as it ends. Returns
/// when all have ended. After a stop no further one is begun and the running ones end without a
/// word.
void analyzeJobs(std::span<Job> jobs, const Engine& engine, unsigned threadCount,
                 EventWriter& events, const std::stop_token& stop);

} // namespace boxlift::drive
