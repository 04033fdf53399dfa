#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace boxlift::test {

/// Something that must not happen: a crash, an exception, a hang, too much memory.
struct Finding {
    int number = 0;
    std::string what{};
    /// The end of what the process wrote to standard error; after a crash, the functions that it
    /// was in.
    std::string said{};
};

/// How a row of trials went.
struct Trials {
    std::vector<Finding> findings{};
    /// What each trial returned; -1 where it did not come to that.
    std::vector<int> outcomes{};
    std::chrono::milliseconds slowest{};
    /// By how much the process grew at most while it did one trial after the other. Bytes.
    std::int64_t growth = 0;
};

struct TrialLimits {
    /// Of the steady clock. A process that has hardly worked meanwhile, on a machine that has much
    /// else to do, is given six times as much.
    std::chrono::milliseconds time{5000};
    std::int64_t growth = 512 << 20;
    /// Trials may not have more memory than this. No limit is set under a sanitizer.
    std::uint64_t memory = std::uint64_t(2) << 30;
};

/// Makes trials 0 to `count` - 1, in order, in a process of their own; one that ends badly becomes
/// a finding, and another process goes on behind it. Outcomes are 0 to 100. Called while there is
/// one thread. Throws std::system_error.
Trials runTrials(int count, const std::function<int(int number)>& trial,
                 const TrialLimits& limits = {});

} // namespace boxlift::test
