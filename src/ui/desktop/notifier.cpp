#include "ui/desktop/notifier.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

#include "ui/desktop/application_id.h"
#include "ui/desktop/bus_call.h"

namespace boxlift {

namespace {

constexpr QLatin1String service("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");
/// The action that a click on the notification itself stands for.
constexpr QLatin1String clicked("default");
constexpr int untilTheServiceLikes = -1;

} // namespace

Notifier::Notifier(const QDBusConnection& bus, QObject* parent) : QObject(parent), m_bus(bus) {
    m_bus.connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                  SLOT(takeAction(uint, QString)));
}

void Notifier::tell(const QString& summary, const QString& body) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    call << QStringLiteral("Boxlift") << m_id << QString(applicationId) << summary << body
         << QStringList{clicked, QString()}
         << QVariantMap{{QStringLiteral("desktop-entry"), QString(applicationId)}}
         << untilTheServiceLikes;
    callLater(m_bus, call, this, [this](const QDBusMessage& answer) {
        if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
            m_id = answer.arguments().constFirst().toUInt();
    });
}

void Notifier::takeAction(unsigned int id, const QString& action) {
    if (id == m_id && action == clicked)
        emit activated();
}

} // namespace boxlift
