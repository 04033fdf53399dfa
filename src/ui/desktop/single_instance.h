#pragma once

#include <filesystem>
#include <vector>

#include <QDBusConnection>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

namespace boxlift {

/// The one Boxlift of a session: whoever has its name on the session bus. A later start hands its
/// files to it and ends. The interface is org.freedesktop.Application, as the Desktop Entry
/// Specification has it. Where there is no bus, every start is a program of its own. Main thread.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(const QDBusConnection& bus, QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Gives the files to the Boxlift that runs already, and its window comes to the front. False
    /// when there is none, or it does not answer within seconds: from then on it is this one.
    bool handOver(const std::vector<std::filesystem::path>& files);

    // From the bus.
    void takeActivation(const QVariantMap& platformData);

signals:
    void opened(const QList<QUrl>& urls);
    /// The window is to come to the front.
    void activated();

private:
    QDBusConnection m_bus;
};

} // namespace boxlift
