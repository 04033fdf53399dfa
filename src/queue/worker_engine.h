#pragma once

#include <chrono>
#include <filesystem>

#include "queue/engine.h"

namespace boxlift {

struct WorkerSettings {
    /// The boxlift-worker to run.
    std::filesystem::path program;
    /// How long an analysis may take, and the start of a worker.
    std::chrono::milliseconds patience = std::chrono::seconds(20);
};

/// The engine in processes of its own: whatever a media file does to the one that reads it, this
/// process goes on, and the job fails. Outcomes are those of Converter. Workers
/// are started ahead, the first one by `prepare`, and end with the last copy of what this returns.
///
/// A conversion has its worker for itself; analyses share a few. The source is opened, and the
/// output made and named, in this process. A stop kills the worker: it owns nothing that could be
/// left behind.
Engine workerEngine(const WorkerSettings& settings);

} // namespace boxlift
