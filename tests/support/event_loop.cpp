#include "support/event_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QTimer>

namespace boxlift::test {

bool spinUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const QDeadlineTimer deadline(limit);
    // The condition may come true without an event.
    QTimer heartbeat;
    heartbeat.start(std::chrono::milliseconds(2));
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // Left alone outside of exec().
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void spinFor(std::chrono::milliseconds time) {
    // Never true: the time always passes.
    [[maybe_unused]] const bool isEarly = spinUntil([] { return false; }, time);
}

} // namespace boxlift::test
