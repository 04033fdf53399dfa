#pragma once

#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>

class QObject;

namespace boxlift {

/// Calls a method of a service that is there; none is started for it. `take` gets the answer, or
/// the error, later and on the same thread, unless `owner` has gone by then. Without a bus there is
/// no answer. Main thread; never waits.
void callLater(QDBusConnection bus, QDBusMessage call, QObject* owner,
               std::function<void(const QDBusMessage& answer)> take = {});

} // namespace boxlift
