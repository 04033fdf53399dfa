#pragma once

class QQmlEngine;

namespace boxlift {

/// Makes the QML module Boxlift and its icons known to `engine`. Before the first component is
/// made.
void addWindowModule(QQmlEngine& engine);

} // namespace boxlift
