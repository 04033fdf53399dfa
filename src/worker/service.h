#pragma once

#include <string>

#include "worker/protocol/channel.h"

namespace boxlift::worker {

/// Says that it is ready, then answers requests with the engine's operations, one after the other,
/// until the other side goes away. `missingRestraints` is what Ready says. Throws Channel::Broken
/// and MalformedMessage for what no application says.
void serve(Channel& channel, const std::string& missingRestraints);

} // namespace boxlift::worker
