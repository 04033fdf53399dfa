#pragma once

#include <optional>

#include <QDBusConnection>

namespace boxlift {

/// Shows a fraction at the application's icon in the desktop's launcher, where the desktop has such
/// a thing. It is a signal on the bus, which nobody has to hear. Main thread.
class LauncherProgress {
public:
    explicit LauncherProgress(const QDBusConnection& bus) : m_bus(bus) {}
    ~LauncherProgress() { clear(); }
    LauncherProgress(const LauncherProgress&) = delete;
    LauncherProgress& operator=(const LauncherProgress&) = delete;

    /// From 0.0 to 1.0. Told on when it changes by a percent.
    void show(double fraction);
    void clear();

private:
    void tell(double fraction, bool isVisible);

    QDBusConnection m_bus;
    std::optional<int> m_percent;
};

} // namespace boxlift
