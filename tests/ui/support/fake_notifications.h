#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace boxlift::test {

/// A desktop that shows notifications.
class FakeNotifications : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList summaries;
    QStringList bodies;
    QList<unsigned int> replaced;

    /// The user does something with a notification.
    static void act(QDBusConnection& bus, unsigned int id, const QString& action) {
        QDBusMessage signal = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/Notifications"),
            QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"));
        signal << id << action;
        bus.send(signal);
    }

public slots:
    // NOLINTNEXTLINE(readability-identifier-naming)
    unsigned int Notify(const QString&, unsigned int replacedId, const QString&,
                        const QString& summary, const QString& body, const QStringList&,
                        const QVariantMap&, int) {
        summaries += summary;
        bodies += body;
        replaced += replacedId;
        return static_cast<unsigned int>(40 + summaries.size());
    }
};

} // namespace boxlift::test
