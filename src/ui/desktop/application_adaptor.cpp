#include "ui/desktop/application_adaptor.h"

#include "ui/desktop/single_instance.h"

namespace boxlift {

ApplicationAdaptor::ApplicationAdaptor(SingleInstance& instance)
    : QDBusAbstractAdaptor(&instance), m_instance(instance) {}

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
    m_instance.takeActivation(platformData);
}

void ApplicationAdaptor::Open(const QStringList& uris, const QVariantMap& platformData) {
    QList<QUrl> urls;
    for (const QString& uri : uris)
        urls.append(QUrl::fromEncoded(uri.toUtf8()));
    emit m_instance.opened(urls);
    m_instance.takeActivation(platformData);
}

void ApplicationAdaptor::ActivateAction(const QString&, const QVariantList&,
                                        const QVariantMap& platformData) {
    m_instance.takeActivation(platformData);
}

} // namespace boxlift
