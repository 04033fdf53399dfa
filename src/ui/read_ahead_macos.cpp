#include "ui/read_ahead.h"

namespace boxlift {

// The system keeps its fonts ready, and the bundle's libraries.
ReadAhead::ReadAhead() = default;

} // namespace boxlift
