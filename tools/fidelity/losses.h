#pragma once

#include <vector>

#include "fidelity/outcome.h"
#include "support/media_probe.h"

namespace boxlift::fidelity {

/// What an output lacks of its source. Without duplicates.
std::vector<Loss> lossesBetween(const test::ProbedFile& source, const test::ProbedFile& output,
                                const Outcome& outcome);

} // namespace boxlift::fidelity
