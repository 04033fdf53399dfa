#pragma once

#include <string>

namespace boxlift {

/// The sentence for people of the exception that is being handled; only within a catch block.
/// What it does not tell goes to the log.
std::string failureMessage();

} // namespace boxlift
