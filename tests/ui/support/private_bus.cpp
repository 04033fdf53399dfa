#include "ui/support/private_bus.h"

namespace boxlift::test {

namespace {

constexpr int startMilliseconds = 10000;
const char servicesName[] = "test-services";
const char clientsName[] = "test-clients";

} // namespace

PrivateBus::PrivateBus() : m_services(QString()), m_clients(QString()) {
    const QString address = start();
    if (address.isEmpty())
        return;
    m_services = QDBusConnection::connectToBus(address, QLatin1String(servicesName));
    m_clients = QDBusConnection::connectToBus(address, QLatin1String(clientsName));
}

QString PrivateBus::start() {
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"),
                    QStringLiteral("--print-address")});
    if (!m_daemon.waitForReadyRead(startMilliseconds))
        return {};
    return QString::fromUtf8(m_daemon.readLine()).trimmed();
}

PrivateBus::~PrivateBus() {
    QDBusConnection::disconnectFromBus(QLatin1String(servicesName));
    QDBusConnection::disconnectFromBus(QLatin1String(clientsName));
    m_daemon.terminate();
    m_daemon.waitForFinished(startMilliseconds);
}

bool PrivateBus::offer(const QString& service, const QString& path, QObject& object) {
    return m_services.registerObject(path, &object,
                                     QDBusConnection::ExportScriptableContents |
                                         QDBusConnection::ExportAllContents) &&
           m_services.registerService(service);
}

} // namespace boxlift::test
