#include "ui/reveal.h"

namespace boxlift {

Reveal::Reveal(const QDBusConnection& bus, QObject* parent) : QObject(parent), m_bus(bus) {}

Reveal* Reveal::create(QQmlEngine*, QJSEngine*) {
    return new Reveal(QDBusConnection::sessionBus());
}

QUrl Reveal::parentFolder(const QUrl& item) {
    return item.adjusted(QUrl::StripTrailingSlash)
        .adjusted(QUrl::RemoveFilename)
        .adjusted(QUrl::StripTrailingSlash);
}

} // namespace boxlift
