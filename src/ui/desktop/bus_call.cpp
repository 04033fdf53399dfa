#include "ui/desktop/bus_call.h"

#include <utility>

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace boxlift {

namespace {

constexpr int timeoutMilliseconds = 5000;

} // namespace

void callLater(QDBusConnection bus, QDBusMessage call, QObject* owner,
               std::function<void(const QDBusMessage& answer)> take) {
    if (!bus.isConnected())
        return;
    call.setAutoStartService(false);
    const QDBusPendingCall pending = bus.asyncCall(call, timeoutMilliseconds);
    if (!take)
        return;
    auto* watcher = new QDBusPendingCallWatcher(pending, owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, owner,
                     [watcher, take = std::move(take)] {
                         watcher->deleteLater();
                         take(watcher->reply());
                     });
}

} // namespace boxlift
