#include "ui/desktop/launcher_progress.h"

#include <utility>

#include <QDBusMessage>
#include <QVariantMap>

#include "ui/desktop/application_id.h"

namespace boxlift {

void LauncherProgress::show(double fraction) {
    const int percent = static_cast<int>(fraction * 100);
    if (std::exchange(m_percent, percent) != percent)
        tell(fraction, true);
}

void LauncherProgress::clear() {
    if (std::exchange(m_percent, std::nullopt))
        tell(0, false);
}

void LauncherProgress::tell(double fraction, bool isVisible) {
    QDBusMessage update = QDBusMessage::createSignal(
        QStringLiteral("/com/canonical/unity/launcherentry/1"),
        QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << QStringLiteral("application://%1.desktop").arg(applicationId)
           << QVariantMap{{QStringLiteral("progress"), fraction},
                          {QStringLiteral("progress-visible"), isVisible}};
    if (m_bus.isConnected())
        m_bus.send(update);
}

} // namespace boxlift
