#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace boxlift::test {

/// A desktop's settings portal that knows one setting.
class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    unsigned int colorScheme = 0;

    /// Tells everyone on the bus, as portals do after the user has changed a setting.
    static void tell(QDBusConnection& bus, const QString& group, const QString& key,
                     unsigned int value) {
        QDBusMessage signal = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        bus.send(signal);
    }

    static void tellColorScheme(QDBusConnection& bus, unsigned int value) {
        tell(bus, QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
             value);
    }

public slots:
    // The real one wraps its answer twice too.
    QDBusVariant Read(const QString&, const QString&) { // NOLINT(readability-identifier-naming)
        return QDBusVariant(QVariant::fromValue(QDBusVariant(colorScheme)));
    }
};

} // namespace boxlift::test
