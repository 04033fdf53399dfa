#pragma once

#include <QDBusConnection>
#include <QProcess>

namespace boxlift::test {

/// A message bus of the test's own, with a connection for the services that it fakes and one for
/// what is tested. Ends with the object.
class PrivateBus {
public:
    /// Skips nothing by itself: ask `runs()`.
    PrivateBus();
    ~PrivateBus();

    bool runs() const { return m_services.isConnected() && m_clients.isConnected(); }
    QDBusConnection& services() { return m_services; }
    const QDBusConnection& clients() const { return m_clients; }

    /// Puts `object` on the bus.
    bool offer(const QString& service, const QString& path, QObject& object);

private:
    QString start();

    QProcess m_daemon;
    QDBusConnection m_services;
    QDBusConnection m_clients;
};

} // namespace boxlift::test
