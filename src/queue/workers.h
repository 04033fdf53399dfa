#pragma once

#include <stop_token>

#include "queue/engine.h"
#include "queue/turn_queue.h"
#include "queue/worker_pool.h"

namespace boxlift {

/// What jobs do their work with: the engine, the threads that it runs on, the way back to the main
/// thread. A conversion never waits behind analyses, nor they behind it. Main thread; owned by the
/// queue.
struct Workers {
    explicit Workers(Engine engine);
    ~Workers();

    /// Stops whatever runs, waits for it and lets every coroutine that was waiting come to its
    /// end; later work is cancelled at once.
    void end();

    const Engine engine;
    TurnQueue turns;
    WorkerPool analyses;
    WorkerPool conversions;
    /// Stops the analyses.
    std::stop_source stop;
};

} // namespace boxlift
