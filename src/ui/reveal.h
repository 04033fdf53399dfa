#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace boxlift {

/// Shows a file or a folder, selected in its parent: asks the desktop's file manager, and where
/// there is none, has the parent folder opened. Main thread, owned by the engine; never waits.
class Reveal : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit Reveal(const QDBusConnection& bus, QObject* parent = nullptr);
    static Reveal* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    Q_INVOKABLE void show(const QUrl& item);

    /// The folder that holds `item`; every byte of its name is kept.
    static QUrl parentFolder(const QUrl& item);

private:
    QDBusConnection m_bus;
};

} // namespace boxlift
