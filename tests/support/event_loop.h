#pragma once

#include <chrono>
#include <functional>

namespace boxlift::test {

/// Longer than anything takes that a test waits for, on a busy machine and under a sanitizer.
constexpr std::chrono::seconds patience{30};

// Main thread.

/// Runs the event loop until the condition holds; false when it does not in time.
[[nodiscard]] bool spinUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds limit = patience);

/// Runs the event loop for so long.
void spinFor(std::chrono::milliseconds time);

} // namespace boxlift::test
