#include "ui/desktop/sleep_inhibitor.h"

#include <array>
#include <utility>

#include <QDBusMessage>
#include <QDBusObjectPath>

#include "ui/desktop/bus_call.h"

namespace boxlift {

namespace {

/// A flag of the session manager's `Inhibit`, and of the portal's.
constexpr unsigned int suspending = 4;

QDBusMessage methodCall(const char* service, const QString& path, const char* interface,
                        const char* method, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(service), path, QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    return call;
}

QDBusMessage sessionManager(const char* method, const QVariantList& arguments) {
    return methodCall("org.gnome.SessionManager", QStringLiteral("/org/gnome/SessionManager"),
                      "org.gnome.SessionManager", method, arguments);
}

QDBusMessage powerManager(const char* method, const QVariantList& arguments) {
    return methodCall("org.freedesktop.PowerManagement",
                      QStringLiteral("/org/freedesktop/PowerManagement/Inhibit"),
                      "org.freedesktop.PowerManagement.Inhibit", method, arguments);
}

constexpr QLatin1String applicationName("Boxlift");

struct Service {
    QDBusMessage (*hold)(const QString& reason);
    QDBusMessage (*giveBack)(const QVariant& token);
};

constexpr std::array services{
    Service{
        [](const QString& reason) {
            return sessionManager("Inhibit", {QString(applicationName), 0U, reason, suspending});
        },
        [](const QVariant& token) { return sessionManager("Uninhibit", {token}); }},
    Service{[](const QString& reason) {
                return powerManager("Inhibit", {QString(applicationName), reason});
            },
            [](const QVariant& token) { return powerManager("UnInhibit", {token}); }},
    Service{[](const QString& reason) {
                return methodCall(
                    "org.freedesktop.portal.Desktop",
                    QStringLiteral("/org/freedesktop/portal/desktop"),
                    "org.freedesktop.portal.Inhibit", "Inhibit",
                    {QString(), suspending, QVariantMap{{QStringLiteral("reason"), reason}}});
            },
            [](const QVariant& token) {
                return methodCall("org.freedesktop.portal.Desktop",
                                  token.value<QDBusObjectPath>().path(),
                                  "org.freedesktop.portal.Request", "Close", {});
            }}};

} // namespace

SleepInhibitor::SleepInhibitor(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), m_bus(bus) {}

SleepInhibitor::~SleepInhibitor() {
    release();
}

void SleepInhibitor::hold(const QString& reason) {
    if (std::exchange(m_isWanted, true))
        return;
    ++m_request;
    ask(0, reason);
}

void SleepInhibitor::release() {
    m_isWanted = false;
    if (m_hold)
        giveBack(*std::exchange(m_hold, std::nullopt));
}

void SleepInhibitor::ask(std::size_t service, const QString& reason) {
    if (service == services.size())
        return;
    callLater(m_bus, services.at(service).hold(reason), this,
              [this, service, reason, request = m_request](const QDBusMessage& answer) {
                  const bool isHeld =
                      answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty();
                  const bool isStillWanted = m_isWanted && request == m_request;
                  if (!isHeld && isStillWanted)
                      ask(service + 1, reason);
                  else if (isHeld && isStillWanted)
                      m_hold = Hold{service, answer.arguments().constFirst()};
                  else if (isHeld)
                      giveBack({service, answer.arguments().constFirst()});
              });
}

void SleepInhibitor::giveBack(const Hold& hold) {
    callLater(m_bus, services.at(hold.service).giveBack(hold.token), this);
}

} // namespace boxlift
