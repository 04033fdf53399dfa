#pragma once

#include <map>
#include <string>
#include <vector>

#include "fidelity/outcome.h"

namespace boxlift::fidelity {

using Tags = std::map<std::string, std::string>;

/// Which of the source's tags an output lacks, those of the container itself left aside.
std::vector<Loss> tagLosses(const Tags& source, const Tags& output);

} // namespace boxlift::fidelity
