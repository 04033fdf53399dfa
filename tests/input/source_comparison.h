#pragma once

#include <string>
#include <vector>

#include "input/conversion_runner.h"
#include "support/media_probe.h"

namespace boxlift::test {

/// A promise about outputs that does not hold for one; the text is for people.
struct Difference {
    /// "tracks", "codec", "size", "orientation", "payload", "duration", "index", "progress" or
    /// "folder".
    std::string what{};
    std::string text{};
};

/// Opens the output of a conversion that ended with `mode` and compares it with its source.
std::vector<Difference> compareWithSource(const ConversionRequest& request, Mode mode);

/// What the reports of a successful conversion must be like. `attempts`: after each but the last
/// one the fraction may start over.
std::vector<Difference> checkProgress(const std::vector<double>& progress, int attempts);

/// The tracks of a kind that hold samples.
std::vector<const ProbedStream*> filled(const ProbedFile& file, StreamKind kind);

} // namespace boxlift::test
