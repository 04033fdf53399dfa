#pragma once

#include <filesystem>
#include <string>
#include <variant>

#include "model/mode.h"

namespace boxlift {

struct Analyzing {
    friend bool operator==(const Analyzing&, const Analyzing&) = default;
};

struct Ready {
    friend bool operator==(const Ready&, const Ready&) = default;
};

struct Converting {
    friend bool operator==(const Converting&, const Converting&) = default;
};

/// Converted.
struct Done {
    std::filesystem::path output;
    /// What was really done.
    Mode mode = Mode::reencode;
    /// Elapsed time.
    double seconds = 0;

    /// Paths are compared as text.
    friend bool operator==(const Done& a, const Done& b) {
        return a.output.native() == b.output.native() && a.mode == b.mode && a.seconds == b.seconds;
    }
};

/// Analysis or conversion failed; the message is shown to the user.
struct Failed {
    std::string message;

    friend bool operator==(const Failed&, const Failed&) = default;
};

/// Where a job stands.
using JobState = std::variant<Analyzing, Ready, Converting, Done, Failed>;

} // namespace boxlift
