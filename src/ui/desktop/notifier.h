#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace boxlift {

/// Tells people something by a notification of the desktop's, where it has a service for that. A
/// new one takes the place of the last one. Main thread; never waits.
class Notifier : public QObject {
    Q_OBJECT

public:
    explicit Notifier(const QDBusConnection& bus, QObject* parent = nullptr);

    void tell(const QString& summary, const QString& body);

signals:
    /// The user has clicked on the last notification.
    void activated();

private slots:
    void takeAction(unsigned int id, const QString& action);

private:
    QDBusConnection m_bus;
    /// Of the last notification; the service counts from 1.
    unsigned int m_id = 0;
};

} // namespace boxlift
