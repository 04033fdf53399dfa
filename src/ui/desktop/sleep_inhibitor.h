#pragma once

#include <cstddef>
#include <optional>

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

namespace boxlift {

/// Keeps the machine from falling asleep, as far as the desktop has a service for that: the first
/// that answers of the session manager, the power manager and the portal. Where there is none,
/// nothing happens. The services let go by themselves when the process ends. Main thread; never
/// waits.
class SleepInhibitor : public QObject {
    Q_OBJECT

public:
    explicit SleepInhibitor(const QDBusConnection& bus, QObject* parent = nullptr);
    ~SleepInhibitor() override;

    /// `reason` is shown to people. Does nothing while it holds already.
    void hold(const QString& reason);
    void release();

private:
    /// What a service gave, to be handed back.
    struct Hold {
        std::size_t service = 0;
        QVariant token;
    };

    void ask(std::size_t service, const QString& reason);
    void giveBack(const Hold& hold);

    QDBusConnection m_bus;
    bool m_isWanted = false;
    /// An answer that belongs to an earlier `hold` is handed back at once.
    int m_request = 0;
    std::optional<Hold> m_hold;
};

} // namespace boxlift
