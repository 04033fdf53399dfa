#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "model/plan.h"
#include "model/size_option.h"
#include "model/target.h"

namespace boxlift::fidelity {

/// Something of the source that the output does not have, or has otherwise.
struct Loss {
    /// What kind of thing; a row of the table of causes explains it.
    std::string cause{};
    /// Which one, such as a key.
    std::string detail{};

    friend bool operator==(const Loss&, const Loss&) = default;
    friend bool operator<(const Loss& a, const Loss& b) {
        return std::tie(a.cause, a.detail) < std::tie(b.cause, b.detail);
    }
};

/// What became of one file with one target at one size.
struct Outcome {
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    /// What was really done; nothing when no file came out.
    std::optional<Mode> mode{};
    std::optional<Mode> planned{};
    /// Why no file came out.
    std::string sentence{};
    /// What stood in the way of the file, or of the copy that was planned.
    std::string reason{};
    /// Whether it was known before starting that the target does not fit.
    bool isBlocked = false;
    std::int64_t bytes = 0;
    /// Structural similarity to the source; for plain pictures that were encoded.
    std::optional<double> likeness{};
    std::vector<Loss> losses{};
};

/// One file of the corpus with all that became of it.
struct FileReport {
    std::string name{};
    /// Such as "h264 + aac".
    std::string contents{};
    std::int64_t bytes = 0;
    double seconds = 0;
    /// Why the file is not opened; empty when it is.
    std::string refusal{};
    std::vector<Outcome> outcomes{};
};

} // namespace boxlift::fidelity
