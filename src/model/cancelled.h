#pragma once

#include <exception>

namespace boxlift {

/// Thrown when the caller asked for a stop. Never a failure: not logged, never shown.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "cancelled"; }
};

} // namespace boxlift
