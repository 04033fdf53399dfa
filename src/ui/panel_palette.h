#pragma once

#include <QPalette>

class QObject;

namespace boxlift {

/// The colours of the window for the panels, which are not made of QML: `theme` has them as
/// properties, under the names that Theme.qml gives them.
QPalette panelPalette(const QObject& theme);

} // namespace boxlift
