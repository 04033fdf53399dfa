#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// The names are the interfaces'.
// NOLINTBEGIN(readability-identifier-naming)

namespace boxlift::test {

/// A session manager that counts who keeps the machine awake.
class FakeSessionManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")

public:
    QStringList reasons;
    QList<unsigned int> flags;
    QList<unsigned int> givenBack;

public slots:
    unsigned int Inhibit(const QString&, unsigned int, const QString& reason, unsigned int what) {
        reasons += reason;
        flags += what;
        return static_cast<unsigned int>(100 + reasons.size());
    }
    void Uninhibit(unsigned int cookie) { givenBack += cookie; }
};

/// The same of a power manager.
class FakePowerManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.PowerManagement.Inhibit")

public:
    QStringList reasons;
    QList<unsigned int> givenBack;

public slots:
    unsigned int Inhibit(const QString&, const QString& reason) {
        reasons += reason;
        return 7;
    }
    void UnInhibit(unsigned int cookie) { givenBack += cookie; }
};

/// The same of the portal, which gives an object for each request.
class FakeInhibitPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")

public:
    static constexpr const char* handle = "/org/freedesktop/portal/desktop/request/1_1/one";
    QStringList reasons;

public slots:
    QDBusObjectPath Inhibit(const QString&, unsigned int, const QVariantMap& options) {
        reasons += options.value(QStringLiteral("reason")).toString();
        return QDBusObjectPath(QLatin1String(handle));
    }
};

/// What the portal gave.
class FakePortalRequest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

public:
    int closings = 0;

public slots:
    void Close() { ++closings; }
};

} // namespace boxlift::test

// NOLINTEND(readability-identifier-naming)
