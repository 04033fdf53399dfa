#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace boxlift {

class SingleInstance;

/// SingleInstance as the bus sees it; the names are the interface's.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(SingleInstance& instance);

public slots:
    // NOLINTBEGIN(readability-identifier-naming)
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    /// The desktop entry has no actions.
    void ActivateAction(const QString& name, const QVariantList& parameters,
                        const QVariantMap& platformData);
    // NOLINTEND(readability-identifier-naming)

private:
    SingleInstance& m_instance;
};

} // namespace boxlift
