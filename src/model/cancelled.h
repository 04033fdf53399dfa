#pragma once

#include <exception>
#include <stop_token>

namespace boxlift {

/// Thrown when the caller asked for a stop. Never a failure: not logged, never shown.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "cancelled"; }
};

inline void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw Cancelled();
}

} // namespace boxlift
