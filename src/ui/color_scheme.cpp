#include "ui/color_scheme.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace boxlift {

namespace {

constexpr QLatin1String portalService("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String portalInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String appearanceGroup("org.freedesktop.appearance");
constexpr QLatin1String colorSchemeKey("color-scheme");
constexpr int timeoutMilliseconds = 2000;

// The portal's values; anything else is no preference.
constexpr unsigned int preferDark = 1;
constexpr unsigned int preferLight = 2;

bool isPaletteDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

/// `Read` wraps its answer twice, the signal once.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

ColorScheme::ColorScheme(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), m_dark(isPaletteDark()) {
    qApp->installEventFilter(this);
    if (bus.isConnected())
        ask(bus);
}

ColorScheme* ColorScheme::create(QQmlEngine*, QJSEngine*) {
    return new ColorScheme(QDBusConnection::sessionBus());
}

void ColorScheme::ask(QDBusConnection bus) {
    // Without it the slot of a program's first connection is silently not found.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portalService, portalPath, portalInterface, QStringLiteral("SettingChanged"), this,
                SLOT(takeSetting(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(portalService, portalPath,
                                                           portalInterface, QStringLiteral("Read"));
    question << appearanceGroup << colorSchemeKey;
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question, timeoutMilliseconds), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QVariant> reply = *answer;
        answer->deleteLater();
        if (!reply.isError())
            take(reply.value());
    });
}

void ColorScheme::takeSetting(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == appearanceGroup && key == colorSchemeKey)
        take(value.variant());
}

void ColorScheme::take(const QVariant& value) {
    const unsigned int preference = unwrapped(value).toUInt();
    if (preference == preferDark || preference == preferLight)
        m_preferred = preference == preferDark;
    else
        m_preferred.reset();
    refresh();
}

void ColorScheme::refresh() {
    const bool dark = m_preferred.value_or(isPaletteDark());
    if (dark == m_dark)
        return;
    m_dark = dark;
    emit darkChanged();
}

bool ColorScheme::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        refresh();
    return QObject::eventFilter(watched, event);
}

} // namespace boxlift
