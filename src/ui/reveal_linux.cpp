#include "ui/reveal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>

#include "queue/file_url.h"

namespace boxlift {

namespace {

constexpr QLatin1String fileManager("org.freedesktop.FileManager1");
constexpr QLatin1String fileManagerPath("/org/freedesktop/FileManager1");
// A file manager may have to be started first.
constexpr int timeoutMilliseconds = 5000;

/// The address in the spelling that file managers use themselves.
QString address(const QUrl& item) {
    const QByteArray path =
        QByteArray::fromStdString(filePath(item.adjusted(QUrl::StripTrailingSlash)));
    return QString::fromLatin1("file://" + path.toPercentEncoding("/!$&'()*+,;=:@"));
}

QDBusMessage showItems(const QUrl& item) {
    QDBusMessage message = QDBusMessage::createMethodCall(fileManager, fileManagerPath, fileManager,
                                                          QStringLiteral("ShowItems"));
    message << QStringList{address(item)} << QString();
    return message;
}

} // namespace

void Reveal::show(const QUrl& item) {
    if (!m_bus.isConnected()) {
        QDesktopServices::openUrl(parentFolder(item));
        return;
    }
    const QDBusPendingCall call = m_bus.asyncCall(showItems(item), timeoutMilliseconds);
    auto* answer = new QDBusPendingCallWatcher(call, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, item] {
        const bool failed = answer->isError();
        answer->deleteLater();
        if (failed)
            QDesktopServices::openUrl(parentFolder(item));
    });
}

} // namespace boxlift
