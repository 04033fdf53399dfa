#pragma once

#include <QIcon>

namespace boxlift {

/// The application's picture, for window managers that do not know it by its name. Main thread,
/// inside QGuiApplication.
QIcon windowIcon();

} // namespace boxlift
