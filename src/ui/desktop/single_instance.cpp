#include "ui/desktop/single_instance.h"

#include <algorithm>
#include <iterator>

#include <QDBusMessage>
#include <QDBusReply>
#include <QStringList>

#include "queue/file_url.h"
#include "ui/desktop/application_adaptor.h"
#include "ui/desktop/application_id.h"

namespace boxlift {

namespace {

constexpr int timeoutMilliseconds = 5000;
constexpr QLatin1String applicationPath("/org/boxlift/Boxlift");
const char activationToken[] = "XDG_ACTIVATION_TOKEN";

/// With it the desktop lets the window come to the front.
QVariantMap platformData() {
    const QString token = qEnvironmentVariable(activationToken);
    return token.isEmpty() ? QVariantMap()
                           : QVariantMap{{QStringLiteral("activation-token"), token}};
}

QDBusMessage openCall(const std::vector<std::filesystem::path>& files) {
    QStringList uris;
    std::ranges::transform(files, std::back_inserter(uris), [](const auto& file) {
        return QString::fromLatin1(fileUrl(file).toEncoded());
    });
    QDBusMessage call = QDBusMessage::createMethodCall(
        applicationId, applicationPath, QStringLiteral("org.freedesktop.Application"),
        uris.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    if (!uris.isEmpty())
        call << uris;
    return call << platformData();
}

} // namespace

SingleInstance::SingleInstance(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), m_bus(bus) {
    new ApplicationAdaptor(*this);
}

SingleInstance::~SingleInstance() {
    if (!m_bus.isConnected())
        return;
    m_bus.unregisterService(applicationId);
    m_bus.unregisterObject(applicationPath);
}

bool SingleInstance::handOver(const std::vector<std::filesystem::path>& files) {
    // The object first: whoever sees the name may call it.
    if (!m_bus.isConnected() || !m_bus.registerObject(applicationPath, this) ||
        m_bus.registerService(applicationId))
        return false;
    const QDBusMessage answer = m_bus.call(openCall(files), QDBus::Block, timeoutMilliseconds);
    return answer.type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::takeActivation(const QVariantMap& platformData) {
    const QByteArray token = platformData.value(QStringLiteral("activation-token")).toByteArray();
    if (!token.isEmpty())
        qputenv(activationToken, token);
    emit activated();
}

} // namespace boxlift
