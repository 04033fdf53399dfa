#pragma once

#include <ostream>
#include <vector>

#include "fidelity/outcome.h"

namespace boxlift::fidelity {

/// Writes the tables as Markdown.
void writeReport(std::ostream& out, const std::vector<FileReport>& files);

} // namespace boxlift::fidelity
