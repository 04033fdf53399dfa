#include "queue/file_url.h"

#include <QByteArray>
#include <QString>

namespace boxlift {

namespace {

QByteArray bytes(const std::filesystem::path& path) {
    return QByteArray::fromStdString(path.native());
}

} // namespace

QUrl fileUrl(const std::filesystem::path& path) {
    return QUrl::fromEncoded("file://" + bytes(path).toPercentEncoding("/"), QUrl::StrictMode);
}

std::filesystem::path filePath(const QUrl& url) {
    const QString host = url.host();
    const bool isLocal = url.scheme() == QLatin1String("file") &&
                         (host.isEmpty() || host == QLatin1String("localhost"));
    if (!isLocal)
        return {};
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    const QByteArray path = QByteArray::fromPercentEncoding(encoded);
    // The system would take what stands before a zero byte for the name, which is another file's.
    if (path.contains('\0'))
        return {};
    return path.toStdString();
}

} // namespace boxlift
