#pragma once

#include <memory>

#include <QObject>

namespace boxlift {

class Queue;

/// The menu bar of a system that has one of its own, above all windows: null where menus belong to
/// the windows. Main thread; ends before the queue.
std::unique_ptr<QObject> makeSystemMenuBar(Queue& queue);

} // namespace boxlift
