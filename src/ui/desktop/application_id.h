#pragma once

#include <QLatin1String>

namespace boxlift {

/// What the desktop knows the application by: the name of its desktop entry, its icon, its window's
/// class and its name on the session bus.
constexpr QLatin1String applicationId("org.boxlift.Boxlift");

} // namespace boxlift
