#pragma once

#include <span>
#include <string_view>

namespace boxlift::fidelity {

/// Why something is not in the output.
struct CauseRow {
    std::string_view cause;
    std::string_view reason;
};

std::span<const CauseRow> causes();

/// Null for a cause that nobody has explained yet.
const CauseRow* reasonFor(std::string_view cause);

} // namespace boxlift::fidelity
