#pragma once

#include <stop_token>

#include "drive/command_line.h"
#include "drive/event_writer.h"
#include "queue/engine.h"

namespace boxlift::drive {

enum class ExitStatus { allWell = 0, someFailed = 1, wrongUsage = 2, stopped = 130 };

/// Does what the command line says, event by event, and returns how it ended. `stop` does what the
/// Stop button does. The main thread of a QCoreApplication.
ExitStatus drive(const CommandLine& commandLine, const Engine& engine, const LineSink& sink,
                 const std::stop_token& stop);

} // namespace boxlift::drive
