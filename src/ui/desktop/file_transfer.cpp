#include "ui/desktop/file_transfer.h"

#include <utility>

#include <QDBusMessage>
#include <QMimeData>
#include <QVariantMap>

#include "queue/file_url.h"
#include "ui/desktop/bus_call.h"

namespace boxlift::file_transfer {

namespace {

constexpr QLatin1String mimeType("application/vnd.portal.filetransfer");

QList<QUrl> urls(const QDBusMessage& answer) {
    QList<QUrl> result;
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return result;
    for (const QString& path : answer.arguments().constFirst().toStringList())
        result.append(fileUrl(path.toStdString()));
    return result;
}

} // namespace

std::optional<QString> key(const QMimeData& data) {
    QByteArray bytes = data.data(mimeType);
    // Some programs send the end of their string as well.
    if (const auto end = bytes.indexOf('\0'); end >= 0)
        bytes.truncate(end);
    if (bytes.isEmpty())
        return std::nullopt;
    return QString::fromUtf8(bytes);
}

void retrieve(const QDBusConnection& bus, const QString& key, QObject* owner,
              std::function<void(const QList<QUrl>&)> take) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Documents"),
        QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), QStringLiteral("RetrieveFiles"));
    call << key << QVariantMap();
    callLater(bus, call, owner,
              [take = std::move(take)](const QDBusMessage& answer) { take(urls(answer)); });
}

} // namespace boxlift::file_transfer
